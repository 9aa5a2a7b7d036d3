// SPDX-License-Identifier: Apache-2.0
// HwServiceManager: the service manager's HIDL interface over a registry and a manifest.

#pragma once

#include <android/hidl/manager/1.2/IServiceManager.h>

#include "ServiceRegistry.h"
#include "host/vintf/VintfManifest.h"

namespace orvo {

/**
 * Thread-safe; calls may come from any process. Nobody is refused anything: this platform has no
 * access control. No service is started on demand, and there are none that stop when nobody uses
 * them: client callbacks are refused.
 */
class HwServiceManager : public ::android::hidl::manager::V1_2::IServiceManager {
  public:
    template <typename T>
    using Return = ::android::hardware::Return<T>;
    template <typename T>
    using sp = ::android::sp<T>;
    using hidl_string = ::android::hardware::hidl_string;
    template <typename T>
    using hidl_vec = ::android::hardware::hidl_vec<T>;
    using IBase = ::android::hidl::base::V1_0::IBase;
    using IServiceNotification = ::android::hidl::manager::V1_0::IServiceNotification;
    using IClientCallback = ::android::hidl::manager::V1_2::IClientCallback;

    explicit HwServiceManager(VintfManifest manifest);

    // android.hidl.manager@1.0::IServiceManager
    Return<sp<IBase>> get(const hidl_string& fqName, const hidl_string& name) override;
    Return<bool> add(const hidl_string& name, const sp<IBase>& service) override;
    Return<Transport> getTransport(const hidl_string& fqName, const hidl_string& name) override;
    Return<void> list(list_cb _hidl_cb) override;
    Return<void> listByInterface(const hidl_string& fqName, listByInterface_cb _hidl_cb) override;
    Return<bool> registerForNotifications(const hidl_string& fqName, const hidl_string& name,
                                          const sp<IServiceNotification>& callback) override;
    Return<void> debugDump(debugDump_cb _hidl_cb) override;
    Return<void> registerPassthroughClient(const hidl_string& fqName,
                                           const hidl_string& name) override;

    // android.hidl.manager@1.1::IServiceManager
    Return<bool> unregisterForNotifications(const hidl_string& fqName, const hidl_string& name,
                                            const sp<IServiceNotification>& callback) override;

    // android.hidl.manager@1.2::IServiceManager
    Return<bool> registerClientCallback(const hidl_string& fqName, const hidl_string& name,
                                        const sp<IBase>& server,
                                        const sp<IClientCallback>& callback) override;
    Return<bool> unregisterClientCallback(const sp<IBase>& server,
                                          const sp<IClientCallback>& callback) override;
    Return<bool> addWithChain(const hidl_string& name, const sp<IBase>& service,
                              const hidl_vec<hidl_string>& chain) override;
    Return<void> listManifestByInterface(const hidl_string& fqName,
                                         listManifestByInterface_cb _hidl_cb) override;
    Return<bool> tryUnregister(const hidl_string& fqName, const hidl_string& name,
                               const sp<IBase>& service) override;

  private:
    const VintfManifest mManifest;
    const sp<ServiceRegistry> mRegistry = new ServiceRegistry;
};

}  // namespace orvo
