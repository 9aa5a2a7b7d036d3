// SPDX-License-Identifier: Apache-2.0
// Fatal errors, the VNDK version, and instrumentation, which is always off.

#define LOG_TAG "HidlInternal"

#include <hidl/HidlInternal.h>

#include <cutils/properties.h>
#include <log/log.h>

namespace android {
namespace hardware {
namespace details {

void logAlwaysFatal(const char* message) {
    LOG_ALWAYS_FATAL("%s", message);
}

std::string getVndkVersionStr() {
    char version[PROPERTY_VALUE_MAX];
    property_get("ro.vndk.version", version, "");
    const std::string text = version;
    return text.empty() || text == "current" ? "" : "-" + text;
}

HidlInstrumentor::HidlInstrumentor(const std::string& package, const std::string& interface)
    : mEnableInstrumentation(false),
      mInstrumentationLibPackage(package),
      mInterfaceName(interface) {}

HidlInstrumentor::~HidlInstrumentor() = default;

const std::vector<HidlInstrumentor::InstrumentationCallback>&
HidlInstrumentor::getInstrumentationCallbacks() {
    return mInstrumentationCallbacks;
}

bool HidlInstrumentor::isInstrumentationEnabled() {
    return mEnableInstrumentation;
}

void HidlInstrumentor::configureInstrumentation(bool) {
    mEnableInstrumentation = false;
}

void HidlInstrumentor::registerInstrumentationCallbacks(
        std::vector<InstrumentationCallback>* callbacks) {
    callbacks->clear();
}

bool HidlInstrumentor::isInstrumentationLib(const dirent*) {
    return false;
}

}  // namespace details
}  // namespace hardware
}  // namespace android
