// SPDX-License-Identifier: Apache-2.0
// Translates device names between the underlying providers and the framework.

#include "provider/Log.h"
#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {

std::string OrvoCameraServiceImplementation::providerDeviceNameToAndroidDeviceName(
        const std::string& providerDeviceName) {
    // A name that does not parse gets a framework name, too, of whatever parts it has.
    DeviceNameParts parts;
    splitDeviceName(providerDeviceName, parts);
    return providerDeviceNameToAndroidDeviceName(providerDeviceName, parts);
}

std::string OrvoCameraServiceImplementation::providerDeviceNameToAndroidDeviceName(
        const std::string& providerDeviceName, const DeviceNameParts& parts) {
    ALOGI("providerDeviceNameToAndroidDeviceName %s", providerDeviceName.c_str());
    if (providerDeviceName.empty()) {
        ALOGE("FATAL: Failed to find replacement provider for %s. Name can't be empty.",
              mProviderName.c_str());
        shutdown();
    }
    std::string name(parts.prefix);
    name.append("@").append(parts.version).append("/");
    name.append(mProviderType).append("/").append(parts.id);
    return name;
}

std::string OrvoCameraServiceImplementation::androidDeviceNameToProviderDeviceName(
        const std::string& androidDeviceName) {
    DeviceNameParts parts;
    if (!splitDeviceName(androidDeviceName, parts) || parts.prefix.empty() ||
        parts.version.empty() || parts.type.empty() || parts.id.empty()) {
        ALOGE("WARNING: Failed to parse device name %s. Android frameworkwill likely "
              "fail to recognize this camera",
              androidDeviceName.c_str());
        return androidDeviceName;
    }

    // Inserts an empty entry for an unknown name on purpose: the caller fails on the empty name.
    const std::lock_guard<std::mutex> lock(mActiveDevicesMutex);
    return mActiveDevices[androidDeviceName];
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
