// SPDX-License-Identifier: Apache-2.0
// ProgramLog: where the log of a program goes, in place of the platform's log daemon.

#pragma once

#include <string>
#include <vector>

namespace orvo {

/** One thing that was logged. */
struct LoggedLine {
    int priority;  ///< ANDROID_LOG_INFO and the like
    std::string tag;
    std::string message;
};

/**
 * Writes what this process logs to stderr, from now on:
 *
 *     TAG PRIORITY MM-DD HH:MM:SS.ffffff PID TID MESSAGE
 *
 * Where stderr is a log of the device that ORVO_DEVICE_DIR names, it stays below a limit: a full
 * file becomes FILE.1 in place of an earlier one, and the new one begins with a line that says how
 * much went with that. Lines that could not be written are counted, and the count is written as
 * soon as that is possible again.
 *
 * Any thread may log; nothing is lost to a reader that goes from FILE.1 to FILE.
 */
void logToStandardError();

/** The same with the end of this file, which is always kept below the limit, in place of stderr. */
void logToFile(const std::string& file);

/** Beyond this a file gives way to a new one. */
constexpr size_t kMostLogBytes = 8 * 1024 * 1024;

/**
 * While it exists, what its thread logs is kept instead of written. One a thread. Afterwards the
 * log goes to stderr, or where it was sent before.
 */
class KeptLog {
  public:
    KeptLog();
    ~KeptLog();
    KeptLog(const KeptLog&) = delete;
    KeptLog& operator=(const KeptLog&) = delete;

    const std::vector<LoggedLine>& lines() const { return mLines; }

  private:
    std::vector<LoggedLine> mLines;
};

}  // namespace orvo
