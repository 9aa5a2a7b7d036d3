// SPDX-License-Identifier: Apache-2.0
// ProviderShim: an ICameraProvider that hands every call on to another one.

#pragma once

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>

namespace orvo {

/**
 * Forwards every call on the caller's thread and answers what the provider answers, transport
 * failures included. Result callbacks are passed on as they are, so they run exactly when and as
 * often as the provider runs them. Thread-safe; holds no lock.
 *
 * What the object says of itself (its descriptor, chain and hashes) is its own: it is an
 * ICameraProvider of version 2.4 even where the provider is of a later one.
 */
class ProviderShim : public ::android::hardware::camera::provider::V2_4::ICameraProvider {
  public:
    using ICameraProvider = ::android::hardware::camera::provider::V2_4::ICameraProvider;
    using ICameraProviderCallback =
            ::android::hardware::camera::provider::V2_4::ICameraProviderCallback;
    using Status = ::android::hardware::camera::common::V1_0::Status;
    template <typename T>
    using Return = ::android::hardware::Return<T>;
    template <typename T>
    using sp = ::android::sp<T>;
    using hidl_string = ::android::hardware::hidl_string;
    using hidl_death_recipient = ::android::hardware::hidl_death_recipient;

    /** Holds the provider, which must not be null, strongly. */
    explicit ProviderShim(const sp<ICameraProvider>& provider);

    Return<Status> setCallback(const sp<ICameraProviderCallback>& callback) override;
    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override;
    Return<void> getCameraIdList(getCameraIdList_cb _hidl_cb) override;
    Return<void> isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V1_x(const hidl_string& cameraDeviceName,
                                               getCameraDeviceInterface_V1_x_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V3_x(const hidl_string& cameraDeviceName,
                                               getCameraDeviceInterface_V3_x_cb _hidl_cb) override;

    Return<void> ping() override;
    Return<void> debug(const ::android::hardware::hidl_handle& fd,
                       const ::android::hardware::hidl_vec<hidl_string>& options) override;
    Return<void> getDebugInfo(getDebugInfo_cb _hidl_cb) override;
    Return<void> setHALInstrumentation() override;
    Return<void> notifySyspropsChanged() override;
    Return<bool> linkToDeath(const sp<hidl_death_recipient>& recipient, uint64_t cookie) override;
    Return<bool> unlinkToDeath(const sp<hidl_death_recipient>& recipient) override;

  private:
    const sp<ICameraProvider> mProvider;
};

}  // namespace orvo
