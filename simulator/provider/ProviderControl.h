// SPDX-License-Identifier: Apache-2.0
// ProviderControl: the interface by which a person or a test moves a simulated provider.

#pragma once

#include <memory>

#include <vendor/orvo/simulator/1.0/ISimulatedProvider.h>

#include "simulator/provider/SimulatedCameras.h"

namespace orvo::simulator {

/** Serves ISimulatedProvider, whose contract is in its .hal file. Any thread may call. */
class ProviderControl : public vendor::orvo::simulator::V1_0::ISimulatedProvider {
  public:
    using Operation = vendor::orvo::simulator::V1_0::Operation;
    using Status = android::hardware::camera::common::V1_0::Status;
    using CameraDeviceStatus = android::hardware::camera::common::V1_0::CameraDeviceStatus;
    using TorchModeStatus = android::hardware::camera::common::V1_0::TorchModeStatus;
    using hidl_string = android::hardware::hidl_string;
    template <typename T>
    using Return = android::hardware::Return<T>;

    explicit ProviderControl(std::shared_ptr<SimulatedCameras> cameras);

    Return<void> setDeviceStatus(const hidl_string& name, CameraDeviceStatus status,
                                 setDeviceStatus_cb _hidl_cb) override;
    Return<void> setTorchStatus(const hidl_string& name, TorchModeStatus status,
                                setTorchStatus_cb _hidl_cb) override;
    Return<void> answerWith(Operation operation, Status status, bool withData,
                            answerWith_cb _hidl_cb) override;
    Return<void> answerNormally(Operation operation, answerNormally_cb _hidl_cb) override;
    Return<void> getState(getState_cb _hidl_cb) override;
    Return<bool> settle(uint32_t timeoutMs) override;
    Return<void> awaitListener(uint64_t count, uint32_t timeoutMs,
                               awaitListener_cb _hidl_cb) override;

  private:
    const std::shared_ptr<SimulatedCameras> mCameras;
};

}  // namespace orvo::simulator
