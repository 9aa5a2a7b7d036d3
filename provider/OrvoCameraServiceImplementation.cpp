// SPDX-License-Identifier: Apache-2.0
// Makes, starts and ends the provider object.

#include "provider/OrvoCameraServiceImplementation.h"

#include <stdlib.h>

#include <chrono>
#include <thread>
#include <utility>

#include <android/log.h>
#include <cutils/properties.h>

#include "provider/naming/CameraIdProperty.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {
namespace {

constexpr char kProviderMapFile[] = "/vendor/etc/orvo_vendor_manifest.xml";
constexpr int kMapLoadErrorNumber = 165;  // Part of the text that log readers search for.
constexpr char kExternalInstance[] = "external/0";

}  // namespace

OrvoCameraServiceImplementation::OrvoCameraServiceImplementation(
        const char* name, std::shared_ptr<ServiceInteractionProxy> serviceProxy,
        std::shared_ptr<::orvo::camera::IProviderMapper> mapper)
    : mIsValid(true),
      mProviderMapper(std::move(mapper)),
      mServiceProxy(std::move(serviceProxy)),
      mProviderName(name) {
    const std::optional<std::string> type = typeOfInstance(mProviderName);
    if (!type.has_value()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "FATAL: Invalid provider name %s",
                            mProviderName.c_str());
        shutdown();
    }
    mProviderType = *type;

    if (!mProviderMapper->loadMapFromFile(kProviderMapFile)) {
        // Not fatal in spite of its text: the process goes on without this instance.
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "FATAL (%d): Failed to load provider map from %s", kMapLoadErrorNumber,
                            kProviderMapFile);
        mIsValid = false;
        return;
    }

    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Get replacement provider for %s",
                        mProviderName.c_str());
    mHalDescriptors = HALDescriptor::fromProviderNames(
            mProviderMapper->getReplacementProviderNames(mProviderName.c_str()));
    for (const HALDescriptor& descriptor : mHalDescriptors) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "Replacement provider %s for %s",
                            descriptor.mName.c_str(), mProviderName.c_str());
    }
    if (mHalDescriptors.empty()) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "No replacement provider for %s mImpl",
                            mProviderName.c_str());
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
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "Loading service %s", instanceName.c_str());
        const HALDescriptor* const descriptor =
                HALDescriptor::findByName(mHalDescriptors, instanceName);
        if (descriptor == nullptr) continue;

        __android_log_print(ANDROID_LOG_INFO, kLogTag, "Found replacement provider %s for %s",
                            instanceName.c_str(), mProviderName.c_str());
        const bool connected = initializeProviderService(descriptor, instanceName);
        if (connected && instanceName == kExternalInstance) {
            property_set(kExternalProviderAddedProperty, "1");
        }
    }
    return true;
}

void OrvoCameraServiceImplementation::shutdown() {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Shutting down in error state in 1s ...");
    std::this_thread::sleep_for(std::chrono::seconds(1));
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Exiting in error state.");
    exit(1);
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
