// SPDX-License-Identifier: Apache-2.0
// Questions about the interfaces of an object.

#include <hidl/HidlTransportUtils.h>

#include <unistd.h>

#include <hidl/HidlSupport.h>

namespace android {
namespace hardware {
namespace details {

using ::android::hidl::base::V1_0::IBase;

int32_t getPidIfSharable() {
    return debuggable() ? getpid() : -1;
}

Return<bool> canCastInterface(IBase* interface, const char* castTo, bool emitError) {
    if (interface == nullptr) return false;
    if (strcmp(castTo, IBase::descriptor) == 0) return true;

    bool castable = false;
    const Return<void> called = interface->interfaceChain([&](const auto& chain) {
        castable = std::find(chain.begin(), chain.end(), hidl_string(castTo)) != chain.end();
    });
    if (called.isOk()) return castable;
    if (emitError) return StatusOf<void, bool>(called);
    return false;
}

std::string getDescriptor(IBase* interface) {
    if (interface == nullptr) return "";
    std::string descriptor;
    const Return<void> called =
            interface->interfaceDescriptor([&](const hidl_string& answer) { descriptor = answer; });
    return called.isOk() ? descriptor : "";
}

}  // namespace details
}  // namespace hardware
}  // namespace android
