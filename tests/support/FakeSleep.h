// SPDX-License-Identifier: Apache-2.0
// A clock in which nobody waits: sleeping takes no time and is written down.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <vector>

namespace orvo::test {

/**
 * Serves nanosleep, and with it std::this_thread::sleep_for, of the whole process while it exists;
 * at most one does at a time. Any thread.
 */
class FakeSleep {
  public:
    FakeSleep();
    ~FakeSleep();
    FakeSleep(const FakeSleep&) = delete;
    FakeSleep& operator=(const FakeSleep&) = delete;

    /** How long each sleep so far was meant to be, oldest first. */
    std::vector<std::chrono::nanoseconds> sleeps() const;

    /** Runs in place of the wait, after it was written down. Set before threads are started. */
    std::function<void(std::chrono::nanoseconds)> onSleep;

    void add(std::chrono::nanoseconds duration);

  private:
    mutable std::mutex mMutex;
    std::vector<std::chrono::nanoseconds> mSleeps;
};

}  // namespace orvo::test
