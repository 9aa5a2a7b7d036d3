// SPDX-License-Identifier: Apache-2.0
// Lists the cameras of all underlying providers and routes the framework's calls to one of them.

#include <utility>

#include "provider/Log.h"
#include "provider/OrvoCameraServiceImplementation.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using common::V1_0::Status;

namespace {

// Hands a request of either version on to the shim of the provider that owns the device.
template <typename Request, typename ResultCallback>
Return<void> requestDevice(const OrvoCameraServiceImplementation::HALDescriptor* owner,
                           Request request, const std::string& deviceName,
                           ResultCallback resultCallback) {
    if (owner == nullptr) {
        resultCallback(Status::ILLEGAL_ARGUMENT, nullptr);
        return Void();
    }
    const sp<ICameraProvider> shim = owner->mShim.promote();
    if (shim == nullptr) {
        resultCallback(Status::INTERNAL_ERROR, nullptr);
        return Void();
    }
    hidl_string lentName;  // Without a copy, as the name outlasts the call.
    lentName.setToExternal(deviceName.c_str(), deviceName.size());
    return (shim.get()->*request)(lentName, std::move(resultCallback));
}

}  // namespace

Return<void> OrvoCameraServiceImplementation::getCameraIdList(getCameraIdList_cb _hidl_cb) {
    Status status = Status::OK;
    std::vector<hidl_string> names;

    for (const HALDescriptor& descriptor : mHalDescriptors) {
        const sp<ICameraProvider> shim = descriptor.shimTo("list the cameras of");
        if (shim == nullptr) continue;

        // The result is discarded unexamined on purpose: a provider that vanishes in the middle of
        // an enumeration ends the process by the platform's rule, and it starts afresh.
        shim->getCameraIdList([&](Status reported, const hidl_vec<hidl_string>& reportedNames) {
            // Names of a failing provider count too, and they are passed on untranslated.
            names.insert(names.end(), reportedNames.begin(), reportedNames.end());
            if (reported != Status::OK) {
                status = reported;
                ALOGE("Failed to get camera id list");
            }
        });
    }

    hidl_vec<hidl_string> all;
    all.setToExternal(names.data(), names.size());
    _hidl_cb(status, all);
    return Void();
}

Return<void> OrvoCameraServiceImplementation::isSetTorchModeSupported(
        isSetTorchModeSupported_cb _hidl_cb) {
    sp<ICameraProvider> shim;
    if (!mHalDescriptors.empty()) shim = mHalDescriptors.begin()->mShim.promote();
    if (shim == nullptr) {
        _hidl_cb(Status::INTERNAL_ERROR, false);
        return Void();
    }
    return shim->isSetTorchModeSupported(std::move(_hidl_cb));
}

Return<void> OrvoCameraServiceImplementation::getCameraDeviceInterface_V1_x(
        const hidl_string& cameraDeviceName, getCameraDeviceInterface_V1_x_cb _hidl_cb) {
    const std::string deviceName = androidDeviceNameToProviderDeviceName(cameraDeviceName);
    const auto* owner = HALDescriptor::findProviderForAndroidDevice(mHalDescriptors, deviceName);
    if (owner != nullptr) {
        // At error priority, and with the same name twice, on purpose.
        ALOGE("Got camera for %s id = %s", deviceName.c_str(), deviceName.c_str());
    }
    return requestDevice(owner, &ICameraProvider::getCameraDeviceInterface_V1_x, deviceName,
                         std::move(_hidl_cb));
}

Return<void> OrvoCameraServiceImplementation::getCameraDeviceInterface_V3_x(
        const hidl_string& cameraDeviceName, getCameraDeviceInterface_V3_x_cb _hidl_cb) {
    const std::string deviceName = androidDeviceNameToProviderDeviceName(cameraDeviceName);
    ALOGI("Getting camera device interface for %s camera name %s", cameraDeviceName.c_str(),
          deviceName.c_str());
    const auto* owner = HALDescriptor::findProviderForAndroidDevice(mHalDescriptors, deviceName);
    if (owner != nullptr) {
        ALOGI("Got provider %s for cameraDevice %s", owner->mName.c_str(),
              cameraDeviceName.c_str());
    }
    return requestDevice(owner, &ICameraProvider::getCameraDeviceInterface_V3_x, deviceName,
                         std::move(_hidl_cb));
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
