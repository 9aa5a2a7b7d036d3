// SPDX-License-Identifier: Apache-2.0
// Holds threads up at a point of a test's choice, to make an interleaving happen on purpose.
#pragma once

#include <condition_variable>
#include <mutex>

#include "tests/support/CapturedLog.h"

namespace orvo::test {

/** Closed at first. Any thread. */
class Gate {
  public:
    /** Lets everybody through, now and later. */
    void open() {
        const std::lock_guard<std::mutex> lock(mMutex);
        mOpen = true;
        mChanged.notify_all();
    }

    /** Waits until the gate is open; gives up, and goes on, after kPatience. */
    void pass() {
        std::unique_lock<std::mutex> lock(mMutex);
        ++mArrived;
        mChanged.notify_all();
        mChanged.wait_for(lock, kPatience, [this] { return mOpen; });
    }

    /** Waits until that many threads have arrived. False when they do not come in time. */
    bool waitForArrivals(int count) {
        std::unique_lock<std::mutex> lock(mMutex);
        return mChanged.wait_for(lock, kPatience, [&] { return mArrived >= count; });
    }

  private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mOpen = false;
    int mArrived = 0;
};

}  // namespace orvo::test
