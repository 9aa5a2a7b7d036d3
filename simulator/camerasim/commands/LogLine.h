// SPDX-License-Identifier: Apache-2.0
// LogLine: a line of a program's log, as the log library writes it to stderr.

#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace orvo::simulator {

/** One line. What a message or a program writes without a head is under the head before it. */
struct LogLine {
    std::string program;   ///< whose log it is in, such as "provider-external-0"
    std::string date;      ///< local, "11-21"; "" before the first head of a log
    std::string time;      ///< of day, as an event's, "09:58:49.123456"; "" as above
    std::string priority;  ///< "V", "D", "I", "W", "E", "F" or "S"; "" as above
    std::string tag;
    int pid = 0;
    int tid = 0;
    std::string message;
};

/** The members, by their names. */
void to_json(nlohmann::json& json, const LogLine& line);

/** Reads the lines of one program's log, in order. */
class LogParser {
  public:
    explicit LogParser(const std::string& program) { mLast.program = program; }

    /** `line` is without its end. */
    LogLine parse(const std::string& line);

  private:
    LogLine mLast;  ///< for lines without a head
};

/** Which lines are wanted; what is empty is not asked for. */
struct LogFilter {
    std::string tag;
    std::string priority;  ///< one letter; this one and those above it
    std::string program;

    /** A line before any head has no tag and no priority, and passes only if neither is asked. */
    bool accepts(const LogLine& line) const;
    /** Such as "tag X, priority W and above"; "" if nothing is asked for. */
    std::string toText() const;
};

/** The line for a person. */
std::string logText(const LogLine& line, bool colour);

}  // namespace orvo::simulator
