// SPDX-License-Identifier: Apache-2.0
// Makes, starts and ends the provider object.

#include "provider/OrvoCameraServiceImplementation.h"

#include <stdlib.h>

#include <chrono>
#include <thread>
#include <utility>

#include <cutils/properties.h>

#include "provider/Log.h"
#include "provider/naming/CameraIdProperty.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {

OrvoCameraServiceImplementation::OrvoCameraServiceImplementation(
        const char* name, std::shared_ptr<ServiceInteractionProxy> serviceProxy,
        std::shared_ptr<::orvo::camera::IProviderMapper> mapper)
    : mProviderMapper(std::move(mapper)),
      mServiceProxy(std::move(serviceProxy)),
      mProviderName(name) {
    const std::optional<std::string> type = typeOfInstance(mProviderName);
    if (!type.has_value()) {
        ALOGE("FATAL: Invalid provider name %s", mProviderName.c_str());
        shutdown();
    }
    mProviderType = *type;

    constexpr char kMapFile[] = "/vendor/etc/orvo_vendor_manifest.xml";
    if (!mProviderMapper->loadMapFromFile(kMapFile)) {
        // Not fatal in spite of its text: the process goes on without this instance.
        ALOGE("FATAL (%d): Failed to load provider map from %s", 165, kMapFile);
        mIsValid = false;
        return;
    }

    ALOGI("Get replacement provider for %s", mProviderName.c_str());
    mHalDescriptors = HALDescriptor::fromProviderNames(
            mProviderMapper->getReplacementProviderNames(mProviderName.c_str()));
    for (const HALDescriptor& descriptor : mHalDescriptors) {
        ALOGI("Replacement provider %s for %s", descriptor.mName.c_str(), mProviderName.c_str());
    }
    if (mHalDescriptors.empty()) {
        ALOGI("No replacement provider for %s mImpl", mProviderName.c_str());
        mIsValid = false;
    }
}

OrvoCameraServiceImplementation::~OrvoCameraServiceImplementation() {
    // The mapper goes before the proxy, which the order of the members would not give.
    mProviderMapper.reset();
    mServiceProxy.reset();
}

bool OrvoCameraServiceImplementation::initialize() {
    const hidl_vec<hidl_string> declared = mServiceProxy->listServices();
    for (const std::string instanceName : declared) {
        ALOGI("Loading service %s", instanceName.c_str());
        const auto* descriptor = HALDescriptor::findByName(mHalDescriptors, instanceName);
        if (descriptor == nullptr) continue;

        ALOGI("Found replacement provider %s for %s", instanceName.c_str(), mProviderName.c_str());
        if (initializeProviderService(descriptor, instanceName) && instanceName == "external/0") {
            property_set(kExternalProviderAddedProperty, "1");
        }
    }
    return true;
}

void OrvoCameraServiceImplementation::shutdown() {
    ALOGE("Shutting down in error state in 1s ...");
    std::this_thread::sleep_for(std::chrono::seconds(1));
    ALOGE("Exiting in error state.");
    exit(1);
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
