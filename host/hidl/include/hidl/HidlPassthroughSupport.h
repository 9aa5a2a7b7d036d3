// SPDX-License-Identifier: Apache-2.0
// Wraps objects of this process so that their oneway methods return at once.

#pragma once

#include <type_traits>

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlInternal.h>
#include <utils/StrongPointer.h>

namespace android {
namespace hardware {
namespace details {

/**
 * Null and remote objects as they are; for others a wrapper for the most derived interface of the
 * chain that is known here. Null if asking for the chain fails or nothing of it is known.
 */
sp<::android::hidl::base::V1_0::IBase> wrapPassthroughInternal(
        sp<::android::hidl::base::V1_0::IBase> interface);

/** The same for an object that is known to be an IType. */
template <typename IType,
          typename = std::enable_if_t<std::is_same<i_tag, typename IType::_hidl_tag>::value>>
sp<IType> wrapPassthrough(sp<IType> interface) {
    return static_cast<IType*>(wrapPassthroughInternal(interface).get());
}

}  // namespace details
}  // namespace hardware
}  // namespace android
