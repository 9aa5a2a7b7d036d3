// SPDX-License-Identifier: Apache-2.0
// Stands between the underlying providers' notifications and the framework's callback.

#include "provider/Log.h"
#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/naming/CameraIdProperty.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using common::V1_0::CameraDeviceStatus;
using common::V1_0::Status;
using common::V1_0::TorchModeStatus;

Return<Status> OrvoCameraServiceImplementation::setCallback(
        const sp<ICameraProviderCallback>& callback) {
    replaceUnlocked(mCallback, callback);

    for (const HALDescriptor& descriptor : mHalDescriptors) {
        // A provider that is not running must not take the others down.
        sp<ICameraProvider> shim = descriptor.shimTo("set the callback on for");
        if (shim == nullptr) continue;

        // Only the transport counts: a provider that answers with an error status is registered.
        const bool registered = shim->setCallback(this).isOk();
        shim.clear();
        if (!registered) {
            ALOGE("Failed to set callback");
            return Status::INTERNAL_ERROR;
        }
    }
    return Status::OK;
}

Return<void> OrvoCameraServiceImplementation::cameraDeviceStatusChange(
        const hidl_string& cameraDeviceName, CameraDeviceStatus newStatus) {
    const std::string providerDeviceName = cameraDeviceName;
    // Two words for three states on purpose: ENUMERATING is logged as NOT_PRESENT.
    ALOGI("Got camera status change for %s and status %s", providerDeviceName.c_str(),
          newStatus == CameraDeviceStatus::PRESENT ? "PRESENT" : "NOT_PRESENT");
    DeviceNameParts parts;
    const bool parsed = splitDeviceName(providerDeviceName, parts);
    const std::string androidDeviceName =
            providerDeviceNameToAndroidDeviceName(providerDeviceName, parts);
    // Then it goes on with an empty type and an empty id.
    if (!parsed) ALOGE("Failed to parse device name %s", providerDeviceName.c_str());

    {
        const std::lock_guard<std::mutex> lock(mActiveDevicesMutex);
        if (newStatus == CameraDeviceStatus::NOT_PRESENT) {
            removeCameraIdFromSystemProperty(parts.type, parts.id);  // Also for an unknown device.
            mActiveDevices.erase(androidDeviceName);
        } else if (newStatus == CameraDeviceStatus::PRESENT) {
            mActiveDevices[androidDeviceName] = providerDeviceName;
            appendCameraIdToSystemProperty(parts.type, parts.id);
        }
        for (const auto& [key, value] : mActiveDevices) {
            ALOGI("mActiveDevices Key: %s, Value: %s", key.c_str(), value.c_str());
        }
    }

    const sp<ICameraProviderCallback> callback = mCallback;
    if (callback == nullptr) {
        ALOGW("%s:%d No callback registered", __func__, 358);
        return Void();
    }
    return callback->cameraDeviceStatusChange(androidDeviceName, newStatus);
}

Return<void> OrvoCameraServiceImplementation::torchModeStatusChange(
        const hidl_string& cameraDeviceName, TorchModeStatus newStatus) {
    ALOGI("Torchmode changed  for %s", cameraDeviceName.c_str());
    const std::string androidDeviceName = providerDeviceNameToAndroidDeviceName(cameraDeviceName);

    const sp<ICameraProviderCallback> callback = mCallback;
    if (callback == nullptr) {
        ALOGW("%s:%d No callback registered", __func__, 375);
        return Void();
    }
    return callback->torchModeStatusChange(androidDeviceName, newStatus);
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
