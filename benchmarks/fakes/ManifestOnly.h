// SPDX-License-Identifier: Apache-2.0
// A service manager that knows what is declared, and nothing else.
#pragma once

#include <android/hidl/manager/1.2/IServiceManager.h>

#include "benchmarks/fakes/Surroundings.h"

namespace orvo::benchmarks {

/** Everything but listManifestByInterface ends the process: the library calls nothing else. */
class ManifestOnly : public android::hidl::manager::V1_2::IServiceManager {
    using hidl_string = android::hardware::hidl_string;
    using IBase = android::hidl::base::V1_0::IBase;
    template <typename T>
    using Return = android::hardware::Return<T>;
    template <typename T>
    using sp = android::sp<T>;
    using Notification = android::hidl::manager::V1_0::IServiceNotification;
    using ClientCallback = android::hidl::manager::V1_2::IClientCallback;

  public:
    Return<void> listManifestByInterface(const hidl_string&,
                                         listManifestByInterface_cb _hidl_cb) override {
        _hidl_cb(Surroundings::current().declared());
        return android::hardware::Void();
    }

    Return<sp<IBase>> get(const hidl_string&, const hidl_string&) override { abort(); }
    Return<bool> add(const hidl_string&, const sp<IBase>&) override { abort(); }
    Return<Transport> getTransport(const hidl_string&, const hidl_string&) override { abort(); }
    Return<void> list(list_cb) override { abort(); }
    Return<void> listByInterface(const hidl_string&, listByInterface_cb) override { abort(); }
    Return<bool> registerForNotifications(const hidl_string&, const hidl_string&,
                                          const sp<Notification>&) override {
        abort();
    }
    Return<void> debugDump(debugDump_cb) override { abort(); }
    Return<void> registerPassthroughClient(const hidl_string&, const hidl_string&) override {
        abort();
    }
    Return<bool> unregisterForNotifications(const hidl_string&, const hidl_string&,
                                            const sp<Notification>&) override {
        abort();
    }
    Return<bool> registerClientCallback(const hidl_string&, const hidl_string&, const sp<IBase>&,
                                        const sp<ClientCallback>&) override {
        abort();
    }
    Return<bool> unregisterClientCallback(const sp<IBase>&, const sp<ClientCallback>&) override {
        abort();
    }
    Return<bool> addWithChain(const hidl_string&, const sp<IBase>&,
                              const android::hardware::hidl_vec<hidl_string>&) override {
        abort();
    }
    Return<bool> tryUnregister(const hidl_string&, const hidl_string&, const sp<IBase>&) override {
        abort();
    }
};

}  // namespace orvo::benchmarks
