// SPDX-License-Identifier: Apache-2.0
// The seam between the provider object and the platform's service manager.
#pragma once

#include <string>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <hidl/HidlSupport.h>

namespace android::hardware::camera::provider::V2_4::implementation {

/**
 * Finds underlying camera providers. The provider object owns one for its whole life and reaches
 * the service manager through it only, so that it can be run against another implementation.
 *
 * Every operation may be called on any thread, several at once; none logs or ends the process.
 */
class ServiceInteractionProxy {
  public:
    /**
     * Asks to be told of registrations of the provider instance `serviceName`. False when the
     * platform refuses. The caller keeps `notification` alive.
     */
    virtual bool registerForNotifications(
            const std::string& serviceName,
            const sp<::android::hidl::manager::V1_0::IServiceNotification>& notification) = 0;

    /**
     * The registered service of the provider instance `serviceName` (such as "legacy/0"), or null
     * when it cannot be had. On a device this may block until the service is registered.
     */
    virtual sp<ICameraProvider> getService(const std::string& serviceName) = 0;

    /**
     * The instance names that the device declares for the camera provider interface, whether or
     * not they are running. Empty when the platform cannot be asked.
     */
    virtual hidl_vec<hidl_string> listServices() = 0;

    virtual ~ServiceInteractionProxy() = default;
};

}  // namespace android::hardware::camera::provider::V2_4::implementation
