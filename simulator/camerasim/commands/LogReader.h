// SPDX-License-Identifier: Apache-2.0
// LogReader: the logs of all programs of a device, now and as they grow.

#pragma once

#include <map>
#include <string>
#include <vector>

#include <android-base/result.h>
#include <android-base/unique_fd.h>

#include "simulator/camerasim/commands/LogLine.h"

namespace orvo::simulator {

/** One thread. */
class LogReader {
  public:
    /** From here on nothing that is added to the directory's logs goes unseen. */
    static android::base::Result<LogReader> open(const std::string& directory);

    /**
     * The lines that were added since the last call, in the order of their times; those of one
     * program and one time in the order in which they were written. A log that was full and has
     * made way for another one is read to its end before that.
     *
     * @param unfinished also what a program has begun and not ended with a line's end.
     */
    std::vector<LogLine> readNew(bool unfinished);

    /** Waits until something was written. False once logs are being removed: nothing will be. */
    bool awaitMore();

    /** Names of the programs that have a log, sorted. */
    std::vector<std::string> programs() const;

  private:
    struct Log {
        explicit Log(const std::string& program) : parser(program) {}
        android::base::unique_fd file;  ///< none before the first look
        std::string unread;             ///< of the last line, until its end has come
        LogParser parser;
    };

    LogReader(std::string directory, android::base::unique_fd watch)
        : mDirectory(std::move(directory)), mWatch(std::move(watch)) {}

    void findLogs();
    void readLog(const std::string& program, Log& log);
    static void takeLines(Log& log, bool unfinished, std::vector<LogLine>* lines);

    std::string mDirectory;
    android::base::unique_fd mWatch;   ///< inotify
    std::map<std::string, Log> mLogs;  ///< key: program
};

}  // namespace orvo::simulator
