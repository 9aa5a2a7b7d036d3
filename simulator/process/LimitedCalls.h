// SPDX-License-Identifier: Apache-2.0
// LimitedCalls: calls something that may never return, and goes on without it after a while.

#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <utility>

#include "host/Mutex.h"
#include "simulator/process/OwnedThreads.h"

namespace orvo::simulator {

/** At most so many calls at a time, those that hang among them. Any thread may call. */
class LimitedCalls {
  public:
    explicit LimitedCalls(size_t most) : mFree(most) {}

    /**
     * Waits for every call that was begun; whoever owns this ends the processes that are called
     * beforehand, so that the calls return.
     */
    ~LimitedCalls() = default;

    /**
     * @param function may outlive this call, so it must own, or rely on the life of, all that it
     *                 uses.
     * @return its result, or nothing if it is not there in time: it goes on unheard, or was never
     *         begun, as too many others hang.
     */
    template <typename T>
    std::optional<T> within(std::chrono::milliseconds limit, std::function<T()> function) {
        const auto until = std::chrono::steady_clock::now() + limit;
        auto promise = std::make_shared<std::promise<T>>();
        std::future<T> result = promise->get_future();
        const bool begun = begin(until, [promise, function = std::move(function)] {
            promise->set_value(function());
        });
        if (!begun || result.wait_until(until) != std::future_status::ready) return std::nullopt;
        return result.get();
    }

  private:
    bool begin(std::chrono::steady_clock::time_point until, std::function<void()> call) {
        MutexLock lock(mLock);
        const bool isFree =
                mChanged.wait_until(lock, until, [this]() REQUIRES(mLock) { return mFree > 0; });
        if (!isFree) return false;
        mFree--;
        mThreads.start([this, call = std::move(call)] {
            call();
            MutexLock ended(mLock);
            mFree++;
            mChanged.notify_one();
        });
        return true;
    }

    Mutex mLock;
    ConditionVariable mChanged;
    size_t mFree GUARDED_BY(mLock);
    OwnedThreads mThreads;  ///< last: its threads use everything above
};

}  // namespace orvo::simulator
