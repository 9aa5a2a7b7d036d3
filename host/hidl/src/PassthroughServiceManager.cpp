// SPDX-License-Identifier: Apache-2.0
// Answers the service manager's questions from libraries.

#define LOG_TAG "PassthroughServiceManager"

#include "PassthroughServiceManager.h"

#include <hidl/HidlTransportUtils.h>
#include <hidl/ServiceManagement.h>
#include <log/log.h>

#include "PassthroughLookup.h"

namespace android {
namespace hardware {
namespace details {

using ::android::hidl::base::V1_0::DebugInfo;
using ::android::hidl::base::V1_0::IBase;

namespace {

/** Lets the tools that ask the service manager know who has loaded what. */
void reportLoaded(const sp<IBase>& implementation, const hidl_string& name) {
    const auto manager = defaultServiceManager();
    if (manager == nullptr) return;
    const std::string descriptor = getDescriptor(implementation.get());
    if (manager->registerPassthroughClient(descriptor, name).isOk()) return;
    ALOGW("Could not tell the service manager that %s/%s was loaded", descriptor.c_str(),
          name.c_str());
}

[[noreturn]] void refuse(const char* method) {
    LOG_ALWAYS_FATAL("%s is not a question for the passthrough service manager", method);
    __builtin_unreachable();
}

}  // namespace

Return<sp<IBase>> PassthroughServiceManager::get(const hidl_string& fqName,
                                                 const hidl_string& name) {
    sp<IBase> implementation = loadPassthroughImplementation(fqName, name);
    if (implementation != nullptr) reportLoaded(implementation, name);
    return implementation;
}

Return<void> PassthroughServiceManager::debugDump(debugDump_cb _hidl_cb) {
    const std::vector<std::string> packages = passthroughPackages();
    hidl_vec<InstanceDebugInfo> infos(packages.size());
    for (size_t i = 0; i < packages.size(); ++i) {
        infos[i].interfaceName = packages[i] + "::I*";
        infos[i].instanceName = "*";
        infos[i].pid = static_cast<int32_t>(PidConstant::NO_PID);
        // Nothing but a library of this process's own kind can be loaded.
        infos[i].arch = sizeof(void*) == 8 ? DebugInfo::Architecture::IS_64BIT
                                           : DebugInfo::Architecture::IS_32BIT;
    }
    _hidl_cb(infos);
    return Void();
}

Return<bool> PassthroughServiceManager::add(const hidl_string&, const sp<IBase>&) {
    refuse("add");
}

Return<PassthroughServiceManager::Transport> PassthroughServiceManager::getTransport(
        const hidl_string&, const hidl_string&) {
    refuse("getTransport");
}

Return<void> PassthroughServiceManager::list(list_cb) {
    refuse("list");
}

Return<void> PassthroughServiceManager::listByInterface(const hidl_string&, listByInterface_cb) {
    refuse("listByInterface");
}

Return<bool> PassthroughServiceManager::registerForNotifications(const hidl_string&,
                                                                 const hidl_string&,
                                                                 const sp<IServiceNotification>&) {
    refuse("registerForNotifications");
}

Return<void> PassthroughServiceManager::registerPassthroughClient(const hidl_string&,
                                                                  const hidl_string&) {
    refuse("registerPassthroughClient");
}

Return<bool> PassthroughServiceManager::unregisterForNotifications(
        const hidl_string&, const hidl_string&, const sp<IServiceNotification>&) {
    refuse("unregisterForNotifications");
}

}  // namespace details
}  // namespace hardware
}  // namespace android
