// SPDX-License-Identifier: Apache-2.0
// A simulated MR provider library: cameras that are served inside the camera provider service.

#define LOG_TAG "SimulatedMrProvider"

#include <memory>

#include <log/log.h>

#include "simulator/provider/SimulatedProvider.h"

namespace {

constexpr char kDescription[] = "/vendor/etc/mrprovider.yaml";

}  // namespace

/**
 * Makes a provider of the described cameras; every call makes another one.
 *
 * @return an object without any reference, as the loader wants it: the first one taken keeps it
 *         alive. Null, with a line in the log, if the description cannot be used.
 */
extern "C" __attribute__((visibility("default")))
android::hardware::camera::provider::V2_4::ICameraProvider*
HIDL_FETCH_ICameraProvider(const char* instance) {
    using orvo::simulator::ProviderDescription;
    using orvo::simulator::SimulatedCameras;
    using orvo::simulator::SimulatedProvider;
    const auto description = ProviderDescription::read(kDescription);
    if (!description) {
        ALOGE("%s", description.error().message().c_str());
        return nullptr;
    }
    if (instance == nullptr || description->instance != instance) {
        ALOGE("Asked for %s, but %s describes %s", instance == nullptr ? "null" : instance,
              kDescription, description->instance.c_str());
        return nullptr;
    }
    return new SimulatedProvider(std::make_shared<SimulatedCameras>(*description));
}
