// SPDX-License-Identifier: Apache-2.0
// Sandbox: composes the root directory of the namespace, entry by entry.

#include "simulator/camerasim/outside/Sandbox.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include <android-base/file.h>
#include <android-base/strings.h>
#include <android-base/unique_fd.h>

#include "simulator/process/CommandLine.h"

namespace orvo::simulator {

namespace fs = std::filesystem;
using android::base::ErrnoError;
using android::base::Error;
using android::base::Result;
using android::base::unexpected;
using android::base::unique_fd;

namespace {

std::string findInPath(const std::string& program) {
    const char* path = getenv("PATH");
    for (const std::string& directory :
         android::base::Split(path == nullptr ? "/usr/bin:/bin" : path, ":")) {
        const std::string file = directory + "/" + program;
        if (!directory.empty() && access(file.c_str(), X_OK) == 0) return fs::absolute(file);
    }
    return "";
}

/** Binds for every entry of the real root but /vendor. */
std::vector<std::string> rootEntries() {
    std::vector<std::string> words;
    std::error_code failure;
    for (fs::directory_iterator it("/", failure), end; !failure && it != end;
         it.increment(failure)) {
        const std::string entry = it->path();
        if (entry == "/vendor") continue;
        if (it->is_symlink()) {
            words.insert(words.end(), {"--symlink", fs::read_symlink(entry, failure), entry});
        } else {
            // An entry may vanish between the listing and the binding; then it is left out.
            words.insert(words.end(), {"--dev-bind-try", entry, entry});
        }
    }
    return words;
}

}  // namespace

Sandbox::Sandbox(std::string bwrap, const Stage& stage) : mBwrap(std::move(bwrap)) {
    mPrefix = {mBwrap, "--die-with-parent"};
    const std::vector<std::string> root = rootEntries();
    mPrefix.insert(mPrefix.end(), root.begin(), root.end());
    for (const std::string& word :
         {std::string("--bind"), stage.vendor(), std::string("/vendor"), std::string("--setenv"),
          std::string("ORVO_DEVICE_DIR"), stage.run(), std::string("--chdir"), std::string("/")}) {
        mPrefix.push_back(word);
    }
}

Result<Sandbox> Sandbox::prepare(const Stage& stage) {
    const std::string bwrap = findInPath("bwrap");
    if (bwrap.empty()) {
        return Error() << "bubblewrap is not installed; install it (apt-get install bubblewrap)";
    }
    Sandbox sandbox(bwrap, stage);
    const Result<void> usable = sandbox.tryOut();
    if (!usable) return unexpected(usable.error());
    return sandbox;
}

std::vector<std::string> Sandbox::commandLine(const std::vector<std::string>& command) const {
    std::vector<std::string> words = mPrefix;
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

Result<void> Sandbox::tryOut() const {
    unique_fd readEnd, writeEnd;
    if (!android::base::Pipe(&readEnd, &writeEnd)) return ErrnoError() << "cannot make a pipe";
    const CommandLine line(commandLine({"/bin/sh", "-c", "test -d /vendor"}));
    const pid_t pid = fork();
    if (pid < 0) return ErrnoError() << "cannot start another process";
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(writeEnd.get(), STDERR_FILENO);
        line.execute();
        _exit(127);
    }
    writeEnd.reset();
    std::string complaint;
    android::base::ReadFdToString(readEnd, &complaint);
    int status = 0;
    TEMP_FAILURE_RETRY(waitpid(pid, &status, 0));
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return {};
    const std::string firstLine = android::base::Split(complaint, "\n")[0];
    return Error() << "bubblewrap cannot make a mount namespace here ("
                   << (firstLine.empty() ? "it gave no reason" : firstLine)
                   << "); allow user namespaces for ordinary users, or run as root";
}

}  // namespace orvo::simulator
