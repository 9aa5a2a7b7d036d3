// SPDX-License-Identifier: Apache-2.0
// Withdraws the cameras of an underlying provider that died, and reconnects it.

#include <chrono>
#include <thread>
#include <utility>

#include "provider/Log.h"
#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/naming/CameraIdProperty.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using common::V1_0::CameraDeviceStatus;
using HALDescriptor = OrvoCameraServiceImplementation::HALDescriptor;

namespace {

constexpr int kReconnectAttempts = 10;
constexpr std::chrono::milliseconds kReconnectPause(500);  // Before every attempt, the first too.

// Takes out every active device of that type, with its id; gives the framework's names for them.
std::vector<hidl_string> takeOut(const std::string& type, OrvoCameraServiceImplementation& object) {
    std::vector<hidl_string> removed;
    const std::lock_guard<std::mutex> lock(object.mActiveDevicesMutex);
    removed.reserve(object.mActiveDevices.size());
    for (auto entry = object.mActiveDevices.begin(); entry != object.mActiveDevices.end();) {
        DeviceNameParts parts;
        if (!splitDeviceName(entry->second, parts) || parts.type != type) {
            ++entry;
            continue;
        }
        removed.emplace_back(entry->first);
        removeCameraIdFromSystemProperty(parts.type, parts.id);
        entry = object.mActiveDevices.erase(entry);
    }
    return removed;
}

// Tells the framework of each that it is gone; gives how many of these notifications it accepted.
size_t tellGone(const std::vector<hidl_string>& removed, sp<ICameraProviderCallback> callback,
                const OrvoCameraServiceImplementation& object) {
    size_t notified = 0;
    for (const hidl_string& name : removed) {
        // A framework that registers anew in between hears of the remaining ones where it listens.
        // One that takes its callback away hears of them on the one it had.
        sp<ICameraProviderCallback> current = object.mCallback;
        if (current != nullptr) callback = std::move(current);

        const Return<void> result =
                callback->cameraDeviceStatusChange(name, CameraDeviceStatus::NOT_PRESENT);
        if (result.isOk()) {
            ++notified;
        } else {
            ALOGE("Failed to notify camera service about %s: %s", name.c_str(),
                  result.description().c_str());
        }
    }
    return notified;
}

// The body of a reconnection thread. It holds no reference to the object, whose owner keeps it
// alive for as long as the process serves cameras; a reference taken here could be the last one,
// and would destroy the object on this thread. The cameras come back by the provider's reports.
void reconnect(OrvoCameraServiceImplementation* object, const std::string& instanceName,
               const HALDescriptor* descriptor) {
    for (int attempt = 1; attempt <= kReconnectAttempts; ++attempt) {
        std::this_thread::sleep_for(kReconnectPause);
        if (!object->initializeProviderService(descriptor, instanceName)) continue;
        const sp<ICameraProvider> shim = descriptor->mShim.promote();
        // Only the transport counts: a provider that answers with an error status is registered.
        if (shim == nullptr || !shim->setCallback(object).isOk()) continue;

        ALOGI("Successfully reinitialized provider %s (attempt %d)", instanceName.c_str(), attempt);
        return;
    }
    ALOGE("Failed to reconnect to %s after %d attempts", instanceName.c_str(), kReconnectAttempts);
}

}  // namespace

void OrvoCameraServiceImplementation::serviceDied(uint64_t cookie, const wp<IBase>& /* who */) {
    if (cookie == 0) {
        ALOGE("%s: serviceDied with null cookie", "serviceDied");
        return;
    }
    const auto* const descriptor = reinterpret_cast<const HALDescriptor*>(cookie);
    const std::string instanceName = descriptor->mName;
    ALOGE("Camera provider %s has died", instanceName.c_str());

    // The shim stays as it is, in front of a dead service, until a reconnection replaces it.
    if (const sp<ICameraProvider> provider = descriptor->mProvider; provider != nullptr) {
        // Looked at only so that the platform does not end the process over a failure here.
        (void)provider->unlinkToDeath(this).isOk();
    }
    replaceUnlocked(descriptor->mProvider, {});

    removeAndNotifyDevicesByProviderName(instanceName);
    std::thread(reconnect, this, instanceName, descriptor).detach();
}

size_t OrvoCameraServiceImplementation::removeAndNotifyDevicesByProviderName(
        const std::string& instanceName) {
    // By type alone on purpose: which instance of it reported a device is not known.
    const std::optional<std::string> type = typeOfInstance(instanceName);
    if (!type.has_value()) {
        ALOGE("Invalid provider name format (missing '/'): %s", instanceName.c_str());
        return 0;
    }

    const std::vector<hidl_string> removed = takeOut(*type, *this);
    sp<ICameraProviderCallback> callback = mCallback;
    if (removed.empty() || callback == nullptr) return 0;

    const size_t notified = tellGone(removed, std::move(callback), *this);
    ALOGI("Notified framework about %zu/%zu devices from dead provider %s", notified,
          removed.size(), type->c_str());
    return notified;
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
