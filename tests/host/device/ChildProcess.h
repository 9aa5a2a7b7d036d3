// SPDX-License-Identifier: Apache-2.0
// ChildProcess: a program that a test starts, talks to by lines, and ends.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace orvo::testing {

/**
 * A running program with pipes at its standard input and output, and at its standard error if asked
 * for. Not thread-safe. One that still runs at the end of the object is killed and waited for.
 */
class ChildProcess {
  public:
    enum class StandardError { INHERITED, CAPTURED };

    /** Starts `program` with this process's environment. Failure to start fails the test. */
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                 StandardError standardError = StandardError::INHERITED);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return mPid; }

    /** The next line of its standard output without the newline; nothing at its end. Waits; a test
     *  that waits too long is ended by its time limit. */
    std::optional<std::string> readLine();
    /** All of its standard error that is still to come; waits for its end. Only if CAPTURED. */
    std::string readStandardError();
    void writeLine(const std::string& line);
    void closeInput();

    void signal(int number);
    /** Waits for its end: its exit status, or 128 + number if a signal ended it. */
    int wait();
    /** SIGKILL and wait. */
    void kill();

  private:
    pid_t mPid = -1;
    int mInput = -1;
    int mOutput = -1;
    int mError = -1;
    std::string mUnread;
};

}  // namespace orvo::testing
