// SPDX-License-Identifier: Apache-2.0
// LazyServiceRegistrar: for services that are started when somebody asks for them.

#pragma once

#include <memory>
#include <string>

#include <android/hidl/base/1.0/IBase.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

namespace android {
namespace hardware {

namespace details {
class LazyServiceRegistrarImpl;
}

/** Registers services and keeps them for as long as the registrar lives. */
class LazyServiceRegistrar {
  public:
    LazyServiceRegistrar();

    /** OK, or the error of registering. */
    status_t registerService(const sp<::android::hidl::base::V1_0::IBase>& service,
                             const std::string& name = "default");

  private:
    std::shared_ptr<details::LazyServiceRegistrarImpl> mImpl;
};

}  // namespace hardware
}  // namespace android
