// SPDX-License-Identifier: Apache-2.0
// The registry of services and of those who wait for them.

#include "ServiceRegistry.h"

#include <hidl/HidlTransportSupport.h>

using android::sp;
using android::wp;
using android::hardware::interfacesEqual;

namespace orvo {

/** An object of another process whose death concerns the registry. The object's proxy holds this
 *  weakly and the registry holds both, so the link lasts as long as the registry's interest. */
struct ServiceRegistry::Watched : public android::hardware::hidl_death_recipient {
    void serviceDied(uint64_t, const wp<IBase>&) override {
        const sp<ServiceRegistry> owner = registry.promote();
        if (owner != nullptr) owner->forget(this);
    }

    wp<ServiceRegistry> registry;
    /** Guarded by the registry's lock, which this may outlive and so cannot name. Set for good:
     *  nothing dead is ever entered. */
    bool dead = false;
};

struct ServiceRegistry::Registration : public Watched {
    sp<IBase> service;
    pid_t pid = kNoPid;
};

struct ServiceRegistry::Listener : public Watched {
    std::string fqName;
    /** Empty for every name. */
    std::string instance;
    sp<IServiceNotification> callback;
};

ServiceRegistry::ServiceRegistry() = default;

ServiceRegistry::~ServiceRegistry() = default;

template <typename Interface>
bool ServiceRegistry::watch(const sp<Watched>& watched, const sp<Interface>& object) {
    watched->registry = this;
    return object->linkToDeath(watched, 0 /* cookie */).withDefault(false);
}

void ServiceRegistry::forget(const Watched* dead) {
    // Released after the lock: the last reference to a proxy goes with them.
    std::vector<sp<Watched>> released;
    MutexLock lock(mMutex);
    const_cast<Watched*>(dead)->dead = true;
    for (auto entry = mServices.begin(); entry != mServices.end();) {
        const bool matches = entry->second.get() == dead;
        if (matches) released.push_back(entry->second);
        entry = matches ? mServices.erase(entry) : std::next(entry);
    }
    for (auto entry = mListeners.begin(); entry != mListeners.end();) {
        const bool matches = entry->get() == dead;
        if (matches) released.push_back(*entry);
        entry = matches ? mListeners.erase(entry) : std::next(entry);
    }
}

void ServiceRegistry::displace(const std::string& chief, const std::string& instance,
                               const sp<IBase>& by, std::vector<sp<Registration>>* released) {
    const auto former = mServices.find({chief, instance});
    if (former == mServices.end() || interfacesEqual(former->second->service, by)) return;
    const sp<IBase> service = former->second->service;
    for (auto entry = mServices.begin(); entry != mServices.end();) {
        const bool matches =
                entry->first.second == instance && interfacesEqual(entry->second->service, service);
        if (matches) released->push_back(entry->second);
        entry = matches ? mServices.erase(entry) : std::next(entry);
    }
}

bool ServiceRegistry::add(const std::string& instance, const sp<IBase>& service,
                          const std::vector<std::string>& chain, pid_t pid) {
    if (service == nullptr || chain.empty()) return false;
    const sp<Registration> registration = new Registration;
    registration->service = service;
    registration->pid = pid;
    if (!watch(registration, service)) return false;

    std::vector<sp<Registration>> released;
    std::vector<std::pair<sp<Listener>, std::string>> told;  // who hears of which interface
    {
        MutexLock lock(mMutex);
        if (registration->dead) return false;
        displace(chain.front(), instance, service, &released);
        for (const std::string& fqName : chain) {
            sp<Registration>& entry = mServices[{fqName, instance}];
            if (entry != nullptr) released.push_back(entry);
            entry = registration;
            for (const sp<Listener>& listener : mListeners) {
                if (listener->fqName != fqName) continue;
                if (!listener->instance.empty() && listener->instance != instance) continue;
                told.emplace_back(listener, fqName);
            }
        }
    }
    for (const auto& [listener, fqName] : told) notify(listener, fqName, instance, false);
    return true;
}

sp<ServiceRegistry::IBase> ServiceRegistry::get(const std::string& fqName,
                                                const std::string& instance) const {
    MutexLock lock(mMutex);
    const auto entry = mServices.find({fqName, instance});
    return entry == mServices.end() ? nullptr : entry->second->service;
}

std::vector<std::string> ServiceRegistry::list() const {
    std::set<std::string> names;
    MutexLock lock(mMutex);
    for (const auto& [name, registration] : mServices) {
        names.insert(name.first + "/" + name.second);
    }
    return {names.begin(), names.end()};
}

std::vector<std::string> ServiceRegistry::instancesOf(const std::string& fqName) const {
    std::vector<std::string> instances;
    MutexLock lock(mMutex);
    auto entry = mServices.lower_bound({fqName, ""});
    for (; entry != mServices.end() && entry->first.first == fqName; ++entry) {
        instances.push_back(entry->first.second);
    }
    return instances;
}

bool ServiceRegistry::addListener(const std::string& fqName, const std::string& instance,
                                  const sp<IServiceNotification>& callback) {
    if (callback == nullptr) return false;
    const sp<Listener> listener = new Listener;
    listener->fqName = fqName;
    listener->instance = instance;
    listener->callback = callback;
    if (!watch(listener, callback)) return false;

    std::vector<std::string> existing;
    {
        // One step, so that no registration falls between what exists and what comes later.
        MutexLock lock(mMutex);
        if (listener->dead) return false;
        auto entry = mServices.lower_bound({fqName, instance});
        for (; entry != mServices.end() && entry->first.first == fqName; ++entry) {
            if (!instance.empty() && entry->first.second != instance) break;
            existing.push_back(entry->first.second);
        }
        mListeners.push_back(listener);
    }
    for (const std::string& name : existing) notify(listener, fqName, name, true);
    return true;
}

bool ServiceRegistry::removeListeners(const std::string& fqName, const std::string& instance,
                                      const sp<IServiceNotification>& callback) {
    Listeners released;
    if (callback == nullptr) return false;
    MutexLock lock(mMutex);
    for (auto entry = mListeners.begin(); entry != mListeners.end();) {
        const Listener& listener = **entry;
        const bool matches = (fqName.empty() || listener.fqName == fqName) &&
                             (instance.empty() || listener.instance == instance) &&
                             interfacesEqual(listener.callback, callback);
        if (matches) released.push_back(*entry);
        entry = matches ? mListeners.erase(entry) : std::next(entry);
    }
    return !released.empty();
}

void ServiceRegistry::notify(const sp<Listener>& listener, const std::string& fqName,
                             const std::string& instance, bool preexisting) {
    if (listener->callback->onRegistration(fqName, instance, preexisting).isOk()) return;
    forget(listener.get());
}

void ServiceRegistry::addPassthroughClient(const std::string& fqName, const std::string& instance,
                                           pid_t pid) {
    MutexLock lock(mMutex);
    mPassthroughClients[{fqName, instance}].insert(pid);
}

std::vector<ServiceRegistry::EntryState> ServiceRegistry::dump() const {
    std::map<Name, EntryState> states;
    MutexLock lock(mMutex);
    for (const auto& [name, registration] : mServices) {
        states[name] = {name.first, name.second, registration->pid, {}};
    }
    for (const auto& [name, clients] : mPassthroughClients) {
        EntryState& state =
                states.try_emplace(name, EntryState{name.first, name.second, kNoPid, {}})
                        .first->second;
        state.passthroughClients.assign(clients.begin(), clients.end());
    }
    std::vector<EntryState> sorted;
    sorted.reserve(states.size());
    for (auto& [name, state] : states) sorted.push_back(std::move(state));
    return sorted;
}

}  // namespace orvo
