// SPDX-License-Identifier: Apache-2.0
// Forwarding, call by call.

#include "ProviderShim.h"

namespace orvo {

using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;

ProviderShim::ProviderShim(const sp<ICameraProvider>& provider) : mProvider(provider) {}

Return<ProviderShim::Status> ProviderShim::setCallback(
        const sp<ICameraProviderCallback>& callback) {
    return mProvider->setCallback(callback);
}

Return<void> ProviderShim::getVendorTags(getVendorTags_cb _hidl_cb) {
    return mProvider->getVendorTags(_hidl_cb);
}

Return<void> ProviderShim::getCameraIdList(getCameraIdList_cb _hidl_cb) {
    return mProvider->getCameraIdList(_hidl_cb);
}

Return<void> ProviderShim::isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) {
    return mProvider->isSetTorchModeSupported(_hidl_cb);
}

Return<void> ProviderShim::getCameraDeviceInterface_V1_x(
        const hidl_string& cameraDeviceName, getCameraDeviceInterface_V1_x_cb _hidl_cb) {
    return mProvider->getCameraDeviceInterface_V1_x(cameraDeviceName, _hidl_cb);
}

Return<void> ProviderShim::getCameraDeviceInterface_V3_x(
        const hidl_string& cameraDeviceName, getCameraDeviceInterface_V3_x_cb _hidl_cb) {
    return mProvider->getCameraDeviceInterface_V3_x(cameraDeviceName, _hidl_cb);
}

Return<void> ProviderShim::ping() {
    return mProvider->ping();
}

Return<void> ProviderShim::debug(const hidl_handle& fd, const hidl_vec<hidl_string>& options) {
    return mProvider->debug(fd, options);
}

Return<void> ProviderShim::getDebugInfo(getDebugInfo_cb _hidl_cb) {
    return mProvider->getDebugInfo(_hidl_cb);
}

Return<void> ProviderShim::setHALInstrumentation() {
    return mProvider->setHALInstrumentation();
}

Return<void> ProviderShim::notifySyspropsChanged() {
    return mProvider->notifySyspropsChanged();
}

Return<bool> ProviderShim::linkToDeath(const sp<hidl_death_recipient>& recipient, uint64_t cookie) {
    return mProvider->linkToDeath(recipient, cookie);
}

Return<bool> ProviderShim::unlinkToDeath(const sp<hidl_death_recipient>& recipient) {
    return mProvider->unlinkToDeath(recipient);
}

}  // namespace orvo
