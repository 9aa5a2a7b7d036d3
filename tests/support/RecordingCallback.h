// SPDX-License-Identifier: Apache-2.0
// The framework's callback, as a test plays it.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <android/hardware/camera/provider/2.4/ICameraProviderCallback.h>

#include "tests/support/CountedInstance.h"

namespace orvo::test {

/** One notification that reached the framework. */
struct Notification {
    std::string kind;  ///< "device" or "torch".
    std::string name;
    uint32_t status;
};

bool operator==(const Notification& left, const Notification& right);
void PrintTo(const Notification& notification, std::ostream* stream);

Notification deviceNotification(const std::string& name,
                                android::hardware::camera::common::V1_0::CameraDeviceStatus status);
Notification torchNotification(const std::string& name,
                               android::hardware::camera::common::V1_0::TorchModeStatus status);

/** Records every notification, those that it rejects included. Any thread. */
class RecordingCallback : public android::hardware::camera::provider::V2_4::ICameraProviderCallback,
                          public CountedInstance {
  public:
    android::hardware::Return<void> cameraDeviceStatusChange(
            const android::hardware::hidl_string& name,
            android::hardware::camera::common::V1_0::CameraDeviceStatus status) override;
    android::hardware::Return<void> torchModeStatusChange(
            const android::hardware::hidl_string& name,
            android::hardware::camera::common::V1_0::TorchModeStatus status) override;

    std::vector<Notification> notifications() const;
    bool waitFor(size_t count, std::chrono::milliseconds timeout = kPatience);

    /** Names whose notifications fail in transport. Set before the callback is shared. */
    std::set<std::string> rejected;
    /** Runs at the start of every notification. Set before the callback is shared. */
    std::function<void(const Notification&)> onNotification;

  private:
    android::hardware::Return<void> record(const Notification& notification);

    mutable std::mutex mMutex;
    std::condition_variable mRecorded;
    std::vector<Notification> mNotifications;
};

}  // namespace orvo::test
