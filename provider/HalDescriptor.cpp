// SPDX-License-Identifier: Apache-2.0
// Builds the set of descriptors of the underlying providers and looks them up in it.

#include "provider/Log.h"
#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using HALDescriptor = OrvoCameraServiceImplementation::HALDescriptor;

std::set<HALDescriptor> HALDescriptor::fromProviderNames(
        const std::vector<std::string>& instanceNames) {
    std::set<HALDescriptor> descriptors;
    for (const std::string& instanceName : instanceNames) {
        const std::optional<std::string> type = typeOfInstance(instanceName);
        if (!type.has_value()) {
            ALOGE("FATAL: Invalid provider name %s", instanceName.c_str());
            shutdown();
        }
        descriptors.insert({instanceName, *type, {}, {}});
    }
    return descriptors;
}

HALDescriptor* HALDescriptor::findByName(const std::set<HALDescriptor>& descriptors,
                                         const std::string& instanceName) {
    const auto found = descriptors.find({instanceName, {}, {}, {}});
    if (found == descriptors.end()) {
        // Not fatal in spite of its text: every foreign provider of the device ends here once.
        ALOGE("FATAL(%d): Invalid provider name %s", 479, instanceName.c_str());
        return nullptr;
    }
    return const_cast<HALDescriptor*>(&*found);
}

HALDescriptor* HALDescriptor::findProviderForAndroidDevice(
        const std::set<HALDescriptor>& descriptors, const std::string& providerDeviceName) {
    DeviceNameParts parts;
    if (!splitDeviceName(providerDeviceName, parts)) {
        ALOGE("FATAL(%d): Invalid device name %s", 462, providerDeviceName.c_str());
        shutdown();
    }
    // Always number 0: a device name does not say which instance of its type reported it.
    return findByName(descriptors, std::string(parts.type) + "/0");
}

sp<ICameraProvider> HALDescriptor::shimTo(const char* purpose) const {
    const sp<ICameraProvider> shim = mShim.promote();
    if (shim == nullptr) ALOGW("No shim to %s %s, skipping it", purpose, mName.c_str());
    return shim;
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
