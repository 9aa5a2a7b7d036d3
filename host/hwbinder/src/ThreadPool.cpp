// SPDX-License-Identifier: Apache-2.0
// Starting pool threads on demand and handing them their jobs.

#define LOG_TAG "hwbinder"

#include "ThreadPool.h"

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <string>
#include <system_error>

#include <log/log.h>

namespace android {
namespace hardware {
namespace transport {

namespace {

thread_local bool tIsPoolThread = false;

}  // namespace

ThreadPool& ThreadPool::instance() {
    // Never destroyed: other threads use it until the process has ended.
    static ThreadPool& pool = *new ThreadPool();
    return pool;
}

void ThreadPool::configure(size_t maxThreads, bool callerJoins) {
    orvo::MutexLock lock(mMutex);
    mConfiguredMax = maxThreads;
    mMaxSpawned = callerJoins && maxThreads > 0 ? maxThreads - 1 : maxThreads;
}

size_t ThreadPool::maxThreads() {
    orvo::MutexLock lock(mMutex);
    return mConfiguredMax;
}

void ThreadPool::start() {
    orvo::MutexLock lock(mMutex);
    if (mStarted) return;
    mStarted = true;
    if (mMaxSpawned > 0) spawnLocked();
}

void ThreadPool::spawnLocked() {
    if (mStopped) return;
    const std::string name =
            "HwBinder:" + std::to_string(getpid()) + "_" + std::to_string(mSpawned.size() + 1);
    try {
        std::thread thread([this] { workLoop(); });
        pthread_setname_np(thread.native_handle(), name.substr(0, 15).c_str());
        mSpawned.push_back(std::move(thread));
        mThreads++;
    } catch (const std::system_error& error) {
        // The job waits for a thread that is there, or for the next attempt.
        ALOGE("Cannot start a thread for incoming calls: %s", error.what());
    }
}

void ThreadPool::join() {
    {
        orvo::MutexLock lock(mMutex);
        mThreads++;
    }
    workLoop();
}

void ThreadPool::submit(Job job) {
    orvo::MutexLock lock(mMutex);
    mJobs.push_back(std::move(job));
    if (mPollFd >= 0) eventfd_write(mPollFd, 1);
    if (mStarted && mJobs.size() > mIdle && mSpawned.size() < mMaxSpawned) spawnLocked();
    mJobsChanged.notify_one();
}

void ThreadPool::workLoop() {
    tIsPoolThread = true;
    orvo::MutexLock lock(mMutex);
    while (!mStopped) {
        Job job;
        if (!takeLocked(&job)) {
            mIdle++;
            mJobsChanged.wait(lock);
            mIdle--;
            continue;
        }
        lock.unlock();
        job();
        // What the job holds must go while no lock is held: its destructors are other people's.
        job = nullptr;
        lock.lock();
    }
    tIsPoolThread = false;
    mThreads--;
    mThreadsChanged.notify_all();
}

bool ThreadPool::takeLocked(Job* job) {
    if (mStopped || mJobs.empty()) return false;
    *job = std::move(mJobs.front());
    mJobs.pop_front();
    return true;
}

int ThreadPool::pollDescriptor() {
    orvo::MutexLock lock(mMutex);
    if (mPollFd < 0) mPollFd = eventfd(mJobs.size(), EFD_CLOEXEC | EFD_NONBLOCK);
    return mPollFd;
}

void ThreadPool::drain() {
    const bool wasPoolThread = tIsPoolThread;
    tIsPoolThread = true;
    while (true) {
        Job job;
        {
            orvo::MutexLock lock(mMutex);
            eventfd_t ignored;
            if (mPollFd >= 0) eventfd_read(mPollFd, &ignored);
            if (!takeLocked(&job)) break;
        }
        job();
    }
    tIsPoolThread = wasPoolThread;
}

bool ThreadPool::isPoolThread() {
    return tIsPoolThread;
}

bool ThreadPool::isOnlyThread() {
    orvo::MutexLock lock(mMutex);
    return tIsPoolThread && mConfiguredMax == 1;
}

bool ThreadPool::stop(std::chrono::milliseconds limit) {
    orvo::MutexLock lock(mMutex);
    mStopped = true;
    mJobsChanged.notify_all();
    return mThreadsChanged.wait_for(lock, limit,
                                    [this]() REQUIRES(mMutex) { return mThreads == 0; });
}

void ThreadPool::awaitEnd() {
    std::vector<std::thread> spawned;
    {
        orvo::MutexLock lock(mMutex);
        mThreadsChanged.wait(lock, [this]() REQUIRES(mMutex) { return mThreads == 0; });
        spawned.swap(mSpawned);
    }
    for (std::thread& thread : spawned) thread.join();
}

void ThreadPool::dropJobs() {
    std::deque<Job> dropped;
    orvo::MutexLock lock(mMutex);
    dropped.swap(mJobs);
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
