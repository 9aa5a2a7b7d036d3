// SPDX-License-Identifier: Apache-2.0
// StatusLog: the callback that a camera framework registers; it remembers what it was told.

#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <android/hardware/camera/provider/2.4/ICameraProviderCallback.h>

#include "host/Mutex.h"

namespace orvo::simulator {

/** One notification, as it came. */
struct StatusEvent {
    using Device = android::hardware::camera::common::V1_0::CameraDeviceStatus;
    using Torch = android::hardware::camera::common::V1_0::TorchModeStatus;

    std::string cameraDeviceName;
    std::variant<Device, Torch> status;

    bool is(const std::string& name, std::variant<Device, Torch> wanted) const {
        return cameraDeviceName == name && status == wanted;
    }
    /** Such as "device@3.2/legacy/100 PRESENT" or "device@3.2/legacy/100 torch AVAILABLE_ON". */
    std::string toText() const;
};

/** Any thread may ask; notifications come on threads of the pool and never wait for anybody. */
class StatusLog : public android::hardware::camera::provider::V2_4::ICameraProviderCallback {
  public:
    template <typename T>
    using Return = android::hardware::Return<T>;
    using Predicate = std::function<bool(const StatusEvent&)>;

    Return<void> cameraDeviceStatusChange(const android::hardware::hidl_string& name,
                                          StatusEvent::Device status) override;
    Return<void> torchModeStatusChange(const android::hardware::hidl_string& name,
                                       StatusEvent::Torch status) override;

    /** How many notifications came so far: a mark to wait from. */
    size_t size() const;
    std::vector<StatusEvent> events(size_t from = 0) const;

    /**
     * Waits for a notification that the predicate accepts, among those from the mark on.
     *
     * @return nothing if none came in time, or if the log was closed before one came.
     */
    std::optional<StatusEvent> waitFor(const Predicate& predicate,
                                       std::chrono::milliseconds timeout, size_t from = 0) const;

    /** Nothing more will come: ends every wait, present and future. */
    void close();
    bool isClosed() const;

  private:
    void add(StatusEvent event);

    mutable Mutex mLock;
    mutable ConditionVariable mChanged;
    std::vector<StatusEvent> mEvents GUARDED_BY(mLock);
    bool mClosed GUARDED_BY(mLock) = false;
};

}  // namespace orvo::simulator
