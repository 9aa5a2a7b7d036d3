// SPDX-License-Identifier: Apache-2.0
// OwnedThreads: threads that are waited for by the object that started them.

#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <thread>

#include "host/Mutex.h"

namespace orvo::simulator {

/** Any thread may call, also one that was started here. */
class OwnedThreads {
  public:
    OwnedThreads() = default;
    /** Waits for all of them, so whoever owns this sees to it beforehand that they end. */
    ~OwnedThreads();
    OwnedThreads(const OwnedThreads&) = delete;
    OwnedThreads& operator=(const OwnedThreads&) = delete;

    /** Runs the work on a thread of its own; those that have ended leave nothing behind. */
    void start(std::function<void()> work);

  private:
    struct Started {
        std::thread thread;
        std::atomic<bool> isDone{false};

        ~Started() {
            if (thread.joinable()) thread.join();
        }
    };

    Mutex mLock;
    std::list<Started> mThreads GUARDED_BY(mLock);
};

}  // namespace orvo::simulator
