// SPDX-License-Identifier: Apache-2.0
// ProgramLife: how the simulator's programs are called, say that they serve, and end when told to.

#pragma once

#include <signal.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace orvo::simulator {

/** How a program that takes nothing but words is called. */
struct Usage {
    const char* program;
    const char* sentence;  ///< what it does
    const char* word;      ///< what the words are, such as "INSTANCE"
    const char* meaning;   ///< such as "instance name, such as legacy/0"
    int most;              ///< how many it takes; at least one has to be there
};

/**
 * The words of the command line. Ends the process with status 0 after printing the help, if that is
 * asked for, and with 2 after one line on stderr, if it cannot be called like this.
 */
std::vector<std::string> wordsOrLeave(int argc, char** argv, const Usage& usage);

/** SIGINT and SIGTERM. */
sigset_t endingSignals();

/** Blocks them in this thread and in those that it starts; call it before there are others. */
void blockEndingSignals();

/** Waits for them on a thread of its own. Made before there are others, as it blocks them. */
class EndingSignals {
  public:
    /** @param end is called once, on that thread, when the first of them comes. */
    explicit EndingSignals(std::function<void()> end);
    /** Waits for what was called; from then on they stay blocked and unheard. */
    ~EndingSignals();
    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;

    /** Whether one has come. */
    bool came() const { return mCame; }

  private:
    std::atomic<bool> mCame{false};
    std::atomic<bool> mIsOver{false};
    std::thread mThread;
};

/**
 * Tells whoever started this program that it serves: one line "ready" on stdout. What is written to
 * stdout after that goes where stderr goes, so that nobody need read on.
 */
void announceReady();

}  // namespace orvo::simulator
