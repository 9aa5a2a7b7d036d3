// SPDX-License-Identifier: Apache-2.0
// The kind of build that this is.

#include <hidl/HidlSupport.h>

namespace android {
namespace hardware {
namespace details {

bool debuggable() {
#ifdef LIBHIDL_TARGET_DEBUGGABLE
    return true;
#else
    return false;
#endif
}

}  // namespace details
}  // namespace hardware
}  // namespace android
