// SPDX-License-Identifier: Apache-2.0
// Stands between the underlying providers' notifications and the framework's callback.

#include <utility>

#include <android/log.h>

#include "provider/LentText.h"
#include "provider/LogTag.h"
#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/naming/CameraIdProperty.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using common::V1_0::CameraDeviceStatus;
using common::V1_0::Status;
using common::V1_0::TorchModeStatus;

namespace {

// Parts of the texts that log readers search for.
constexpr int kDeviceStatusDroppedNumber = 358;
constexpr int kTorchStatusDroppedNumber = 375;

void logDropped(const char* method, int number) {
    __android_log_print(ANDROID_LOG_WARN, kLogTag, "%s:%d No callback registered", method, number);
}

}  // namespace

Return<Status> OrvoCameraServiceImplementation::setCallback(
        const sp<ICameraProviderCallback>& callback) {
    mCallback = callback;

    for (const HALDescriptor& descriptor : mHalDescriptors) {
        sp<ICameraProvider> shim = descriptor.mShim.promote();
        if (shim == nullptr) {
            // A provider that is not running must not take the others down.
            __android_log_print(ANDROID_LOG_WARN, kLogTag,
                                "No shim to set the callback on for %s, skipping it",
                                descriptor.mName.c_str());
            continue;
        }
        // Only the transport counts: a provider that answers with an error status is registered.
        const bool registered = shim->setCallback(this).isOk();
        shim.clear();
        if (!registered) {
            __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to set callback");
            return Status::INTERNAL_ERROR;
        }
    }
    return Status::OK;
}

Return<void> OrvoCameraServiceImplementation::cameraDeviceStatusChange(
        const hidl_string& cameraDeviceName, CameraDeviceStatus newStatus) {
    std::string providerName = cameraDeviceName;
    // Two words for three states on purpose: ENUMERATING is logged as NOT_PRESENT.
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Got camera status change for %s and status %s",
                        providerName.c_str(),
                        newStatus == CameraDeviceStatus::PRESENT ? "PRESENT" : "NOT_PRESENT");
    const std::string frameworkName = providerDeviceNameToAndroidDeviceName(providerName);

    // A name that does not parse has an empty type and an empty id, and goes on with them.
    DeviceNameParts parts;  // Of the argument: `providerName` may move into the map.
    if (!splitDeviceName(viewOf(cameraDeviceName), parts)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to parse device name %s",
                            providerName.c_str());
    }

    {
        const std::lock_guard<std::mutex> lock(mActiveDevicesMutex);
        if (newStatus == CameraDeviceStatus::NOT_PRESENT) {
            removeCameraIdFromSystemProperty(parts.type, parts.id);  // Also for an unknown device.
            mActiveDevices.erase(frameworkName);
        } else if (newStatus == CameraDeviceStatus::PRESENT) {
            mActiveDevices[frameworkName] = std::move(providerName);
            appendCameraIdToSystemProperty(parts.type, parts.id);
        }
        for (const auto& [key, value] : mActiveDevices) {
            __android_log_print(ANDROID_LOG_INFO, kLogTag, "mActiveDevices Key: %s, Value: %s",
                                key.c_str(), value.c_str());
        }
    }

    const sp<ICameraProviderCallback> callback = mCallback;
    if (callback == nullptr) {
        logDropped("cameraDeviceStatusChange", kDeviceStatusDroppedNumber);
        return Void();
    }
    return callback->cameraDeviceStatusChange(lend(frameworkName), newStatus);
}

Return<void> OrvoCameraServiceImplementation::torchModeStatusChange(
        const hidl_string& cameraDeviceName, TorchModeStatus newStatus) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Torchmode changed  for %s",
                        cameraDeviceName.c_str());
    const std::string frameworkName = providerDeviceNameToAndroidDeviceName(cameraDeviceName);

    const sp<ICameraProviderCallback> callback = mCallback;
    if (callback == nullptr) {
        logDropped("torchModeStatusChange", kTorchStatusDroppedNumber);
        return Void();
    }
    return callback->torchModeStatusChange(lend(frameworkName), newStatus);
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
