// SPDX-License-Identifier: Apache-2.0
// The framework's callback, as a test plays it.

#include "tests/support/RecordingCallback.h"

namespace orvo::test {

using android::hardware::hidl_string;
using android::hardware::Return;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;
using android::hardware::camera::common::V1_0::TorchModeStatus;

bool operator==(const Notification& left, const Notification& right) {
    return left.kind == right.kind && left.name == right.name && left.status == right.status;
}

void PrintTo(const Notification& notification, std::ostream* stream) {
    *stream << notification.kind << " " << notification.name << " status " << notification.status;
}

Notification deviceNotification(const std::string& name, CameraDeviceStatus status) {
    return {"device", name, static_cast<uint32_t>(status)};
}

Notification torchNotification(const std::string& name, TorchModeStatus status) {
    return {"torch", name, static_cast<uint32_t>(status)};
}

Return<void> RecordingCallback::cameraDeviceStatusChange(const hidl_string& name,
                                                         CameraDeviceStatus status) {
    return record(deviceNotification(name, status));
}

Return<void> RecordingCallback::torchModeStatusChange(const hidl_string& name,
                                                      TorchModeStatus status) {
    return record(torchNotification(name, status));
}

std::vector<Notification> RecordingCallback::notifications() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mNotifications;
}

bool RecordingCallback::waitFor(size_t count, std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mRecorded.wait_for(lock, timeout, [&] { return mNotifications.size() >= count; });
}

Return<void> RecordingCallback::record(const Notification& notification) {
    if (onNotification) onNotification(notification);
    const std::lock_guard<std::mutex> lock(mMutex);
    mNotifications.push_back(notification);
    mRecorded.notify_all();
    if (rejected.count(notification.name) > 0) {
        return android::hardware::Status::fromStatusT(android::DEAD_OBJECT);
    }
    return android::hardware::Void();
}

}  // namespace orvo::test
