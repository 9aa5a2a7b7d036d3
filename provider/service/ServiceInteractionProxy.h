// SPDX-License-Identifier: Apache-2.0
// The seam between the provider object and the platform's service manager.
#pragma once

#include <string>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <hidl/HidlSupport.h>

namespace android::hardware::camera::provider::V2_4::implementation {

/**
 * Finds underlying camera providers. The provider object reaches the service manager through this
 * only, so that it can be run against another implementation. Every operation may be called on any
 * thread, several at once; none logs or ends the process.
 */
class ServiceInteractionProxy {
  public:
    /**
     * Asks to be told of registrations of that provider instance. False when the platform refuses.
     * The caller keeps `notification` alive.
     */
    virtual bool registerForNotifications(
            const std::string& instanceName,
            const sp<::android::hidl::manager::V1_0::IServiceNotification>& notification) = 0;

    /**
     * The registered service of that provider instance (such as "legacy/0"), or null when it cannot
     * be had. On a device this may block until the service is registered.
     */
    virtual sp<ICameraProvider> getService(const std::string& instanceName) = 0;

    /** The declared instances, running or not. Empty when the platform cannot be asked. */
    virtual hidl_vec<hidl_string> listServices() = 0;

    virtual ~ServiceInteractionProxy() = default;
};

}  // namespace android::hardware::camera::provider::V2_4::implementation
