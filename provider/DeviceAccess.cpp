// SPDX-License-Identifier: Apache-2.0
// Lists the cameras of all underlying providers and routes the framework's calls to one of them.

#include <utility>

#include <android/log.h>

#include "provider/LentText.h"
#include "provider/LogTag.h"
#include "provider/OrvoCameraServiceImplementation.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using common::V1_0::Status;

Return<void> OrvoCameraServiceImplementation::getCameraIdList(getCameraIdList_cb _hidl_cb) {
    Status status = Status::OK;
    std::vector<hidl_string> names;

    for (const HALDescriptor& descriptor : mHalDescriptors) {
        const sp<ICameraProvider> shim = descriptor.mShim.promote();
        if (shim == nullptr) {
            __android_log_print(ANDROID_LOG_WARN, kLogTag,
                                "No shim to list the cameras of %s, skipping it",
                                descriptor.mName.c_str());
            continue;
        }
        // The result is discarded unexamined on purpose: a provider that vanishes in the middle of
        // an enumeration ends the process by the platform's rule, and it starts afresh.
        shim->getCameraIdList([&](Status reported, const hidl_vec<hidl_string>& reportedNames) {
            // Names of a failing provider count too, and they are passed on untranslated.
            names.insert(names.end(), reportedNames.begin(), reportedNames.end());
            if (reported != Status::OK) {
                status = reported;
                __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to get camera id list");
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
    const std::string providerName = androidDeviceNameToProviderDeviceName(cameraDeviceName);
    const HALDescriptor* const descriptor =
            HALDescriptor::findProviderForAndroidDevice(mHalDescriptors, providerName);
    if (descriptor == nullptr) {
        _hidl_cb(Status::ILLEGAL_ARGUMENT, nullptr);
        return Void();
    }

    // At error priority, and with the same name twice, on purpose.
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Got camera for %s id = %s",
                        providerName.c_str(), providerName.c_str());
    const sp<ICameraProvider> shim = descriptor->mShim.promote();
    if (shim == nullptr) {
        _hidl_cb(Status::INTERNAL_ERROR, nullptr);
        return Void();
    }
    return shim->getCameraDeviceInterface_V1_x(lend(providerName), std::move(_hidl_cb));
}

Return<void> OrvoCameraServiceImplementation::getCameraDeviceInterface_V3_x(
        const hidl_string& cameraDeviceName, getCameraDeviceInterface_V3_x_cb _hidl_cb) {
    const std::string providerName = androidDeviceNameToProviderDeviceName(cameraDeviceName);
    __android_log_print(ANDROID_LOG_INFO, kLogTag,
                        "Getting camera device interface for %s camera name %s",
                        cameraDeviceName.c_str(), providerName.c_str());
    const HALDescriptor* const descriptor =
            HALDescriptor::findProviderForAndroidDevice(mHalDescriptors, providerName);
    if (descriptor == nullptr) {
        _hidl_cb(Status::ILLEGAL_ARGUMENT, nullptr);
        return Void();
    }

    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Got provider %s for cameraDevice %s",
                        descriptor->mName.c_str(), cameraDeviceName.c_str());
    const sp<ICameraProvider> shim = descriptor->mShim.promote();
    if (shim == nullptr) {
        _hidl_cb(Status::INTERNAL_ERROR, nullptr);
        return Void();
    }
    return shim->getCameraDeviceInterface_V3_x(lend(providerName), std::move(_hidl_cb));
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
