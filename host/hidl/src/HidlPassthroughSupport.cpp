// SPDX-License-Identifier: Apache-2.0
// Wraps objects of this process.

#include <hidl/HidlPassthroughSupport.h>

#include <hidl/HidlSupport.h>
#include <hidl/Static.h>

namespace android {
namespace hardware {
namespace details {

using ::android::hidl::base::V1_0::IBase;

sp<IBase> wrapPassthroughInternal(sp<IBase> interface) {
    if (interface == nullptr || interface->isRemote()) return interface;

    std::function<sp<IBase>(void*)> makeWrapper;
    const Return<void> called = interface->interfaceChain([&](const auto& chain) {
        for (const hidl_string& descriptor : chain) {
            makeWrapper = getBsConstructorMap().get(descriptor, nullptr);
            if (makeWrapper != nullptr) return;
        }
    });
    if (!called.isOk() || makeWrapper == nullptr) return nullptr;
    return makeWrapper(interface.get());
}

}  // namespace details
}  // namespace hardware
}  // namespace android
