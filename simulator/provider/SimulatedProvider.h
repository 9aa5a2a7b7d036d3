// SPDX-License-Identifier: Apache-2.0
// SimulatedProvider: the camera provider interface of a simulated provider.

#pragma once

#include <memory>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>

#include "simulator/provider/SimulatedCameras.h"

namespace orvo::simulator {

/**
 * Serves the cameras of one description, by the contract of ICameraProvider 2.4.
 *
 * Every answer may be overridden by the cameras' script; a scripted answer without data carries an
 * empty list, false, or a null device. Any thread may call.
 */
class SimulatedProvider : public android::hardware::camera::provider::V2_4::ICameraProvider {
  public:
    using Status = android::hardware::camera::common::V1_0::Status;
    using Callback = android::hardware::camera::provider::V2_4::ICameraProviderCallback;
    template <typename T>
    using Return = android::hardware::Return<T>;

    explicit SimulatedProvider(std::shared_ptr<SimulatedCameras> cameras);

    /**
     * The new callback counts from now on; external cameras that are there and built-in ones that
     * are not are reported to it from another thread. ILLEGAL_ARGUMENT for null, INTERNAL_ERROR
     * for one that is dead.
     */
    Return<Status> setCallback(const android::sp<Callback>& callback) override;
    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override;
    Return<void> getCameraIdList(getCameraIdList_cb _hidl_cb) override;
    Return<void> isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V1_x(const android::hardware::hidl_string& name,
                                               getCameraDeviceInterface_V1_x_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V3_x(const android::hardware::hidl_string& name,
                                               getCameraDeviceInterface_V3_x_cb _hidl_cb) override;

  private:
    const std::shared_ptr<SimulatedCameras> mCameras;
};

}  // namespace orvo::simulator
