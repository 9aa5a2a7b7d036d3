// SPDX-License-Identifier: Apache-2.0
// RecordingCallback and Gate: what the transport's tests hand out and wait on.

#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include <vendor/orvo/peer/1.0/ICallback.h>

namespace orvo::test {

/** Opened once, by whoever a test waits for. */
class Gate {
  public:
    void open() {
        std::lock_guard<std::mutex> lock(mMutex);
        mOpen = true;
        mChanged.notify_all();
    }
    /** False after a time in which it would have been opened on the slowest machine. */
    bool wait() { return waitFor(std::chrono::seconds(20)); }
    bool waitFor(std::chrono::milliseconds time) {
        std::unique_lock<std::mutex> lock(mMutex);
        return mChanged.wait_for(lock, time, [this] { return mOpen; });
    }

  private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mOpen = false;
};

/** Answers each call with its argument plus one, and remembers on which threads it was called. */
class RecordingCallback : public vendor::orvo::peer::V1_0::ICallback {
  public:
    template <typename T>
    using Return = android::hardware::Return<T>;

    ~RecordingCallback() override {
        if (whenDestroyed) whenDestroyed();
    }

    Return<int32_t> onCall(int32_t value) override {
        {
            std::lock_guard<std::mutex> lock(mMutex);
            mThreads.insert(std::this_thread::get_id());
            mValues.push_back(value);
        }
        if (whenCalled) whenCalled(value);
        return value + 1;
    }

    Return<void> onCallWithResult(const android::hardware::hidl_string& text,
                                  onCallWithResult_cb done) override {
        done(true, text);
        return android::hardware::Void();
    }

    std::set<std::thread::id> threads() {
        std::lock_guard<std::mutex> lock(mMutex);
        return mThreads;
    }
    std::vector<int32_t> values() {
        std::lock_guard<std::mutex> lock(mMutex);
        return mValues;
    }

    // Set before the callback is given away.
    std::function<void(int32_t)> whenCalled;
    std::function<void()> whenDestroyed;

  private:
    std::mutex mMutex;
    std::set<std::thread::id> mThreads;
    std::vector<int32_t> mValues;
};

}  // namespace orvo::test
