// SPDX-License-Identifier: Apache-2.0
// LogReader: watches the directory first and reads then, so that nothing falls between.

#include "simulator/camerasim/commands/LogReader.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "simulator/control/Complaint.h"

namespace orvo::simulator {

namespace fs = std::filesystem;
using android::base::Result;
using android::base::unique_fd;

Result<LogReader> LogReader::open(const std::string& directory) {
    unique_fd watch(inotify_init1(IN_CLOEXEC));
    const uint32_t events = IN_CREATE | IN_MODIFY | IN_DELETE | IN_DELETE_SELF;
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
        if (path.extension() != ".log" || mLogs.count(program) != 0) continue;
        Log log(program);
        log.file.reset(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
        if (log.file.ok()) mLogs.emplace(program, std::move(log));
    }
}

void LogReader::readLog(Log& log, bool unfinished, std::vector<LogLine>* lines) {
    char bytes[16384];
    ssize_t count;
    while ((count = TEMP_FAILURE_RETRY(read(log.file.get(), bytes, sizeof(bytes)))) > 0) {
        log.unread.append(bytes, count);
    }
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
    for (auto& [program, log] : mLogs) readLog(log, unfinished, &lines);
    std::stable_sort(lines.begin(), lines.end(),
                     [](const LogLine& a, const LogLine& b) { return a.time < b.time; });
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
