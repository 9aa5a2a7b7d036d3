// SPDX-License-Identifier: Apache-2.0
// Logs: of each the newest file, and of that what tells of trouble.

#include "simulator/camerasim/outside/Logs.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <vector>

#include <android-base/file.h>
#include <android-base/strings.h>

namespace orvo::simulator {

namespace fs = std::filesystem;

namespace {

/** Lines of each log that are shown when something went wrong. */
constexpr size_t kTailLines = 12;

/** Whether a line tells of what went as it should. */
bool isChatter(const std::string& line) {
    return fnmatch("* [VDI] [0-9][0-9]-[0-9][0-9] [0-9][0-9]:*", line.c_str(), 0) == 0;
}

/** The last lines that tell of trouble; if there are none, the last lines. */
std::string tailOf(const std::string& file) {
    std::string content;
    if (!android::base::ReadFileToString(file, &content)) return "";
    std::vector<std::string> lines = android::base::Split(content, "\n");
    if (!lines.empty() && lines.back().empty()) lines.pop_back();
    const auto trouble = std::stable_partition(lines.begin(), lines.end(), isChatter);
    const auto begin = trouble == lines.end() ? lines.begin() : trouble;
    const size_t count = std::min<size_t>(kTailLines, lines.end() - begin);
    std::string tail;
    for (auto line = lines.end() - count; line != lines.end(); ++line) tail += "  " + *line + "\n";
    return tail;
}

}  // namespace

void printTails(const Stage& stage) {
    std::vector<fs::path> logs;
    std::error_code failure;
    for (fs::directory_iterator it(stage.logs(), failure), end; !failure && it != end;
         it.increment(failure)) {
        if (it->path().extension() == ".log") logs.push_back(it->path());
    }
    std::sort(logs.begin(), logs.end());
    for (const fs::path& log : logs) {
        const std::string tail = tailOf(log);
        if (tail.empty()) continue;
        std::cerr << "\nthe end of " << log.filename().string() << ":\n" << tail;
    }
    std::cerr.flush();
}

}  // namespace orvo::simulator
