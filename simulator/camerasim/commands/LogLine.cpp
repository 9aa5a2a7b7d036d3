// SPDX-License-Identifier: Apache-2.0
// LogLine: TAG PRIORITY MM-DD HH:MM:SS.ffffff PID TID MESSAGE.

#include "simulator/camerasim/commands/LogLine.h"

#include <regex>
#include <vector>

#include <android-base/strings.h>
#include <nlohmann/json.hpp>

#include "simulator/camerasim/commands/Table.h"

namespace orvo::simulator {

namespace {

constexpr char kPriorities[] = "VDIWEFS";
/** What stands before the message, with any tag that a program of a device has. */
constexpr size_t kLongestHead = 512;

size_t rankOf(const std::string& priority) {
    return std::string(kPriorities).find(priority);
}

Paint paintOfPriority(const std::string& priority) {
    if (priority == "E" || priority == "F") return Paint::RED;
    if (priority == "W") return Paint::YELLOW;
    return priority == "V" || priority == "D" ? Paint::DIM : Paint::PLAIN;
}

}  // namespace

void to_json(nlohmann::json& json, const LogLine& line) {
    json = {{"program", line.program},   {"date", line.date},      {"time", line.time},
            {"priority", line.priority}, {"tag", line.tag},        {"pid", line.pid},
            {"tid", line.tid},           {"message", line.message}};
}

LogLine LogParser::parse(const std::string& line) {
    // A tag may hold blanks, a message anything. The log library of a program that is none of ours
    // has no microseconds.
    static const std::regex kHead(
            R"(^(.*?) ([VDIWEFS]) (\d\d-\d\d) (\d\d:\d\d:\d\d(?:\.\d{6})?) +(\d{1,9}) +(\d{1,9}) )");
    // The expression's depth of recursion is the length of what it reads.
    const std::string begin = line.substr(0, kLongestHead);
    std::smatch parts;
    LogLine parsed = mLast;
    if (!std::regex_search(begin, parts, kHead)) {
        parsed.message = line;
        return parsed;
    }
    parsed.tag = parts[1];
    parsed.priority = parts[2];
    parsed.date = parts[3];
    parsed.time = parts[4];
    parsed.pid = std::stoi(parts[5]);
    parsed.tid = std::stoi(parts[6]);
    mLast = parsed;
    parsed.message = line.substr(parts.length());
    return parsed;
}

bool LogFilter::accepts(const LogLine& line) const {
    if (!program.empty() && line.program != program) return false;
    if (!tag.empty() && line.tag != tag) return false;
    if (priority.empty()) return true;
    return !line.priority.empty() && rankOf(line.priority) >= rankOf(priority);
}

std::string LogFilter::toText() const {
    std::vector<std::string> parts;
    if (!program.empty()) parts.push_back("program " + program);
    if (!tag.empty()) parts.push_back("tag " + tag);
    if (!priority.empty()) parts.push_back("priority " + priority + " and above");
    return android::base::Join(parts, ", ");
}

std::string logText(const LogLine& line, bool colour) {
    const std::string head = line.time + "  " + line.program;
    const std::string body = line.priority.empty()
                                     ? line.message
                                     : line.priority + " " + line.tag + ": " + line.message;
    return painted(head, Paint::DIM, colour) + "  " +
           painted(body, paintOfPriority(line.priority), colour);
}

}  // namespace orvo::simulator
