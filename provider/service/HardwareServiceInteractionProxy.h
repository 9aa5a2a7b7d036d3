// SPDX-License-Identifier: Apache-2.0
// The service seam over the platform's own service manager.
#pragma once

#include "provider/service/ServiceInteractionProxy.h"

namespace android::hardware::camera::provider::V2_4::implementation {

/** Forwards to the platform's static functions and keeps nothing between calls. */
class HardwareServiceInteractionProxy : public ServiceInteractionProxy {
  public:
    bool registerForNotifications(
            const std::string& instanceName,
            const sp<::android::hidl::manager::V1_0::IServiceNotification>& notification) override;
    sp<ICameraProvider> getService(const std::string& instanceName) override;
    hidl_vec<hidl_string> listServices() override;
};

}  // namespace android::hardware::camera::provider::V2_4::implementation
