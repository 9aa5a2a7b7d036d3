// SPDX-License-Identifier: Apache-2.0
// Questions about the interfaces of an object.

#pragma once

#include <stdint.h>

#include <string>

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/Status.h>

namespace android {
namespace hardware {
namespace details {

/** This process's id if this is a build for development, else -1. */
int32_t getPidIfSharable();

/**
 * Whether the chain of the object holds the descriptor `castTo`. False for null. Asks the object,
 * except for the descriptor that every interface has.
 *
 * @param emitError a failed call gives a failed Return instead of false.
 */
Return<bool> canCastInterface(::android::hidl::base::V1_0::IBase* interface, const char* castTo,
                              bool emitError = false);

/** The descriptor of the object; "" for null or if asking fails. */
std::string getDescriptor(::android::hidl::base::V1_0::IBase* interface);

}  // namespace details
}  // namespace hardware
}  // namespace android
