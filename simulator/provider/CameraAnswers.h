// SPDX-License-Identifier: Apache-2.0
// CameraAnswers: what a camera device answers whatever the version of its interface.

#pragma once

#include <functional>
#include <string>
#include <utility>

#include "simulator/provider/SimulatedCameras.h"

namespace orvo::simulator {

/** One camera as a device object knows it: by name, and by which plugging in it stands for. */
struct DeviceIdentity {
    SimulatedCameras& cameras;
    const std::string& name;
    uint64_t plug;
};

using DeviceStatus = android::hardware::camera::common::V1_0::Status;

/** What the script says, or else whether the camera is still there; true if data goes with it. */
std::pair<DeviceStatus, bool> statusOf(const DeviceIdentity& device,
                                       vendor::orvo::simulator::V1_0::Operation operation);

/** Calls back exactly once, before it returns. */
void answerResourceCost(
        const DeviceIdentity& device,
        const std::function<void(
                DeviceStatus, const android::hardware::camera::common::V1_0::CameraResourceCost&)>&
                callback);

DeviceStatus answerTorchMode(const DeviceIdentity& device,
                             android::hardware::camera::common::V1_0::TorchMode mode);

}  // namespace orvo::simulator
