// SPDX-License-Identifier: Apache-2.0
// ThreadPool: the threads on which incoming calls and obituaries run.

#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <thread>
#include <vector>

#include <utils/Errors.h>

#include "host/Mutex.h"

namespace android {
namespace hardware {
namespace transport {

using Job = std::function<void()>;

/**
 * One per process, never destroyed. Jobs start in the order in which they were submitted; jobs
 * that nobody may run yet (no thread has been started or has joined), or any more, wait.
 * Thread-safe.
 */
class ThreadPool {
  public:
    static ThreadPool& instance();

    /** See ProcessState::setThreadPoolConfiguration. Threads that already run are kept. */
    void configure(size_t maxThreads, bool callerJoins);
    size_t maxThreads();

    /** Starts the first thread if the configuration allows any; later calls do nothing. */
    void start();

    /** Makes the calling thread one of the pool, until that is stopped. */
    void join();

    /** Runs the job on a thread of the pool, starting another one if all are busy. */
    void submit(Job job);

    /** For event loops: a descriptor that is readable while jobs wait; -1 if there is none. */
    int pollDescriptor();
    /** Runs the jobs that wait, on the calling thread, and returns. */
    void drain();

    /** Whether the calling thread serves calls, and whether no other thread can. */
    static bool isPoolThread();
    bool isOnlyThread();

    // The end, on a thread that is none of the pool, in this order.

    /** No job starts any more. False if one still runs after the limit. */
    bool stop(std::chrono::milliseconds limit);
    /** Waits until every thread has left. */
    void awaitEnd();
    /** Gives up the jobs that wait, on this thread. */
    void dropJobs();

  private:
    void spawnLocked() REQUIRES(mMutex);
    void workLoop();
    /** Takes the next job; false if none waits. */
    bool takeLocked(Job* job) REQUIRES(mMutex);

    orvo::Mutex mMutex;
    orvo::ConditionVariable mJobsChanged;
    std::deque<Job> mJobs GUARDED_BY(mMutex);
    size_t mConfiguredMax GUARDED_BY(mMutex) = 1;
    size_t mMaxSpawned GUARDED_BY(mMutex) = 1;  ///< without the threads that join
    std::vector<std::thread> mSpawned GUARDED_BY(mMutex);
    size_t mThreads GUARDED_BY(mMutex) = 0;  ///< spawned or joined, and still here
    size_t mIdle GUARDED_BY(mMutex) = 0;
    bool mStarted GUARDED_BY(mMutex) = false;
    bool mStopped GUARDED_BY(mMutex) = false;
    orvo::ConditionVariable mThreadsChanged;
    int mPollFd GUARDED_BY(mMutex) = -1;
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
