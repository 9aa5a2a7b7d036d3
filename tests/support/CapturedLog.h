// SPDX-License-Identifier: Apache-2.0
// What a test needs to hold log lines to their exact priority, tag and text.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace orvo::test {

/** How long a test waits for something that must happen before it gives up. */
constexpr std::chrono::seconds kPatience(30);

/** One log line, as it reached the log library. */
struct LogLine {
    int priority;  ///< ANDROID_LOG_INFO and so on.
    std::string tag;
    std::string text;
};

bool operator==(const LogLine& left, const LogLine& right);
void PrintTo(const LogLine& line, std::ostream* stream);

/**
 * Collects every line that the process logs, from its construction to its destruction. At most one
 * exists at a time. All operations may be called on any thread.
 */
class CapturedLog {
  public:
    CapturedLog();
    ~CapturedLog();
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /** The lines so far, oldest first. */
    std::vector<LogLine> lines() const;
    /** The lines so far, oldest first; they are forgotten here. */
    std::vector<LogLine> take();
    /** How often exactly this line was logged. */
    size_t count(const LogLine& line) const;
    /** Waits until exactly this line has been logged. False when it does not come in time. */
    bool waitFor(const LogLine& line, std::chrono::milliseconds timeout = kPatience);

    /** Runs for every line, on the thread that logs it, after it was added. Must not log. */
    std::function<void(const LogLine&)> onLine;

    void add(const LogLine& line);

  private:
    size_t countLocked(const LogLine& line) const;

    mutable std::mutex mMutex;
    std::condition_variable mAdded;
    std::vector<LogLine> mLines;
};

/**
 * Hands the text of every line that the process logs to a function while it exists, and keeps
 * nothing: for tests that run out of memory. At most one exists at a time, and no CapturedLog.
 */
class UnkeptLog {
  public:
    /** `onText` runs on the thread that logs. */
    explicit UnkeptLog(void (*onText)(const char* text));
    ~UnkeptLog();
    UnkeptLog(const UnkeptLog&) = delete;
    UnkeptLog& operator=(const UnkeptLog&) = delete;
};

/**
 * For the process of a death test: writes every log line to standard error as text() renders it,
 * where the parent can compare it.
 */
class MirroredLog {
  public:
    MirroredLog();

    /** "<priority> <tag>: <text>" and a line break, for each line. */
    static std::string text(const std::vector<LogLine>& lines);
};

}  // namespace orvo::test
