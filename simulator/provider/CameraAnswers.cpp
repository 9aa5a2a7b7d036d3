// SPDX-License-Identifier: Apache-2.0
// CameraAnswers: the script first, then the simulation's state.

#include "simulator/provider/CameraAnswers.h"

namespace orvo::simulator {

using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::camera::common::V1_0::CameraResourceCost;
using android::hardware::camera::common::V1_0::TorchMode;
using vendor::orvo::simulator::V1_0::Operation;

std::pair<DeviceStatus, bool> statusOf(const DeviceIdentity& device, Operation operation) {
    const auto scripted = device.cameras.script().onCall(operation);
    if (scripted) return {scripted->status, scripted->withData};
    const DeviceStatus status = device.cameras.checkPlugged(device.name, device.plug);
    return {status, status == DeviceStatus::OK};
}

void answerResourceCost(
        const DeviceIdentity& device,
        const std::function<void(DeviceStatus, const CameraResourceCost&)>& callback) {
    const auto [status, withData] = statusOf(device, Operation::DEVICE_GET_RESOURCE_COST);
    CameraResourceCost cost{};
    if (withData) {
        const CameraDescription& camera = device.cameras.describe(device.name);
        cost.resourceCost = camera.resourceCost;
        cost.conflictingDevices =
                hidl_vec<hidl_string>(camera.conflicts.begin(), camera.conflicts.end());
    }
    callback(status, cost);
}

DeviceStatus answerTorchMode(const DeviceIdentity& device, TorchMode mode) {
    const auto scripted = device.cameras.script().onCall(Operation::DEVICE_SET_TORCH_MODE);
    if (scripted && !scripted->withData) return scripted->status;
    if (mode != TorchMode::OFF && mode != TorchMode::ON) {
        return scripted ? scripted->status : DeviceStatus::ILLEGAL_ARGUMENT;
    }
    const DeviceStatus status =
            device.cameras.setTorchMode(device.name, device.plug, mode == TorchMode::ON);
    return scripted ? scripted->status : status;
}

}  // namespace orvo::simulator
