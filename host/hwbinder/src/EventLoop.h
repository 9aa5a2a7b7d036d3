// SPDX-License-Identifier: Apache-2.0
// EventLoop: the one thread on which all of a process's Cap'n Proto objects live.

#pragma once

#include <deque>

#include <kj/async-io.h>
#include <kj/function.h>

#include "host/Mutex.h"

namespace android {
namespace hardware {
namespace transport {

/**
 * Runs until the process ends. Nothing that may wait for another thread runs on it: handlers, and
 * destructors of other people's objects, go to the thread pool.
 */
class EventLoop {
  public:
    /** Starts the thread and waits until it runs. */
    EventLoop();

    /** Runs the task on the loop's thread, after those posted before. From any thread. */
    void post(kj::Function<void()> task);

    bool isCurrentThread() const;

    /** Only on the loop's thread. */
    kj::LowLevelAsyncIoProvider& io() { return *mIo; }

  private:
    [[noreturn]] void run(kj::WaitScope& waitScope);

    orvo::Mutex mMutex;
    std::deque<kj::Function<void()>> mTasks GUARDED_BY(mMutex);
    kj::Maybe<kj::Own<kj::CrossThreadPromiseFulfiller<void>>> mWakeUp GUARDED_BY(mMutex);
    kj::LowLevelAsyncIoProvider* mIo = nullptr;
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
