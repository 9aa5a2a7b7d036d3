// SPDX-License-Identifier: Apache-2.0
// Supervisor: starts the programs of a device, knows which of them run, and ends them all.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <android-base/result.h>
#include <android-base/thread_annotations.h>

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
    Supervisor() = default;
    /** As stopAll(). */
    ~Supervisor();

    /** @return its process id; an error if the name runs already or the supervisor is stopping. */
    android::base::Result<pid_t> start(const ProgramStart& program);

    bool isRunning(const std::string& name) const;
    /** Process id of a running program, or nothing. */
    std::optional<pid_t> pidOf(const std::string& name) const;
    /** How the program of this name ended last, such as "ended with status 1"; "" if it did not. */
    std::string endOf(const std::string& name) const;

    /** Waits until it has ended; false if it still runs after the patience. */
    bool awaitEnd(const std::string& name, std::chrono::milliseconds patience);

    /** False if it is not running. */
    bool signal(const std::string& name, int signal);

    /** Ends every program, the last one started first: SIGTERM, and SIGKILL after the patience. */
    void stopAll(std::chrono::milliseconds patience = std::chrono::seconds(3));

  private:
    struct Child {
        pid_t pid;
        bool running = true;
        std::string end;  ///< how it ended
        std::thread waiter;
    };

    void waitForEnd(Child* child);
    /** The newest one of that name, or null. */
    const Child* find(const std::string& name) const REQUIRES(mLock);

    mutable std::mutex mLock;
    std::condition_variable mChanged;
    /** Every program ever started, in that order; entries are never erased, so addresses stay. */
    std::list<std::pair<std::string, Child>> mChildren GUARDED_BY(mLock);
    bool mStopping GUARDED_BY(mLock) = false;
};

}  // namespace orvo::simulator
