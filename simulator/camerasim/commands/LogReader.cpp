// SPDX-License-Identifier: Apache-2.0
// LogReader: watches the directory first and reads then, so that nothing falls between.

#include "simulator/camerasim/commands/LogReader.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <tuple>
#include <utility>

#include "simulator/control/Complaint.h"

namespace orvo::simulator {

namespace fs = std::filesystem;
using android::base::Result;
using android::base::unique_fd;

namespace {

unique_fd openLog(const std::string& path) {
    return unique_fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

void readAll(const unique_fd& file, std::string* text) {
    char bytes[16384];
    ssize_t count;
    while ((count = TEMP_FAILURE_RETRY(read(file.get(), bytes, sizeof(bytes)))) > 0) {
        text->append(bytes, count);
    }
}

/** Whether what is open is the file of this name; also if there is none of this name. */
bool isFile(const unique_fd& file, const std::string& path) {
    struct stat open {
    }, named{};
    if (stat(path.c_str(), &named) != 0) return true;
    return fstat(file.get(), &open) == 0 && open.st_dev == named.st_dev &&
           open.st_ino == named.st_ino;
}

}  // namespace

Result<LogReader> LogReader::open(const std::string& directory) {
    unique_fd watch(inotify_init1(IN_CLOEXEC));
    const uint32_t events = IN_CREATE | IN_MODIFY | IN_MOVED_TO | IN_DELETE | IN_DELETE_SELF;
    if (!watch.ok() || inotify_add_watch(watch.get(), directory.c_str(), events) < 0) {
        return didNotHappen("cannot watch '" + directory + "' (" + strerror(errno) + ")");
    }
    LogReader reader(directory, std::move(watch));
    reader.findLogs();
    return reader;
}

void LogReader::findLogs() {
    std::error_code failure;
    for (fs::directory_iterator it(mDirectory, failure), end; !failure && it != end;
         it.increment(failure)) {
        const fs::path path = it->path();
        const std::string program = path.stem();
        if (path.extension() != ".log" || access(path.c_str(), R_OK) != 0) continue;
        mLogs.try_emplace(program, program);
    }
}

void LogReader::readLog(const std::string& program, Log& log) {
    const std::string path = mDirectory + "/" + program + ".log";
    if (!isFile(log.file, path)) {
        // Nobody writes any more to a file that has lost its name. The one before the newest may be
        // another: there was none yet, or there have been two since.
        readAll(log.file, &log.unread);
        if (!isFile(log.file, path + ".1")) readAll(openLog(path + ".1"), &log.unread);
        log.file = openLog(path);
    }
    readAll(log.file, &log.unread);
}

void LogReader::takeLines(Log& log, bool unfinished, std::vector<LogLine>* lines) {
    size_t begin = 0;
    for (size_t end; (end = log.unread.find('\n', begin)) != std::string::npos; begin = end + 1) {
        lines->push_back(log.parser.parse(log.unread.substr(begin, end - begin)));
    }
    log.unread.erase(0, begin);
    if (!unfinished || log.unread.empty()) return;
    lines->push_back(log.parser.parse(log.unread));
    log.unread.clear();
}

std::vector<LogLine> LogReader::readNew(bool unfinished) {
    findLogs();
    std::vector<LogLine> lines;
    for (auto& [program, log] : mLogs) {
        readLog(program, log);
        takeLines(log, unfinished, &lines);
    }
    std::stable_sort(lines.begin(), lines.end(), [](const LogLine& a, const LogLine& b) {
        return std::tie(a.date, a.time) < std::tie(b.date, b.time);
    });
    return lines;
}

bool LogReader::awaitMore() {
    alignas(inotify_event) char bytes[4096];
    const ssize_t count = TEMP_FAILURE_RETRY(read(mWatch.get(), bytes, sizeof(bytes)));
    for (ssize_t at = 0; at + static_cast<ssize_t>(sizeof(inotify_event)) <= count;) {
        const auto* event = reinterpret_cast<const inotify_event*>(bytes + at);
        // Logs go when their device does. The directory's own end is not told of while one of them
        // is still open here.
        if ((event->mask & (IN_DELETE | IN_DELETE_SELF | IN_IGNORED)) != 0) return false;
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
    return count > 0;
}

std::vector<std::string> LogReader::programs() const {
    std::vector<std::string> names;
    for (const auto& [program, log] : mLogs) names.push_back(program);
    return names;
}

}  // namespace orvo::simulator
