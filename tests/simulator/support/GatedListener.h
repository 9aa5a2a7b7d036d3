// SPDX-License-Identifier: Apache-2.0
// GatedListener: a listener whose handlers wait at a gate while it is closed.

#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include <android/hardware/camera/provider/2.4/ICameraProviderCallback.h>

#include "simulator/framework/StatusLog.h"

namespace orvo::simulator::testing {

/** Records like a framework's log; every handler first waits until the gate is open. */
class GatedListener : public StatusLog {
  public:
    Return<void> cameraDeviceStatusChange(const android::hardware::hidl_string& name,
                                          StatusEvent::Device status) override {
        pass();
        return StatusLog::cameraDeviceStatusChange(name, status);
    }

    void closeGate() {
        std::lock_guard lock(mLock);
        mOpen = false;
    }
    void openGate() {
        {
            std::lock_guard lock(mLock);
            mOpen = true;
        }
        mChanged.notify_all();
    }
    void awaitSomebodyAtTheGate() {
        std::unique_lock lock(mLock);
        mChanged.wait(lock, [this] { return mWaiting > 0; });
    }

    /** All events as text, in order. */
    std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (const StatusEvent& event : events()) all.push_back(event.toText());
        return all;
    }

  private:
    void pass() {
        std::unique_lock lock(mLock);
        mWaiting++;
        mChanged.notify_all();
        mChanged.wait(lock, [this] { return mOpen; });
        mWaiting--;
    }

    std::mutex mLock;
    std::condition_variable mChanged;
    bool mOpen = true;
    int mWaiting = 0;
};

}  // namespace orvo::simulator::testing
