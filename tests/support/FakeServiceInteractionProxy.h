// SPDX-License-Identifier: Apache-2.0
// A service manager with the services that a test gives it.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "provider/service/ServiceInteractionProxy.h"
#include "tests/support/CountedInstance.h"

namespace orvo::test {

/** Answers from what start() and stop() left and records every look-up. Any thread. */
class FakeServiceInteractionProxy
    : public android::hardware::camera::provider::V2_4::implementation::ServiceInteractionProxy,
      public CountedInstance {
  public:
    using ICameraProvider = android::hardware::camera::provider::V2_4::ICameraProvider;

    ~FakeServiceInteractionProxy() override;

    bool registerForNotifications(
            const std::string& serviceName,
            const android::sp<android::hidl::manager::V1_0::IServiceNotification>& notification)
            override;
    android::sp<ICameraProvider> getService(const std::string& serviceName) override;
    android::hardware::hidl_vec<android::hardware::hidl_string> listServices() override;

    /** Registers a service, in place of an earlier one of that name. */
    void start(const std::string& serviceName, const android::sp<ICameraProvider>& service);
    void stop(const std::string& serviceName);
    /** How often the name was looked up so far. */
    int lookups(const std::string& serviceName) const;
    int listings() const;

    /** What listServices answers. Set before the proxy is shared. */
    std::vector<std::string> declared;
    /** Runs at the start of every look-up, with the name. Set before the proxy is shared. */
    std::function<void(const std::string&)> onGetService;
    /** Runs at the start of every listing. Set before the proxy is shared. */
    std::function<void()> onListServices;
    std::function<void()> onDestroyed;

  private:
    mutable std::mutex mMutex;
    std::map<std::string, android::sp<ICameraProvider>> mServices;  // Key: instance name.
    std::map<std::string, int> mLookups;                            // Key: instance name.
    int mListings = 0;
};

}  // namespace orvo::test
