// SPDX-License-Identifier: Apache-2.0
// The search for implementations of interfaces in libraries.

#pragma once

#include <string>
#include <vector>

#include <android/hidl/base/1.0/IBase.h>
#include <utils/StrongPointer.h>

namespace android {
namespace hardware {
namespace details {

/**
 * A new implementation of an interface, from the first library that has one for the instance.
 *
 * Libraries are those named `<package>@<version>-impl<anything>.so`, in the directory that the
 * environment variable ORVO_PASSTHROUGH_DIR names, if any, and then in the hw directories of odm,
 * vendor and system. Each is asked through its C function
 * `IFoo* HIDL_FETCH_IFoo(const char* instance)`, whose result must be an object that has no strong
 * reference yet or is kept alive otherwise. One that cannot be loaded, lacks the function or gives
 * null is closed and passed over; the one that gives an object stays loaded for good.
 *
 * @param descriptor "a.b@1.0::IFoo".
 * @return null if no library has it.
 */
sp<::android::hidl::base::V1_0::IBase> loadPassthroughImplementation(const std::string& descriptor,
                                                                     const std::string& instance);

/** Loads, for good, every library that would be asked for an interface, and asks none. */
void loadPassthroughLibraries(const std::string& descriptor);

/** The packages, such as "a.b@1.0", of all libraries in the directories, in order of search. */
std::vector<std::string> passthroughPackages();

}  // namespace details
}  // namespace hardware
}  // namespace android
