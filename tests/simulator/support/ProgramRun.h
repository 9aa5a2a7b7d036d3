// SPDX-License-Identifier: Apache-2.0
// ProgramRun: a program under test, with its output, its signals and its end.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include <android-base/unique_fd.h>

namespace orvo::simulator::testing {

/** How a program ended. */
struct ProgramEnd {
    bool inTime;  ///< false: it was still running after the patience, and was killed
    int status;   ///< exit status, or 128 and the number of the signal
    std::string out;
    std::string err;
};

class ProgramRun {
  public:
    /** Two pipes, or a terminal, to which stdout and stderr go, and whose session it leads. */
    enum class Screen { PIPES, TERMINAL };

    /** Starts it, with these variables added to the environment. */
    explicit ProgramRun(std::vector<std::string> command,
                        std::map<std::string, std::string> environment = {},
                        Screen screen = Screen::PIPES);
    ~ProgramRun();

    pid_t pid() const { return mPid; }
    void signal(int signal) const;
    /** On its terminal; control characters become signals there. */
    void type(const std::string& text) const;

    /** Nobody reads any more what it prints: its terminal hangs up, or its pipe is broken. */
    void hangUp() { mOutEnd.reset(); }

    /** What it has written to stdout, as far as it was read. */
    const std::string& output() const { return mOut; }

    /** Reads stdout until the text is there; false if the program ends or is too slow. */
    bool awaitOutput(const std::string& text,
                     std::chrono::milliseconds patience = std::chrono::seconds(30));

    /**
     * Waits until the program has ended and everybody who inherited its stdout and stderr has
     * closed them; of a terminal that hung up, whoever was started there.
     */
    ProgramEnd awaitEnd(std::chrono::milliseconds patience = std::chrono::seconds(60));

  private:
    /** Reads what is there; false at the end of both streams or at the deadline. */
    bool readSome(std::chrono::steady_clock::time_point deadline);

    pid_t mPid = -1;
    bool mReaped = false;
    android::base::unique_fd mOutEnd, mErrEnd;
    std::string mOut, mErr;
};

/** Runs a program to its end. */
ProgramEnd runProgram(std::vector<std::string> command,
                      std::map<std::string, std::string> environment = {});

/** Process ids whose environment holds the text; zombies have none. */
std::vector<pid_t> processesWithEnvironment(const std::string& text);

/** The programs of the build under test are beside the test. */
std::string programPath(const std::string& name);

}  // namespace orvo::simulator::testing
