// SPDX-License-Identifier: Apache-2.0
// The tables that generated code enters its classes in.

#pragma once

#include <functional>
#include <new>
#include <string>

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/ConcurrentMap.h>
#include <hwbinder/IBinder.h>
#include <hwbinder/IInterface.h>
#include <utils/RefBase.h>

namespace android {
namespace hardware {
namespace details {

/** A T that lives to the end of the process: threads and destructors may use it to the last. */
template <typename T>
class DoNotDestruct {
  public:
    DoNotDestruct() { new (mStorage) T(); }
    DoNotDestruct(const DoNotDestruct&) = delete;
    DoNotDestruct& operator=(const DoNotDestruct&) = delete;

    T& get() { return *std::launder(reinterpret_cast<T*>(mStorage)); }
    T* operator->() { return &get(); }

  private:
    alignas(T) unsigned char mStorage[sizeof(T)];
};

struct SchedPrio {
    int sched_policy;
    int prio;
};

/** Implementation object -> the scheduling that was asked for it. */
extern DoNotDestruct<ConcurrentMap<wp<::android::hidl::base::V1_0::IBase>, SchedPrio>>
        gServicePrioMap;
/** Implementation object -> whether it wants the security context of its callers. */
extern DoNotDestruct<ConcurrentMap<wp<::android::hidl::base::V1_0::IBase>, bool>> gServiceSidMap;

/**
 * Implementation object -> its stub, if one is alive. The stub holds the object strongly and takes
 * its own entry out when it is destroyed, so the key is never stale.
 */
extern DoNotDestruct<ConcurrentMap<const ::android::hidl::base::V1_0::IBase*,
                                   wp<::android::hardware::BHwBinder>>>
        gBnMap;

/** Descriptor -> what makes the stub of an object. The argument is the address of the object. */
using BnConstructorMap =
        ConcurrentMap<std::string, std::function<sp<::android::hardware::IBinder>(void*)>>;
BnConstructorMap& getBnConstructorMap();

/** Descriptor -> what makes the in-process wrapper of an object, likewise. */
using BsConstructorMap =
        ConcurrentMap<std::string, std::function<sp<::android::hidl::base::V1_0::IBase>(void*)>>;
BsConstructorMap& getBsConstructorMap();

}  // namespace details
}  // namespace hardware
}  // namespace android
