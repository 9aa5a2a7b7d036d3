// SPDX-License-Identifier: Apache-2.0
// SimulatedCameras: plugging, torches and opening, by the rules of the camera interfaces.

#include "simulator/provider/SimulatedCameras.h"

#include <algorithm>
#include <utility>

namespace orvo::simulator {

using vendor::orvo::simulator::V1_0::Result;

namespace {

/** Devices whose costs sum to at most this many must be usable together. */
constexpr uint32_t kFullCost = 100;

}  // namespace

SimulatedCameras::SimulatedCameras(ProviderDescription description)
    : mDescription(std::move(description)) {
    MutexLock lock(mLock);
    for (const CameraDescription& camera : mDescription.cameras) {
        Camera state{};
        state.description = &camera;
        state.status =
                camera.present ? CameraDeviceStatus::PRESENT : CameraDeviceStatus::NOT_PRESENT;
        state.torch =
                camera.flash ? TorchModeStatus::AVAILABLE_OFF : TorchModeStatus::NOT_AVAILABLE;
        mCameras[camera.name] = state;
    }
}

std::vector<SimulatedCameras::DeviceState> SimulatedCameras::state() const {
    MutexLock lock(mLock);
    std::vector<DeviceState> states;
    for (const auto& [name, camera] : mCameras) {
        DeviceState state;
        state.cameraDeviceName = name;
        state.status = camera.status;
        state.torch = camera.torch;
        state.hasFlash = camera.description->flash;
        state.builtIn = camera.description->builtIn();
        state.open = camera.open;
        states.push_back(state);
    }
    return states;
}

Outcome SimulatedCameras::unknown(const std::string& name) const {
    std::string known;
    for (const CameraDescription& camera : mDescription.cameras) {
        known += (known.empty() ? "" : ", ") + camera.name;
    }
    return {Result::UNKNOWN_DEVICE,
            mDescription.instance + " has no camera '" + name + "'; it has " + known};
}

Outcome SimulatedCameras::setDeviceStatus(const std::string& name, CameraDeviceStatus status) {
    if (status > CameraDeviceStatus::ENUMERATING) {
        return {Result::ILLEGAL_ARGUMENT, "there is no such camera device status"};
    }
    MutexLock lock(mLock);
    const auto found = mCameras.find(name);
    if (found == mCameras.end()) return unknown(name);
    Camera& camera = found->second;
    if (camera.status == status) return {};
    if (camera.status == CameraDeviceStatus::PRESENT && status == CameraDeviceStatus::ENUMERATING) {
        return {Result::ILLEGAL_ARGUMENT,
                "a present camera cannot be enumerating; pull it out first"};
    }
    camera.status = status;
    if (status == CameraDeviceStatus::NOT_PRESENT) {
        camera.plug++;
        camera.open = false;
        // It comes back with its light off, and a camera that is gone needs no torch report.
        camera.torch = camera.description->flash ? TorchModeStatus::AVAILABLE_OFF
                                                 : TorchModeStatus::NOT_AVAILABLE;
    }
    mReporter.report({name, status});
    return {};
}

Outcome SimulatedCameras::setTorchStatus(const std::string& name, TorchModeStatus status) {
    if (status > TorchModeStatus::AVAILABLE_ON) {
        return {Result::ILLEGAL_ARGUMENT, "there is no such torch status"};
    }
    MutexLock lock(mLock);
    const auto found = mCameras.find(name);
    if (found == mCameras.end()) return unknown(name);
    Camera& camera = found->second;
    if (!camera.description->flash) return {Result::NO_FLASH, name + " has no flash"};
    if (camera.status != CameraDeviceStatus::PRESENT) {
        return {Result::NOT_PRESENT, name + " is not present; plug it in first"};
    }
    changeTorch(name, &camera, status);
    return {};
}

void SimulatedCameras::changeTorch(const std::string& name, Camera* camera,
                                   TorchModeStatus status) {
    if (camera->torch == status) return;
    camera->torch = status;
    mReporter.report({name, status});
}

bool SimulatedCameras::replaceListener(const android::sp<StatusReporter::Listener>& listener) {
    const auto link = mReporter.link(listener);
    if (link == nullptr) return false;
    android::sp<StatusReporter::Link> before;
    {
        // Both under the lock, so that no change falls between the list and the reports after it.
        MutexLock lock(mLock);
        before = mReporter.replaceListener(link, initialReports());
    }
    StatusReporter::unlink(before);
    return true;
}

std::vector<StatusReport> SimulatedCameras::initialReports() const {
    std::vector<StatusReport> reports;
    for (const auto& [name, camera] : mCameras) {
        const bool present = camera.status != CameraDeviceStatus::NOT_PRESENT;
        const bool builtIn = camera.description->builtIn();
        const bool assumed = builtIn ? camera.status == CameraDeviceStatus::PRESENT : !present;
        if (!assumed || (builtIn && mDescription.reportsBuiltIn)) {
            reports.push_back({name, camera.status});
        }
        const bool torchAssumed = camera.torch == TorchModeStatus::AVAILABLE_OFF;
        if (present && camera.description->flash && !torchAssumed) {
            reports.push_back({name, camera.torch});
        }
    }
    return reports;
}

std::vector<std::string> SimulatedCameras::builtInNames() const {
    std::vector<std::string> names;
    for (const CameraDescription& camera : mDescription.cameras) {
        if (camera.builtIn()) names.push_back(camera.name);
    }
    return names;
}

SimulatedCameras::Status SimulatedCameras::find(const std::string& name, int majorVersion,
                                                uint64_t* plug) const {
    MutexLock lock(mLock);
    const auto found = mCameras.find(name);
    if (found == mCameras.end() || found->second.status == CameraDeviceStatus::NOT_PRESENT) {
        return Status::ILLEGAL_ARGUMENT;
    }
    if (found->second.description->majorVersion != majorVersion) {
        return Status::OPERATION_NOT_SUPPORTED;
    }
    *plug = found->second.plug;
    return Status::OK;
}

SimulatedCameras::Camera* SimulatedCameras::pluggedCamera(const std::string& name, uint64_t plug) {
    const auto found = mCameras.find(name);
    if (found == mCameras.end() || found->second.plug != plug) return nullptr;
    return &found->second;
}

SimulatedCameras::Status SimulatedCameras::checkPlugged(const std::string& name,
                                                        uint64_t plug) const {
    MutexLock lock(mLock);
    const auto found = mCameras.find(name);
    const bool same = found != mCameras.end() && found->second.plug == plug;
    return same ? Status::OK : Status::CAMERA_DISCONNECTED;
}

SimulatedCameras::Status SimulatedCameras::setTorchMode(const std::string& name, uint64_t plug,
                                                        bool on) {
    MutexLock lock(mLock);
    Camera* camera = pluggedCamera(name, plug);
    if (camera == nullptr) return Status::CAMERA_DISCONNECTED;
    if (!mDescription.torchSupported) return Status::METHOD_NOT_SUPPORTED;
    if (!camera->description->flash) return Status::OPERATION_NOT_SUPPORTED;
    if (camera->open) return Status::CAMERA_IN_USE;
    changeTorch(name, camera, on ? TorchModeStatus::AVAILABLE_ON : TorchModeStatus::AVAILABLE_OFF);
    return Status::OK;
}

bool SimulatedCameras::fitsBesideOpenCameras(const CameraDescription& candidate) const {
    uint32_t cost = candidate.resourceCost;
    for (const auto& [name, camera] : mCameras) {
        if (!camera.open) continue;
        cost += camera.description->resourceCost;
        const auto excludes = [](const CameraDescription& one, const std::string& other) {
            return std::find(one.conflicts.begin(), one.conflicts.end(), other) !=
                   one.conflicts.end();
        };
        if (excludes(candidate, name) || excludes(*camera.description, candidate.name)) {
            return false;
        }
    }
    return cost <= kFullCost;
}

SimulatedCameras::Status SimulatedCameras::open(const std::string& name, uint64_t plug) {
    MutexLock lock(mLock);
    Camera* camera = pluggedCamera(name, plug);
    if (camera == nullptr) return Status::CAMERA_DISCONNECTED;
    if (camera->open || camera->status == CameraDeviceStatus::ENUMERATING) {
        return Status::CAMERA_IN_USE;
    }
    if (!fitsBesideOpenCameras(*camera->description)) return Status::MAX_CAMERAS_IN_USE;
    camera->open = true;
    // The session owns the flash unit while it lasts.
    if (camera->description->flash) changeTorch(name, camera, TorchModeStatus::NOT_AVAILABLE);
    return Status::OK;
}

void SimulatedCameras::close(const std::string& name, uint64_t plug) {
    MutexLock lock(mLock);
    Camera* camera = pluggedCamera(name, plug);
    if (camera == nullptr || !camera->open) return;
    camera->open = false;
    if (camera->description->flash) changeTorch(name, camera, TorchModeStatus::AVAILABLE_OFF);
}

const CameraDescription& SimulatedCameras::describe(const std::string& name) const {
    const auto same = [&](const CameraDescription& camera) { return camera.name == name; };
    return *std::find_if(mDescription.cameras.begin(), mDescription.cameras.end(), same);
}

std::string SimulatedCameras::dump(const std::string& name) const {
    MutexLock lock(mLock);
    const Camera& camera = mCameras.at(name);
    return name + " of " + mDescription.instance + "\n  status: " + toString(camera.status) +
           "\n  torch: " + toString(camera.torch) + "\n  open: " + (camera.open ? "yes" : "no") +
           "\n  plugged out: " + std::to_string(camera.plug) + " times\n";
}

}  // namespace orvo::simulator
