// SPDX-License-Identifier: Apache-2.0
// Janitor: forked before the directory exists, so that no moment is left uncovered.

#include "simulator/camerasim/outside/Janitor.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <android-base/file.h>

namespace orvo::simulator {

using android::base::ErrnoError;
using android::base::Error;
using android::base::Result;
using android::base::unique_fd;

std::string directoryOfDirectories() {
    const char* parent = getenv("TMPDIR");
    return parent == nullptr || *parent == '\0' ? "/tmp" : parent;
}

namespace {

/** The directory in which its file system begins. */
std::string mountPointOf(const std::string& directory) {
    struct stat below {
    }, above{};
    std::filesystem::path path = directory;
    while (path.has_relative_path() && stat(path.c_str(), &below) == 0 &&
           stat(path.parent_path().c_str(), &above) == 0 && below.st_dev == above.st_dev) {
        path = path.parent_path();
    }
    return path;
}

}  // namespace

std::string remedyFor(int error, const std::string& directory, const std::string& otherwise) {
    struct statvfs room {};
    if ((error != ENOSPC && error != EDQUOT) || statvfs(directory.c_str(), &room) != 0) {
        return otherwise;
    }
    const unsigned long kibibytes = room.f_bavail * (room.f_frsize / 512) / 2;
    return "the file system at '" + mountPointOf(directory) + "' has " + std::to_string(kibibytes) +
           " KiB and " + std::to_string(room.f_favail) +
           " files left; free some, or set TMPDIR to a directory with more";
}

namespace {

Result<std::string> makeDirectory() {
    const std::string parent = directoryOfDirectories();
    char absolute[PATH_MAX];
    if (realpath(parent.c_str(), absolute) == nullptr) {
        return Error() << "cannot use the temporary directory '" << parent << "' ("
                       << strerror(errno) << "); set TMPDIR to one that is there";
    }
    std::string path = std::string(absolute) + "/" + kDirectoryPattern;
    if (mkdtemp(path.data()) == nullptr) {
        const int failure = errno;
        return Error() << "cannot make a directory in '" << absolute << "' (" << strerror(failure)
                       << "); "
                       << remedyFor(failure, absolute, "set TMPDIR to one that can be written");
    }
    return path;
}

/** The janitor's life. Never returns. */
[[noreturn]] void clean(unique_fd lifelineEnd, unique_fd report, bool keep) {
    setsid();
    prctl(PR_SET_NAME, "camerasim-clean");
    // It ends when the device does, and not before.
    for (const int ignored : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT}) {
        signal(ignored, SIG_IGN);
    }
    const auto directory = makeDirectory();
    const std::string line = directory ? *directory : "!" + directory.error().message();
    const bool told = android::base::WriteStringToFd(line, report);
    report.reset();
    if (!directory) _exit(1);

    char nothing;
    while (told && TEMP_FAILURE_RETRY(read(lifelineEnd, &nothing, 1)) > 0) {
    }
    std::error_code ignored;  // there is nobody left to tell
    if (!keep) std::filesystem::remove_all(*directory, ignored);
    _exit(0);
}

}  // namespace

Janitor::Janitor(pid_t pid, std::string directory, unique_fd lifeline)
    : mPid(pid), mDirectory(std::move(directory)), mLifeline(std::move(lifeline)) {}

Janitor::Janitor(Janitor&& other) noexcept
    : mPid(std::exchange(other.mPid, -1)),
      mDirectory(std::move(other.mDirectory)),
      mLifeline(std::move(other.mLifeline)) {}

Result<Janitor> Janitor::start(bool keep) {
    unique_fd lifelineRead, lifelineWrite, reportRead, reportWrite;
    if (!android::base::Pipe(&lifelineRead, &lifelineWrite) ||
        !android::base::Pipe(&reportRead, &reportWrite)) {
        return ErrnoError() << "cannot make a pipe";
    }
    const pid_t pid = fork();
    if (pid < 0) return ErrnoError() << "cannot start another process";
    if (pid == 0) {
        lifelineWrite.reset();
        reportRead.reset();
        clean(std::move(lifelineRead), std::move(reportWrite), keep);
    }
    reportWrite.reset();
    std::string line;
    if (!android::base::ReadFdToString(reportRead, &line) || line.empty() || line[0] == '!') {
        lifelineWrite.reset();
        TEMP_FAILURE_RETRY(waitpid(pid, nullptr, 0));
        return Error() << (line.empty() ? "the temporary directory could not be made"
                                        : line.substr(1));
    }
    return Janitor(pid, line, std::move(lifelineWrite));
}

Janitor::~Janitor() {
    finish();
}

void Janitor::finish() {
    mLifeline.reset();
    const pid_t pid = std::exchange(mPid, -1);
    if (pid > 0) TEMP_FAILURE_RETRY(waitpid(pid, nullptr, 0));
}

}  // namespace orvo::simulator
