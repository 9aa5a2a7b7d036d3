// SPDX-License-Identifier: Apache-2.0
// Looks services up, in other processes and in libraries, and registers them.

#define LOG_TAG "ServiceManagement"

#include <hidl/ServiceManagement.h>

#include <stdlib.h>
#include <string.h>

#include <chrono>

#include <android/hidl/manager/1.2/BnHwServiceManager.h>
#include <android/hidl/manager/1.2/BpHwServiceManager.h>
#include <android/hidl/manager/1.2/IServiceManager.h>
#include <hidl/HidlTransportSupport.h>
#include <hwbinder/IPCThreadState.h>
#include <hwbinder/ProcessState.h>
#include <log/log.h>

#include "PassthroughLookup.h"
#include "PassthroughServiceManager.h"
#include "host/Mutex.h"

namespace android {
namespace hardware {

using ::android::hidl::base::V1_0::IBase;
using ::android::hidl::manager::V1_0::IServiceNotification;
using IServiceManager1_0 = ::android::hidl::manager::V1_0::IServiceManager;
using IServiceManager1_1 = ::android::hidl::manager::V1_1::IServiceManager;
using IServiceManager1_2 = ::android::hidl::manager::V1_2::IServiceManager;
using Transport = IServiceManager1_0::Transport;

namespace {

/** The one object for the service manager that this process gives out. */
struct CachedServiceManager {
    orvo::Mutex mutex;
    sp<IServiceManager1_2> manager GUARDED_BY(mutex);  ///< null until one was reached
};

CachedServiceManager& cachedServiceManager() {
    static auto* const cache = new CachedServiceManager;  // used until the very end of the process
    return *cache;
}

sp<IServiceManager1_2> cached() {
    CachedServiceManager& cache = cachedServiceManager();
    orvo::MutexLock lock(cache.mutex);
    return cache.manager;
}

}  // namespace

sp<IServiceManager1_2> defaultServiceManager1_2() {
    if (const sp<IServiceManager1_2> manager = cached()) return manager;

    // A device would wait here until there is a service manager; this platform does not.
    using ::android::hidl::manager::V1_2::BnHwServiceManager;
    using ::android::hidl::manager::V1_2::BpHwServiceManager;
    const sp<IServiceManager1_2> found =
            fromBinder<IServiceManager1_2, BpHwServiceManager, BnHwServiceManager>(
                    ProcessState::self()->getContextObject(nullptr));
    if (found == nullptr) return nullptr;

    // Of several threads that came this far the first decides.
    CachedServiceManager& cache = cachedServiceManager();
    orvo::MutexLock lock(cache.mutex);
    if (cache.manager == nullptr) cache.manager = found;
    return cache.manager;
}

sp<IServiceManager1_1> defaultServiceManager1_1() {
    return defaultServiceManager1_2();
}

sp<IServiceManager1_0> defaultServiceManager() {
    return defaultServiceManager1_2();
}

sp<IServiceManager1_1> getPassthroughServiceManager1_1() {
    static auto* const manager = new sp<IServiceManager1_1>(new details::PassthroughServiceManager);
    return *manager;
}

sp<IServiceManager1_0> getPassthroughServiceManager() {
    return getPassthroughServiceManager1_1();
}

namespace details {

namespace {

/** The service as the service manager has it now; null, and a line if there is something wrong. */
sp<IBase> getRegistered(const sp<IServiceManager1_0>& manager, const std::string& descriptor,
                        const std::string& instance) {
    const Return<sp<IBase>> answer = manager->get(descriptor, instance);
    if (!answer.isOk()) {
        ALOGE("Could not ask the service manager for %s/%s: %s", descriptor.c_str(),
              instance.c_str(), answer.description().c_str());
        return nullptr;
    }
    const sp<IBase> service = answer;
    if (service == nullptr) return nullptr;

    const Return<bool> castable = canCastInterface(service.get(), descriptor.c_str(), true);
    if (!castable.isOk()) {
        ALOGW("%s/%s cannot be asked for its interface: %s", descriptor.c_str(), instance.c_str(),
              castable.description().c_str());
        return nullptr;
    }
    if (!castable) {
        ALOGW("%s/%s is registered, but with an object of another interface", descriptor.c_str(),
              instance.c_str());
        return nullptr;
    }
    return service;
}

/** Tests may ask for the wrapper even where a caller wants the implementation itself. */
bool wrapsEverything() {
    const char* override = getenv("TREBLE_TESTING_OVERRIDE");
    return override != nullptr && strcmp(override, "true") == 0;
}

sp<IBase> getFromLibrary(const std::string& descriptor, const std::string& instance, bool getStub) {
    const Return<sp<IBase>> answer = getPassthroughServiceManager()->get(descriptor, instance);
    const sp<IBase> implementation = answer.isOk() ? sp<IBase>(answer) : nullptr;
    if (implementation == nullptr || (getStub && !wrapsEverything())) return implementation;
    return wrapPassthroughInternal(implementation);
}

/** Waits for one registration. */
class RegistrationWaiter : public IServiceNotification {
  public:
    Return<void> onRegistration(const hidl_string&, const hidl_string&, bool) override {
        orvo::MutexLock lock(mMutex);
        mRegistered = true;
        mChanged.notify_all();
        return Void();
    }

