// SPDX-License-Identifier: Apache-2.0
// The providers' notifications at the floor, and their death.

#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <android/log.h>

#include "benchmarks/floor/FloorLog.h"
#include "benchmarks/floor/FloorProvider.h"

namespace orvo::benchmarks {

namespace {

constexpr int kAttempts = 10;
constexpr std::chrono::milliseconds kPause(500);

}  // namespace

// Unavoidable: a line for the report and one for each active device, the name as the translation
// takes it, which becomes the entry's value, the key with its node, and the edit of the property.
// The framework is lent its name of the device.
Return<void> FloorProvider::cameraDeviceStatusChange(const hidl_string& name,
                                                     CameraDeviceStatus status) {
    __android_log_print(ANDROID_LOG_INFO, kTag, "Got camera status change for %s and status %s",
                        name.c_str(),
                        status == CameraDeviceStatus::PRESENT ? "PRESENT" : "NOT_PRESENT");
    std::string providerName = name;
    const std::string frameworkName = frameworkNameOf(providerName);
    const NameParts parts(std::string_view(name.c_str(), name.size()));
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (status == CameraDeviceStatus::NOT_PRESENT) {
            removeIdAtFloor(parts.type, parts.id);
            mActiveDevices.erase(frameworkName);
        } else if (status == CameraDeviceStatus::PRESENT) {
            mActiveDevices[frameworkName] = std::move(providerName);
            appendIdAtFloor(parts.type, parts.id);
        }
        for (const auto& [key, value] : mActiveDevices) {
            __android_log_print(ANDROID_LOG_INFO, kTag, "mActiveDevices Key: %s, Value: %s",
                                key.c_str(), value.c_str());
        }
    }
    const sp<ICameraProviderCallback> callback = mCallback;
    hidl_string lent;
    lent.setToExternal(frameworkName.data(), frameworkName.size());
    return callback->cameraDeviceStatusChange(lent, status);
}

// Unavoidable: the two lines, the name as the translation takes it, and the framework's name.
Return<void> FloorProvider::torchModeStatusChange(const hidl_string& name, TorchModeStatus status) {
    __android_log_print(ANDROID_LOG_INFO, kTag, "Torchmode changed  for %s", name.c_str());
    const std::string frameworkName = frameworkNameOf(name);
    const sp<ICameraProviderCallback> callback = mCallback;
    hidl_string lent;
    lent.setToExternal(frameworkName.data(), frameworkName.size());
    return callback->torchModeStatusChange(lent, status);
}

// Unavoidable: all of the withdrawal, and a thread with a name of its own to work with.
void FloorProvider::serviceDied(uint64_t cookie, const wp<IBase>& /* who */) {
    auto& connection = *reinterpret_cast<Connections::value_type*>(static_cast<uintptr_t>(cookie));
    const std::string& name = connection.first;
    __android_log_print(ANDROID_LOG_ERROR, kTag, "Camera provider %s has died", name.c_str());
    (void)connection.second.service->unlinkToDeath(this).isOk();
    connection.second.service = nullptr;
    withdraw(std::string_view(name).substr(0, name.find('/')));
    std::thread([this, &connection] { reconnect(connection); }).detach();
}

// Unavoidable: the walk with a look at each name, an edit of the property for each device, one
// notification each. The names are copied until then: the device's C++ library may be older than
// std::map's extract().
size_t FloorProvider::withdraw(std::string_view type) {
    std::vector<std::string> removed;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        for (auto entry = mActiveDevices.begin(); entry != mActiveDevices.end();) {
            const NameParts parts(entry->second);
            if (parts.type != type) {
                ++entry;
                continue;
            }
            removed.push_back(entry->first);
            removeIdAtFloor(parts.type, parts.id);
            entry = mActiveDevices.erase(entry);
        }
    }
    const sp<ICameraProviderCallback> callback = mCallback;
    size_t notified = 0;
    for (const std::string& name : removed) {
        hidl_string lent;
        lent.setToExternal(name.data(), name.size());
        if (callback->cameraDeviceStatusChange(lent, CameraDeviceStatus::NOT_PRESENT).isOk()) {
            ++notified;
        }
    }
    __android_log_print(ANDROID_LOG_INFO, kTag,
                        "Notified framework about %zu/%zu devices from dead provider %s", notified,
                        removed.size(), std::string(type).c_str());
    return notified;
}

void FloorProvider::reconnect(Connections::value_type& connection) {
    for (int attempt = 1; attempt <= kAttempts; ++attempt) {
        std::this_thread::sleep_for(kPause);
        if (!connect(connection)) continue;
        const sp<ICameraProvider> shim = connection.second.shim.promote();
        if (shim == nullptr || !shim->setCallback(this).isOk()) continue;
        __android_log_print(ANDROID_LOG_INFO, kTag,
                            "Successfully reinitialized provider %s (attempt %d)",
                            connection.first.c_str(), attempt);
        return;
    }
}

}  // namespace orvo::benchmarks
