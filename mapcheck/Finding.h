// SPDX-License-Identifier: Apache-2.0
// What the checker has to say about a file, line by line.
#pragma once

#include <string>
#include <vector>

namespace orvo::mapcheck {

enum class Severity {
    ERROR,    ///< The service ends, or an entry, a provider or a camera is lost.
    WARNING,  ///< Everything is served, but not as the file looks.
};

/** The line that a finding concerns when it concerns the file as a whole; lines count from 1. */
constexpr long kWholeFile = 0;

/** One mistake in one file. */
struct Finding {
    std::string file;
    long line;
    Severity severity;
    std::string code;     ///< Names the kind of mistake for programs, such as "nested".
    std::string message;  ///< One line: what is wrong, what a device does with it, what to write.
    std::string note;     ///< What the mistake clashes with; empty if it stands alone.
    long noteLine;        ///< Where that is, in the same file.
};

/** Collects the findings of one file. */
class Findings {
  public:
    explicit Findings(std::string file) : mFile(std::move(file)) {}

    void error(long line, const char* code, const std::string& message) {
        add(line, Severity::ERROR, code, message);
    }
    void warning(long line, const char* code, const std::string& message) {
        add(line, Severity::WARNING, code, message);
    }
    /** Adds to the newest finding the place that it clashes with. */
    void note(long line, const std::string& note) {
        mList.back().note = note;
        mList.back().noteLine = line;
    }

    /** All findings, by line; those of one line in the order in which they were made. */
    std::vector<Finding> byLine() const;
    bool empty() const { return mList.empty(); }

  private:
    void add(long line, Severity severity, const char* code, const std::string& message) {
        mList.push_back({mFile, line, severity, code, message, "", kWholeFile});
    }

    std::string mFile;
    std::vector<Finding> mList;
};

/**
 * The name on one line and in ASCII: line breaks, whatever looks like nothing or like another
 * character, and bytes that are not UTF-8 as in a C string.
 */
std::string escaped(const std::string& name);

/** The same in quotes. */
std::string quoted(const std::string& name);

}  // namespace orvo::mapcheck
