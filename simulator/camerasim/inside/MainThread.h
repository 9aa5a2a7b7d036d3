// SPDX-License-Identifier: Apache-2.0
// MainThread: hands work to the one thread that may start processes.

#pragma once

#include <chrono>
#include <functional>
#include <map>

#include "host/Mutex.h"

namespace orvo::simulator {

/**
 * A queue that one thread empties. Children are ended by the kernel together with the thread that
 * started them, so they are all started by the thread that lives longest.
 */
class MainThread {
  public:
    using Work = std::function<void()>;

    /** Has the work done, after the delay, on the thread that is in run(). Any thread may call. */
    void post(Work work, std::chrono::milliseconds delay = std::chrono::milliseconds(0));

    /** As post, and waits until it is done; false if the queue was stopped meanwhile. */
    bool perform(Work work);

    /** Does what is posted, one after the other in the order of their times, until stop(). */
    void run();
    /** What has not begun yet is dropped. */
    void stop();

  private:
    using Clock = std::chrono::steady_clock;

    Mutex mLock;
    ConditionVariable mChanged;
    std::multimap<Clock::time_point, Work> mWork GUARDED_BY(mLock);  ///< key: not before
    bool mStopped GUARDED_BY(mLock) = false;
};

}  // namespace orvo::simulator
