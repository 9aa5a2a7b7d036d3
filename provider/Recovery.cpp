// SPDX-License-Identifier: Apache-2.0
// Withdraws the cameras of an underlying provider that died, and reconnects it.

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <android/log.h>

#include "provider/LentText.h"
#include "provider/LogTag.h"
#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/naming/CameraIdProperty.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using common::V1_0::CameraDeviceStatus;

namespace {

using HALDescriptor = OrvoCameraServiceImplementation::HALDescriptor;

constexpr int kReconnectAttempts = 10;
constexpr std::chrono::milliseconds kReconnectPause(500);  // Before every attempt, the first too.

// Connects the provider and registers the provider object with it. The cameras come back when the
// provider reports them. Returns the provider's shim, or null when that did not work.
sp<ICameraProvider> reconnectOnce(OrvoCameraServiceImplementation* object, const std::string& name,
                                  const HALDescriptor* descriptor) {
    if (!object->initializeProviderService(descriptor, name)) return nullptr;
    const sp<ICameraProvider> shim = descriptor->mShim.promote();
    // Only the transport counts: a provider that answers with an error status is registered.
    if (shim == nullptr || !shim->setCallback(object).isOk()) return nullptr;
    return shim;
}

// The body of a reconnection thread. It holds no reference to the object, whose owner keeps it
// alive for as long as the process serves cameras; a reference taken here could be the last one,
// and would destroy the object on this thread.
void reconnect(OrvoCameraServiceImplementation* object, const std::string& name,
               const HALDescriptor* descriptor) {
    for (int attempt = 1; attempt <= kReconnectAttempts; ++attempt) {
        std::this_thread::sleep_for(kReconnectPause);
        const sp<ICameraProvider> shim = reconnectOnce(object, name, descriptor);
        if (shim == nullptr) continue;
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "Successfully reinitialized provider %s (attempt %d)", name.c_str(),
                            attempt);
        return;
    }
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to reconnect to %s after %d attempts",
                        name.c_str(), kReconnectAttempts);
}

}  // namespace

void OrvoCameraServiceImplementation::serviceDied(uint64_t cookie, const wp<IBase>& /* who */) {
    if (cookie == 0) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s: serviceDied with null cookie",
                            "serviceDied");
        return;
    }
    const auto* const descriptor =
            reinterpret_cast<const HALDescriptor*>(static_cast<uintptr_t>(cookie));
    const std::string name = descriptor->mName;
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Camera provider %s has died", name.c_str());

    // The shim stays as it is, in front of a dead service, until a reconnection replaces it.
    if (const sp<ICameraProvider> provider = descriptor->mProvider; provider != nullptr) {
        // Looked at only so that the platform does not end the process over a failure here.
        (void)provider->unlinkToDeath(this).isOk();
    }
    descriptor->mProvider = nullptr;

    removeAndNotifyDevicesByProviderName(name);
    std::thread(reconnect, this, name, descriptor).detach();
}

size_t OrvoCameraServiceImplementation::removeAndNotifyDevicesByProviderName(
        const std::string& providerName) {
    const size_t slash = providerName.find('/');
    if (slash == std::string::npos) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Invalid provider name format (missing '/'): %s", providerName.c_str());
        return 0;
    }
    // By type alone on purpose: which instance of it reported a device is not known.
    const std::string type = providerName.substr(0, slash);

    std::vector<std::string> removed;  // By the names that the framework knows.
    {
        const std::lock_guard<std::mutex> lock(mActiveDevicesMutex);
        for (auto entry = mActiveDevices.begin(); entry != mActiveDevices.end();) {
            DeviceNameParts parts;
            if (!splitDeviceName(entry->second, parts) || parts.type != type) {
                ++entry;
                continue;
            }
            removed.push_back(entry->first);
            removeCameraIdFromSystemProperty(parts.type, parts.id);
            entry = mActiveDevices.erase(entry);
        }
    }

    sp<ICameraProviderCallback> callback = mCallback;
    if (removed.empty() || callback == nullptr) return 0;

    size_t notified = 0;
    for (const std::string& name : removed) {
        // A framework that registers anew in between hears of the remaining ones where it listens.
        // One that takes its callback away hears of them on the one it had.
        if (const sp<ICameraProviderCallback> current = mCallback; current != nullptr) {
            callback = current;
        }
        const Return<void> result =
                callback->cameraDeviceStatusChange(lend(name), CameraDeviceStatus::NOT_PRESENT);
        if (!result.isOk()) {
            __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                                "Failed to notify camera service about %s: %s", name.c_str(),
                                result.description().c_str());
            continue;
        }
        ++notified;
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag,
                        "Notified framework about %zu/%zu devices from dead provider %s", notified,
                        removed.size(), type.c_str());
    return notified;
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
