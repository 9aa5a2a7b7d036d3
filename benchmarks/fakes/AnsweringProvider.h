// SPDX-License-Identifier: Apache-2.0
// The other ends of the calls whose cost is measured: an underlying provider and the framework.
#pragma once

#include <string>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <android/hardware/camera/provider/2.4/ICameraProviderCallback.h>

#include "benchmarks/fakes/Journal.h"

namespace orvo::benchmarks {

/** A provider, and its own shim, that hands out what it holds and allocates nothing. */
class AnsweringProvider : public android::hardware::camera::provider::V2_4::ICameraProvider {
  public:
    using Callback = android::hardware::camera::provider::V2_4::ICameraProviderCallback;
    using Status = android::hardware::camera::common::V1_0::Status;
    using VendorTagSection = android::hardware::camera::common::V1_0::VendorTagSection;
    using hidl_string = android::hardware::hidl_string;
    template <typename T>
    using Return = android::hardware::Return<T>;

    /** With `idCount` cameras, and `sectionCount` sections of as many vendor tags each. */
    AnsweringProvider(const std::string& instance, size_t idCount, size_t sectionCount);

    Return<Status> setCallback(const android::sp<Callback>& callback) override;
    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override;
    Return<void> getCameraIdList(getCameraIdList_cb _hidl_cb) override;
    Return<void> isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V1_x(const hidl_string& name,
                                               getCameraDeviceInterface_V1_x_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V3_x(const hidl_string& name,
                                               getCameraDeviceInterface_V3_x_cb _hidl_cb) override;
    Return<bool> linkToDeath(const android::sp<android::hardware::hidl_death_recipient>& recipient,
                             uint64_t cookie) override;
    Return<bool> unlinkToDeath(
            const android::sp<android::hardware::hidl_death_recipient>& recipient) override;

    /** What it was last linked with; the recipient lives as long as its side. */
    android::hardware::hidl_death_recipient* recipient = nullptr;
    uint64_t cookie = 0;

  private:
    const std::string mInstance;
    android::hardware::hidl_vec<hidl_string> mIds;
    android::hardware::hidl_vec<VendorTagSection> mSections;
};

/** A framework that takes every notification and does nothing. */
class SilentFramework : public AnsweringProvider::Callback {
  public:
    android::hardware::Return<void> cameraDeviceStatusChange(
            const android::hardware::hidl_string& name,
            android::hardware::camera::common::V1_0::CameraDeviceStatus status) override;
    android::hardware::Return<void> torchModeStatusChange(
            const android::hardware::hidl_string& name,
            android::hardware::camera::common::V1_0::TorchModeStatus status) override;
};

}  // namespace orvo::benchmarks
