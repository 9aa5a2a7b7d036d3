// SPDX-License-Identifier: Apache-2.0
// Translates device names between the underlying providers and the framework.

#include <string.h>

#include <android/log.h>

#include "provider/LogTag.h"
#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {

std::string OrvoCameraServiceImplementation::providerDeviceNameToAndroidDeviceName(
        const std::string& providerName) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "providerDeviceNameToAndroidDeviceName %s",
                        providerName.c_str());
    if (providerName.empty()) {
        __android_log_print(
                ANDROID_LOG_ERROR, kLogTag,
                "FATAL: Failed to find replacement provider for %s. Name can't be empty.",
                mProviderName.c_str());
        shutdown();
    }

    // The result does not matter: a name that does not parse still gets a framework name, made of
    // whatever parts it has.
    DeviceNameParts parts;
    splitDeviceName(providerName, parts);
    std::string name;
    name.reserve(providerName.size() + mProviderType.size() + strlen("@//"));
    name.append(parts.prefix).append(1, '@').append(parts.version).append(1, '/');
    name.append(mProviderType).append(1, '/').append(parts.id);
    return name;
}

std::string OrvoCameraServiceImplementation::androidDeviceNameToProviderDeviceName(
        const std::string& androidName) {
    DeviceNameParts parts;
    const bool parsed = splitDeviceName(androidName, parts);
    if (!parsed || parts.prefix.empty() || parts.version.empty() || parts.type.empty() ||
        parts.id.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "WARNING: Failed to parse device name %s. Android frameworkwill likely "
                            "fail to recognize this camera",
                            androidName.c_str());
        return androidName;
    }

    // Inserts an empty entry for an unknown name on purpose: the caller fails on the empty name.
    const std::lock_guard<std::mutex> lock(mActiveDevicesMutex);
    return mActiveDevices[androidName];
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
