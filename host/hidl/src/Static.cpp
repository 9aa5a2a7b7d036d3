// SPDX-License-Identifier: Apache-2.0
// The tables that generated code enters its classes in.

#include <hidl/Static.h>

#include <hwbinder/Binder.h>

namespace android {
namespace hardware {
namespace details {

DoNotDestruct<ConcurrentMap<wp<::android::hidl::base::V1_0::IBase>, SchedPrio>> gServicePrioMap;
DoNotDestruct<ConcurrentMap<wp<::android::hidl::base::V1_0::IBase>, bool>> gServiceSidMap;
DoNotDestruct<ConcurrentMap<const ::android::hidl::base::V1_0::IBase*, wp<BHwBinder>>> gBnMap;

// These two are filled before main and emptied after static destruction, in whatever order the
// libraries are loaded and unloaded: so they are made on first use and never destroyed.
BnConstructorMap& getBnConstructorMap() {
    static DoNotDestruct<BnConstructorMap> map;
    return map.get();
}

BsConstructorMap& getBsConstructorMap() {
    static DoNotDestruct<BsConstructorMap> map;
    return map.get();
}

}  // namespace details
}  // namespace hardware
}  // namespace android
