// SPDX-License-Identifier: Apache-2.0
// The way to the service manager, and to implementations in libraries.

#pragma once

#include <string>

#include <android/hidl/base/1.0/IBase.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

namespace android {

namespace hidl {
namespace manager {
namespace V1_0 {
struct IServiceManager;
}
namespace V1_1 {
struct IServiceManager;
}
namespace V1_2 {
struct IServiceManager;
}
}  // namespace manager
}  // namespace hidl

namespace hardware {
namespace details {

/** Returns once a service of that interface and instance name is registered. */
void waitForHwService(const std::string& interface, const std::string& instanceName);

/** Loads the libraries that may implement the interface, so that getService need not. */
void preloadPassthroughService(const std::string& descriptor);

/** What registerAsService does; see there. */
status_t registerAsServiceInternal(const sp<::android::hidl::base::V1_0::IBase>& service,
                                   const std::string& name) __attribute__((warn_unused_result));

/**
 * What getService does, before the object is turned into its interface.
 *
 * @param retry try again while the service is not there.
 * @param getStub look only in libraries, and give the implementation itself.
 * @return null if there is no such service.
 */
sp<::android::hidl::base::V1_0::IBase> getRawServiceInternal(const std::string& descriptor,
                                                             const std::string& instance,
                                                             bool retry, bool getStub);

}  // namespace details

/** The service manager: one object for the whole process; null if it cannot be reached. */
sp<::android::hidl::manager::V1_0::IServiceManager> defaultServiceManager();
sp<::android::hidl::manager::V1_1::IServiceManager> defaultServiceManager1_1();
sp<::android::hidl::manager::V1_2::IServiceManager> defaultServiceManager1_2();

/**
 * Looks into libraries instead of other processes. Its get and debugDump work; every other method
 * ends the process.
 */
sp<::android::hidl::manager::V1_0::IServiceManager> getPassthroughServiceManager();
sp<::android::hidl::manager::V1_1::IServiceManager> getPassthroughServiceManager1_1();

/** Loads the libraries that may implement I, for a process that cannot do so later. */
template <typename I>
static inline void preloadPassthroughService() {
    details::preloadPassthroughService(I::descriptor);
}

}  // namespace hardware
}  // namespace android
