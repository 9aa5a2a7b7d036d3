// SPDX-License-Identifier: Apache-2.0
// The service manager's HIDL interface: translation between HIDL types and the registry's.

#include "HwServiceManager.h"

#include <utility>

#include <hwbinder/IPCThreadState.h>

namespace orvo {

using android::sp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::IPCThreadState;
using android::hardware::Return;
using android::hardware::Void;

namespace {

hidl_vec<hidl_string> toHidl(const std::vector<std::string>& texts) {
    return hidl_vec<hidl_string>(texts.begin(), texts.end());
}

pid_t callingPid() {
    return IPCThreadState::self()->getCallingPid();
}

}  // namespace

HwServiceManager::HwServiceManager(VintfManifest manifest) : mManifest(std::move(manifest)) {}

Return<sp<HwServiceManager::IBase>> HwServiceManager::get(const hidl_string& fqName,
                                                          const hidl_string& name) {
    return mRegistry->get(fqName, name);
}

Return<bool> HwServiceManager::add(const hidl_string& name, const sp<IBase>& service) {
    if (service == nullptr) return false;
    const pid_t pid = callingPid();
    bool added = false;
    const Return<void> asked = service->interfaceChain([&](const hidl_vec<hidl_string>& chain) {
        added = mRegistry->add(name, service, {chain.begin(), chain.end()}, pid);
    });
    return asked.isOk() && added;
}

Return<HwServiceManager::Transport> HwServiceManager::getTransport(const hidl_string& fqName,
                                                                   const hidl_string& name) {
    const auto declared = mManifest.transportOf(fqName, name);
    if (!declared) return Transport::EMPTY;
    return *declared == VintfManifest::Transport::HWBINDER ? Transport::HWBINDER
                                                           : Transport::PASSTHROUGH;
}

Return<void> HwServiceManager::list(list_cb _hidl_cb) {
    _hidl_cb(toHidl(mRegistry->list()));
    return Void();
}

Return<void> HwServiceManager::listByInterface(const hidl_string& fqName,
                                               listByInterface_cb _hidl_cb) {
    _hidl_cb(toHidl(mRegistry->instancesOf(fqName)));
    return Void();
}

Return<bool> HwServiceManager::registerForNotifications(const hidl_string& fqName,
                                                        const hidl_string& name,
                                                        const sp<IServiceNotification>& callback) {
    return mRegistry->addListener(fqName, name, callback);
}

Return<void> HwServiceManager::debugDump(debugDump_cb _hidl_cb) {
    const std::vector<ServiceRegistry::EntryState> states = mRegistry->dump();
    hidl_vec<InstanceDebugInfo> infos(states.size());
    for (size_t i = 0; i < states.size(); ++i) {
        infos[i].interfaceName = states[i].fqName;
        infos[i].instanceName = states[i].instance;
        infos[i].pid = states[i].pid;
        infos[i].clientPids = states[i].passthroughClients;
        // Nobody tells the service manager what its clients are compiled for.
        infos[i].arch = ::android::hidl::base::V1_0::DebugInfo::Architecture::UNKNOWN;
    }
    _hidl_cb(infos);
    return Void();
}

Return<void> HwServiceManager::registerPassthroughClient(const hidl_string& fqName,
                                                         const hidl_string& name) {
    mRegistry->addPassthroughClient(fqName, name, callingPid());
    return Void();
}

Return<bool> HwServiceManager::unregisterForNotifications(
        const hidl_string& fqName, const hidl_string& name,
        const sp<IServiceNotification>& callback) {
    return mRegistry->removeListeners(fqName, name, callback);
}

Return<bool> HwServiceManager::registerClientCallback(const hidl_string&, const hidl_string&,
                                                      const sp<IBase>&,
                                                      const sp<IClientCallback>&) {
    return false;
}

Return<bool> HwServiceManager::unregisterClientCallback(const sp<IBase>&,
                                                        const sp<IClientCallback>&) {
    return false;
}

Return<bool> HwServiceManager::addWithChain(const hidl_string& name, const sp<IBase>& service,
                                            const hidl_vec<hidl_string>& chain) {
    return mRegistry->add(name, service, {chain.begin(), chain.end()}, callingPid());
}

Return<void> HwServiceManager::listManifestByInterface(const hidl_string& fqName,
                                                       listManifestByInterface_cb _hidl_cb) {
    _hidl_cb(toHidl(mManifest.instancesOf(fqName)));
    return Void();
}

Return<bool> HwServiceManager::tryUnregister(const hidl_string&, const hidl_string&,
                                             const sp<IBase>&) {
    return false;
}

}  // namespace orvo
