// SPDX-License-Identifier: Apache-2.0
// Mutex: a lock that the compiler knows, for everything here that a device does not have.

#pragma once

#include <condition_variable>
#include <mutex>
#include <utility>

#include <android-base/thread_annotations.h>

namespace orvo {

/**
 * A std::mutex with the annotations that those of this C++ library lack: clang refuses what touches
 * a field that is GUARDED_BY it without holding it.
 */
class CAPABILITY("mutex") Mutex {
  public:
    void lock() ACQUIRE() { mMutex.lock(); }
    void unlock() RELEASE() { mMutex.unlock(); }

    /** Tells the compiler, and nobody else, that the caller holds it under another name. */
    void isHeld() const ASSERT_CAPABILITY() {}

  private:
    friend class MutexLock;
    std::mutex mMutex;
};

/** Holds a mutex while it exists, but between unlock() and lock(). */
class SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : mLock(mutex.mMutex) {}
    ~MutexLock() RELEASE() {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    void lock() ACQUIRE() { mLock.lock(); }
    void unlock() RELEASE() { mLock.unlock(); }

  private:
    friend class ConditionVariable;
    std::unique_lock<std::mutex> mLock;
};

/**
 * Waits as std::condition_variable does. A condition that reads guarded fields says so, as it runs
 * with the mutex held: `[this]() REQUIRES(mMutex) { return mDone; }`.
 */
class ConditionVariable {
  public:
    void notify_one() { mChanged.notify_one(); }
    void notify_all() { mChanged.notify_all(); }

    template <typename... Rest>
    void wait(MutexLock& lock, Rest&&... rest) {
        mChanged.wait(lock.mLock, std::forward<Rest>(rest)...);
    }
    template <typename... Rest>
    auto wait_for(MutexLock& lock, Rest&&... rest) {
        return mChanged.wait_for(lock.mLock, std::forward<Rest>(rest)...);
    }
    template <typename... Rest>
    auto wait_until(MutexLock& lock, Rest&&... rest) {
        return mChanged.wait_until(lock.mLock, std::forward<Rest>(rest)...);
    }

  private:
    std::condition_variable mChanged;
};

}  // namespace orvo