    bool waitFor(std::chrono::seconds time) {
        orvo::MutexLock lock(mMutex);
        return mChanged.wait_for(lock, time, [this]() REQUIRES(mMutex) { return mRegistered; });
    }

  private:
    orvo::Mutex mMutex;
    orvo::ConditionVariable mChanged;
    bool mRegistered GUARDED_BY(mMutex) = false;
};

}  // namespace

void waitForHwService(const std::string& interface, const std::string& instanceName) {
    const sp<IServiceManager1_1> manager = defaultServiceManager1_1();
    if (manager == nullptr) {
        ALOGE("Not waiting for %s/%s: there is no service manager", interface.c_str(),
              instanceName.c_str());
        return;
    }
    const sp<RegistrationWaiter> waiter = new RegistrationWaiter;
    if (!manager->registerForNotifications(interface, instanceName, waiter).withDefault(false)) {
        ALOGE("Not waiting for %s/%s: the service manager refuses to tell of it", interface.c_str(),
              instanceName.c_str());
        return;
    }
    while (!waiter->waitFor(std::chrono::seconds(1))) {
        // The notification cannot come if this thread is the one that would have to serve it, or
        // if the service manager is gone; so look, once a second.
        const Return<sp<IBase>> registered = manager->get(interface, instanceName);
        if (!registered.isOk()) {
            ALOGE("Not waiting for %s/%s any longer: %s", interface.c_str(), instanceName.c_str(),
                  registered.description().c_str());
            return;
        }
        if (sp<IBase>(registered) != nullptr) break;
        ALOGW("Still waiting for %s/%s", interface.c_str(), instanceName.c_str());
    }
    // Nothing depends on the answer: an object that is gone is dropped anyway.
    manager->unregisterForNotifications(interface, instanceName, waiter).isOk();
}

void preloadPassthroughService(const std::string& descriptor) {
    loadPassthroughLibraries(descriptor);
}

sp<IBase> getRawServiceInternal(const std::string& descriptor, const std::string& instance,
                                bool /* retry: this platform never waits for a service */,
                                bool getStub) {
    const sp<IServiceManager1_1> manager = defaultServiceManager1_1();
    if (manager == nullptr) {
        ALOGE("No service manager for %s/%s: start hwservicemanager with the same ORVO_DEVICE_DIR",
              descriptor.c_str(), instance.c_str());
        return nullptr;
    }
    const Return<Transport> declared = manager->getTransport(descriptor, instance);
    if (!declared.isOk()) {
        ALOGE("Could not ask the service manager how to reach %s/%s: %s", descriptor.c_str(),
              instance.c_str(), declared.description().c_str());
        return nullptr;
    }
    // What the manifest does not declare may be in either place.
    const Transport transport = declared;
    if (!getStub && transport != Transport::PASSTHROUGH) {
        const sp<IBase> service = getRegistered(manager, descriptor, instance);
        if (service != nullptr) return service;
    }
    if (!getStub && transport == Transport::HWBINDER) return nullptr;
    return getFromLibrary(descriptor, instance, getStub);
}

status_t registerAsServiceInternal(const sp<IBase>& service, const std::string& name) {
    if (service == nullptr) return UNEXPECTED_NULL;
    const sp<IServiceManager1_2> manager = defaultServiceManager1_2();
    if (manager == nullptr) return INVALID_OPERATION;

    bool registered = false;
    std::string reason = "it refuses";
    const Return<void> asked = service->interfaceChain([&](const hidl_vec<hidl_string>& chain) {
        Return<bool> added = manager->addWithChain(name, service, chain);
        registered = added.withDefault(false);
        if (!added.isOk()) reason = added.description();
    });
    if (!asked.isOk()) reason = "the service does not answer: " + asked.description();
    if (asked.isOk() && registered) return OK;
    ALOGE("Could not register %s with the service manager: %s", name.c_str(), reason.c_str());
    return UNKNOWN_ERROR;
}

}  // namespace details

}  // namespace hardware
}  // namespace android
