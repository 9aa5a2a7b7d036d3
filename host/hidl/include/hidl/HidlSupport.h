// SPDX-License-Identifier: Apache-2.0
// The types that interfaces are made of, and how they are printed.

#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include <cutils/native_handle.h>
#include <hidl/HidlInternal.h>
#include <hidl/Status.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <hidl/support/HidlString.h>

#include <hidl/support/HidlVec.h>

#include <hidl/support/HidlArray.h>
#include <hidl/support/HidlEnum.h>
#include <hidl/support/HidlHandle.h>
#include <hidl/support/HidlVersion.h>
#include <hidl/support/ToString.h>

namespace android {

namespace hidl {
namespace base {
namespace V1_0 {
struct IBase;
}
}  // namespace base

namespace memory {
namespace V1_0 {
struct IMemory;
}
}  // namespace memory
}  // namespace hidl

namespace hardware {

namespace details {
/** Whether this is a build for development, which tells process ids and addresses. */
bool debuggable();
}  // namespace details

/** Told when the process of an object that it was linked to is gone. */
struct hidl_death_recipient : public virtual RefBase {
    /**
     * Runs once per link, on a thread of the pool, with no lock held.
     *
     * @param cookie what was given when linking.
     * @param who the proxy that the link was made on.
     */
    virtual void serviceDied(uint64_t cookie,
                             const wp<::android::hidl::base::V1_0::IBase>& who) = 0;
};

inline std::string toString(const sp<hidl_death_recipient>& recipient) {
    return "death_recipient@" + toString(static_cast<const void*>(recipient.get()));
}

}  // namespace hardware
}  // namespace android
