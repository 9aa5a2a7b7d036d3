// SPDX-License-Identifier: Apache-2.0
// For service programs that do nothing but register the implementation of a library.

#pragma once

#include <stddef.h>
#include <stdlib.h>

#include <string>
#include <type_traits>

#include <sys/wait.h>

#include <hidl/HidlLazyUtils.h>
#include <hidl/HidlTransportSupport.h>
#include <utils/Errors.h>
#include <utils/Log.h>
#include <utils/StrongPointer.h>

namespace android {
namespace hardware {
namespace details {

/** Loads the implementation and hands it to `registration`; EXIT_FAILURE if there is none. */
template <typename Interface, typename Registration>
status_t withPassthroughImplementation(const std::string& name, Registration registration) {
    static_assert(std::is_same<i_tag, typename Interface::_hidl_tag>::value, "not pure");
    const sp<Interface> service = Interface::getService(name, true /* getStub */);
    if (service == nullptr) {
        ALOGE("Could not get passthrough implementation for %s/%s.", Interface::descriptor,
              name.c_str());
        return EXIT_FAILURE;
    }
    const status_t status = registration(service);
    if (status != OK) {
        ALOGE("Could not register service %s/%s (%d).", Interface::descriptor, name.c_str(),
              status);
    }
    return status;
}

}  // namespace details

/**
 * Loads the implementation of that name from a library and registers it under the same name.
 *
 * @return OK; EXIT_FAILURE if there is no implementation; else what registerAsService answered.
 */
template <typename Interface>
__attribute__((warn_unused_result)) status_t registerPassthroughServiceImplementation(
        const std::string& name = "default") {
    return details::withPassthroughImplementation<Interface>(
            name, [&](const sp<Interface>& service) { return service->registerAsService(name); });
}

/** The whole of such a program: does not return if the registration succeeds. */
template <typename Interface>
__attribute__((warn_unused_result)) status_t defaultPassthroughServiceImplementation(
        const std::string& name, size_t maxThreads = 1) {
    configureRpcThreadpool(maxThreads, true);
    const status_t status = registerPassthroughServiceImplementation<Interface>(name);
    if (status != OK) return status;
    joinRpcThreadpool();
    return UNKNOWN_ERROR;
}

template <typename Interface>
__attribute__((warn_unused_result)) status_t defaultPassthroughServiceImplementation(
        size_t maxThreads = 1) {
    return defaultPassthroughServiceImplementation<Interface>("default", maxThreads);
}

/** The same for services that are started on demand. */
template <typename Interface>
__attribute__((warn_unused_result)) status_t registerLazyPassthroughServiceImplementation(
        const std::string& name = "default") {
    // Kept for the rest of the process, like the service.
    static LazyServiceRegistrar registrar;
    return details::withPassthroughImplementation<Interface>(
            name,
            [&](const sp<Interface>& service) { return registrar.registerService(service, name); });
}

template <typename Interface>
__attribute__((warn_unused_result)) status_t defaultLazyPassthroughServiceImplementation(
        const std::string& name, size_t maxThreads = 1) {
    configureRpcThreadpool(maxThreads, true);
    const status_t status = registerLazyPassthroughServiceImplementation<Interface>(name);
    if (status != OK) return status;
    joinRpcThreadpool();
    return UNKNOWN_ERROR;
}

template <typename Interface>
__attribute__((warn_unused_result)) status_t defaultLazyPassthroughServiceImplementation(
        size_t maxThreads = 1) {
    return defaultLazyPassthroughServiceImplementation<Interface>("default", maxThreads);
}

}  // namespace hardware
}  // namespace android
