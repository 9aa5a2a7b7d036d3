// SPDX-License-Identifier: Apache-2.0
// Supervisor: starts the programs of a device, knows which of them run, and ends them all.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <android-base/result.h>

#include "host/Mutex.h"

namespace orvo::simulator {

/** A program to start. */
struct ProgramStart {
    std::string name;                  ///< unique among those that run; for people and for signals
    std::vector<std::string> command;  ///< the first word is an absolute path
    std::string logFile;               ///< what it writes to stderr, and stdout unless given below
    int stdoutFd = -1;                 ///< where its stdout goes; stays the caller's
};

/**
 * Child processes, by name.
 *
 * The kernel ends every child with SIGKILL when the thread that started it ends, so start() belongs
 * on the main thread of a process; everything else may be called on any thread. Signals are sent to
 * processes that have not been reaped yet only, so never to a stranger with the same id.
 */
class Supervisor {
  public:
    /** Called on a thread of its own when a program has ended; before awaitEnd returns. */
    using EndObserver =
            std::function<void(const std::string& name, pid_t pid, const std::string& end)>;

    Supervisor() = default;
    /** As stopAll(). */
    ~Supervisor();

    /** To be called before the first start. The observer may call anything but stopAll(). */
    void observeEnds(EndObserver observer) { mObserver = std::move(observer); }

    /** @return its process id; an error if the name runs already or the supervisor is stopping. */
    android::base::Result<pid_t> start(const ProgramStart& program);

    bool isRunning(const std::string& name) const;
    /** Process id of a running program, or nothing. */
    std::optional<pid_t> pidOf(const std::string& name) const;
    /** How the program of this name ended last, such as "ended with status 1"; "" if it did not. */
    std::string endOf(const std::string& name) const;

    /** How often it has ended, and how it did the last time; 0 and "" if it did not. */
    struct History {
        int ends = 0;
        std::string lastEnd;
    };
    History historyOf(const std::string& name) const;

    /** Whether it runs, but was stopped by a signal such as SIGSTOP. */
    bool isHung(const std::string& name) const;

    /** Waits until it has ended; false if it still runs after the patience. */
    bool awaitEnd(const std::string& name, std::chrono::milliseconds patience);

    /** The same for one that may be started again at once: waits until it has ended more often
     *  than `ends`, as historyOf told before. */
    bool awaitMoreEnds(const std::string& name, int ends, std::chrono::milliseconds patience);

    /** False if it is not running. */
    bool signal(const std::string& name, int signal);

    /** Ends every program, the last one started first: SIGTERM, and SIGKILL after the patience. The
     *  observer has returned for each that was ever started, and is not called any more. */
    void stopAll(std::chrono::milliseconds patience = std::chrono::seconds(3));

  private:
    struct Child {
        pid_t pid;
        bool running = true;
        bool observed = false;  ///< it has ended, and the observer has returned
        std::string end;        ///< how it ended
        std::thread waiter;
    };

    void waitForEnd(const std::string& name, Child* child);
    /** The newest one of that name, or null. */
    const Child* find(const std::string& name) const REQUIRES(mLock);

    EndObserver mObserver;  ///< set once, before there is a second thread
    mutable Mutex mLock;
    ConditionVariable mChanged;
    /** Every program ever started, in that order; entries are never erased, so addresses stay. */
    std::list<std::pair<std::string, Child>> mChildren GUARDED_BY(mLock);
    bool mStopping GUARDED_BY(mLock) = false;
};

}  // namespace orvo::simulator
