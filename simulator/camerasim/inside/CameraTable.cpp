// SPDX-License-Identifier: Apache-2.0
// CameraTable: the last report counts.

#include "simulator/camerasim/inside/CameraTable.h"

namespace orvo::simulator {

void CameraTable::report(const std::string& service, const std::string& name,
                         const std::string& status) {
    MutexLock lock(mLock);
    CameraState& camera = mCameras[name];
    camera.name = name;
    camera.service = service;
    camera.status = status;
    // What was open is gone with the camera, and so is its light.
    if (status == "NOT_PRESENT") {
        camera.open = false;
        camera.torch.clear();
    }
    mEverReported.insert(name);
}

void CameraTable::reportTorch(const std::string& service, const std::string& name,
                              const std::string& torch) {
    MutexLock lock(mLock);
    CameraState& camera = mCameras[name];
    camera.name = name;
    camera.service = service;
    camera.torch = torch;
}

void CameraTable::setOpen(const std::string& name, bool open) {
    MutexLock lock(mLock);
    const auto found = mCameras.find(name);
    if (found != mCameras.end()) found->second.open = open;
}

void CameraTable::clear() {
    MutexLock lock(mLock);
    mCameras.clear();
}

std::vector<CameraState> CameraTable::cameras() const {
    MutexLock lock(mLock);
    std::vector<CameraState> all;
    for (const auto& [name, camera] : mCameras) all.push_back(camera);
    return all;
}

std::optional<CameraState> CameraTable::find(const std::string& name) const {
    MutexLock lock(mLock);
    const auto found = mCameras.find(name);
    if (found == mCameras.end()) return std::nullopt;
    return found->second;
}

std::vector<std::string> CameraTable::heldOpen() const {
    MutexLock lock(mLock);
    std::vector<std::string> names;
    for (const auto& [name, camera] : mCameras) {
        if (camera.open) names.push_back(name);
    }
    return names;
}

std::set<std::string> CameraTable::everReported() const {
    MutexLock lock(mLock);
    return mEverReported;
}

}  // namespace orvo::simulator
