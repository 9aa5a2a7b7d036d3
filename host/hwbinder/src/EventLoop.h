// SPDX-License-Identifier: Apache-2.0
// EventLoop: the one thread on which all of a process's Cap'n Proto objects live.

#pragma once

#include <deque>
#include <thread>

#include <kj/async-io.h>
#include <kj/function.h>
#include <utils/RefBase.h>

#include "host/Mutex.h"

namespace android {
namespace hardware {
namespace transport {

/** Stands for being on the loop's thread; what is touched there only is GUARDED_BY it. */
class CAPABILITY("thread") LoopThread {};
inline LoopThread gLoopThread;

/**
 * One per process, never destroyed. Nothing that may wait for another thread runs on it: handlers,
 * and destructors of other people's objects, go to the thread pool.
 */
class EventLoop {
  public:
    /** Starts the thread and waits until it runs. */
    EventLoop();

    /**
     * Runs the task on the loop's thread, after those posted before. From any thread. False after
     * the end: then it is kept and never run, for what it holds may only go on the loop's thread.
     */
    bool post(kj::Function<void()> task);

    /** Runs what has been posted, and waits until the thread has ended. Once. */
    void end();

    /** First in every function that is for the loop's thread only: ends the process on another. */
    static void assertCurrent() ASSERT_CAPABILITY(gLoopThread);

    /** Only on the loop's thread. */
    kj::LowLevelAsyncIoProvider& io();

    /**
     * Gives up a reference to other people's object, which may be the last one: never on the loop's
     * thread, where it goes to the thread pool, as such a destructor may wait. From any thread.
     */
    static void release(sp<RefBase> last);

  private:
    void run();
    void wakeUpLocked() REQUIRES(mMutex);

    orvo::Mutex mMutex;
    std::deque<kj::Function<void()>> mTasks GUARDED_BY(mMutex);
    kj::Maybe<kj::Own<kj::CrossThreadPromiseFulfiller<void>>> mWakeUp GUARDED_BY(mMutex);
    bool mEnding GUARDED_BY(mMutex) = false;
    bool mEnded GUARDED_BY(mMutex) = false;
    /** Outlives the thread: others still fulfil promises that were made on it. */
    kj::Own<kj::AsyncIoContext> mContext GUARDED_BY(gLoopThread);
    std::thread mThread;
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
