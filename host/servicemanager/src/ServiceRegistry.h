// SPDX-License-Identifier: Apache-2.0
// ServiceRegistry: who serves which interface under which name, and who wants to hear of it.

#pragma once

#include <sys/types.h>

#include <list>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <utils/RefBase.h>

#include "host/Mutex.h"

namespace orvo {

/**
 * What the service manager knows of running services. It holds services and listeners strongly and
 * forgets them when their process dies.
 *
 * Thread-safe. No method may be called with a lock held that a listener or a service also takes:
 * listeners are called, and services and listeners released, on the calling thread, but never under
 * this object's own lock.
 */
class ServiceRegistry : public virtual ::android::RefBase {
  public:
    using IBase = ::android::hidl::base::V1_0::IBase;
    using IServiceNotification = ::android::hidl::manager::V1_0::IServiceNotification;

    ServiceRegistry();

    /** Stands for the process id of nobody. */
    static constexpr pid_t kNoPid = -1;

    /**
     * Enters a service under a name and every descriptor of its chain, most derived first, in place
     * of whoever was there. If its most derived interface was served by another object, every entry
     * of that object under this name goes too. Listeners are told before this returns.
     *
     * @param pid the process that serves.
     * @return false, and nothing changes, for a null or dead service or an empty chain.
     */
    bool add(const std::string& instance, const ::android::sp<IBase>& service,
             const std::vector<std::string>& chain, pid_t pid);

    /** The living service that is entered so; null if there is none. */
    ::android::sp<IBase> get(const std::string& fqName, const std::string& instance) const;

    /** "fqName/instance" of every entry, sorted. */
    std::vector<std::string> list() const;

    /** The names under which an interface is served, sorted. */
    std::vector<std::string> instancesOf(const std::string& fqName) const;

    /**
     * Tells a listener of every later registration of an interface under a name, or under any name
     * if `instance` is empty, and before this returns of those that exist. One whose call fails, or
     * that dies, is dropped. One that is added twice is told twice.
     *
     * @return false for a null or dead listener.
     */
    bool addListener(const std::string& fqName, const std::string& instance,
                     const ::android::sp<IServiceNotification>& listener);

    /** Removes every listener that is the same object. An empty fqName means every interface, an
     *  empty instance every name. True if there was one. */
    bool removeListeners(const std::string& fqName, const std::string& instance,
                         const ::android::sp<IServiceNotification>& listener);

    /** Notes that a process has loaded an implementation instead of being served. */
    void addPassthroughClient(const std::string& fqName, const std::string& instance, pid_t pid);

    /** What is known of one entry. */
    struct EntryState {
        std::string fqName;
        std::string instance;
        /** Who serves; kNoPid if it is only loaded. */
        pid_t pid = kNoPid;
        std::vector<int32_t> passthroughClients;
    };
    /** Every entry and every loaded implementation, sorted by name. */
    std::vector<EntryState> dump() const;

  protected:
    ~ServiceRegistry() override;

  private:
    /** fqName and instance. */
    using Name = std::pair<std::string, std::string>;

    struct Watched;
    struct Registration;
    struct Listener;
    using Listeners = std::vector<::android::sp<Listener>>;

    template <typename Interface>
    bool watch(const ::android::sp<Watched>& watched, const ::android::sp<Interface>& object);
    void forget(const Watched* dead);
    void displace(const std::string& chief, const std::string& instance,
                  const ::android::sp<IBase>& by,
                  std::vector<::android::sp<Registration>>* released) REQUIRES(mMutex);
    void notify(const ::android::sp<Listener>& listener, const std::string& fqName,
                const std::string& instance, bool preexisting);

    mutable Mutex mMutex;
    /** Name -> the registration that is in force for it. One registration has many names. */
    std::map<Name, ::android::sp<Registration>> mServices GUARDED_BY(mMutex);
    std::list<::android::sp<Listener>> mListeners GUARDED_BY(mMutex);
    /** Name -> the processes that have loaded an implementation of it. */
    std::map<Name, std::set<pid_t>> mPassthroughClients GUARDED_BY(mMutex);
};

}  // namespace orvo
