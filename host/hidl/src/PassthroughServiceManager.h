// SPDX-License-Identifier: Apache-2.0
// PassthroughServiceManager: the service manager's interface over libraries.

#pragma once

#include <android/hidl/manager/1.1/IServiceManager.h>

namespace android {
namespace hardware {
namespace details {

/** Its get and debugDump work; every other method is a mistake of the caller and ends the process.
 *  Thread-safe. */
class PassthroughServiceManager : public ::android::hidl::manager::V1_1::IServiceManager {
  public:
    using IBase = ::android::hidl::base::V1_0::IBase;
    using IServiceNotification = ::android::hidl::manager::V1_0::IServiceNotification;

    /** The implementation itself, from a library; the service manager is told of it. */
    Return<sp<IBase>> get(const hidl_string& fqName, const hidl_string& name) override;
    /** One entry for each library, with "*" for the instances that it may have. */
    Return<void> debugDump(debugDump_cb _hidl_cb) override;

    Return<bool> add(const hidl_string& name, const sp<IBase>& service) override;
    Return<Transport> getTransport(const hidl_string& fqName, const hidl_string& name) override;
    Return<void> list(list_cb _hidl_cb) override;
    Return<void> listByInterface(const hidl_string& fqName, listByInterface_cb _hidl_cb) override;
    Return<bool> registerForNotifications(const hidl_string& fqName, const hidl_string& name,
                                          const sp<IServiceNotification>& callback) override;
    Return<void> registerPassthroughClient(const hidl_string& fqName,
                                           const hidl_string& name) override;
    Return<bool> unregisterForNotifications(const hidl_string& fqName, const hidl_string& name,
                                            const sp<IServiceNotification>& callback) override;
};

}  // namespace details
}  // namespace hardware
}  // namespace android
