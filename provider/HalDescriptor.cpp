// SPDX-License-Identifier: Apache-2.0
// Builds the set of descriptors of the underlying providers and looks them up in it.

#include <utility>

#include <android/log.h>

#include "provider/LogTag.h"
#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {
namespace {

// Parts of the texts that log readers search for.
constexpr int kProviderLookupErrorNumber = 479;
constexpr int kDeviceNameErrorNumber = 462;

}  // namespace

using HALDescriptor = OrvoCameraServiceImplementation::HALDescriptor;

std::set<HALDescriptor> HALDescriptor::fromProviderNames(const std::vector<std::string>& names) {
    std::set<HALDescriptor> descriptors;
    for (const std::string& name : names) {
        HALDescriptor descriptor;
        descriptor.mName = name;
        const size_t slash = name.find('/');
        if (slash == std::string::npos) {
            __android_log_print(ANDROID_LOG_ERROR, kLogTag, "FATAL: Invalid provider name %s",
                                name.c_str());
            shutdown();
        }
        descriptor.mType = name.substr(0, slash);
        descriptors.insert(descriptor);
    }
    return descriptors;
}

namespace {

HALDescriptor* find(const std::set<HALDescriptor>& descriptors, std::string name) {
    HALDescriptor probe;
    probe.mName = std::move(name);
    const auto found = descriptors.find(probe);
    if (found == descriptors.end()) {
        // Not fatal in spite of its text: every foreign provider of the device ends here once.
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "FATAL(%d): Invalid provider name %s",
                            kProviderLookupErrorNumber, probe.mName.c_str());
        return nullptr;
    }
    return const_cast<HALDescriptor*>(&*found);
}

}  // namespace

HALDescriptor* HALDescriptor::findByName(const std::set<HALDescriptor>& descriptors,
                                         const std::string& name) {
    return find(descriptors, name);
}

HALDescriptor* HALDescriptor::findProviderForAndroidDevice(
        const std::set<HALDescriptor>& descriptors, const std::string& deviceName) {
    DeviceNameParts parts;
    if (!splitDeviceName(deviceName, parts)) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "FATAL(%d): Invalid device name %s",
                            kDeviceNameErrorNumber, deviceName.c_str());
        shutdown();
    }
    // Always number 0: a device name does not say which instance of its type reported it.
    return find(descriptors, std::string(parts.type).append("/0"));
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
