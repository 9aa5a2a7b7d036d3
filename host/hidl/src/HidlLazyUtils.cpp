// SPDX-License-Identifier: Apache-2.0
// Registration of services that a device would start on demand; here they run all the time.

#include <hidl/HidlLazyUtils.h>

#include <vector>

#include <hidl/ServiceManagement.h>

#include "host/Mutex.h"

namespace android {
namespace hardware {

using ::android::hidl::base::V1_0::IBase;

namespace details {

class LazyServiceRegistrarImpl {
  public:
    void keep(const sp<IBase>& service) {
        orvo::MutexLock lock(mMutex);
        mServices.push_back(service);
    }

  private:
    orvo::Mutex mMutex;
    std::vector<sp<IBase>> mServices GUARDED_BY(mMutex);
};

}  // namespace details

LazyServiceRegistrar::LazyServiceRegistrar()
    : mImpl(std::make_shared<details::LazyServiceRegistrarImpl>()) {}

status_t LazyServiceRegistrar::registerService(const sp<IBase>& service, const std::string& name) {
    const status_t status = details::registerAsServiceInternal(service, name);
    if (status == OK) mImpl->keep(service);
    return status;
}

}  // namespace hardware
}  // namespace android
