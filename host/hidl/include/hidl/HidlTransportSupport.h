// SPDX-License-Identifier: Apache-2.0
// What programs that serve or call interfaces need of the transport.

#pragma once

#include <sched.h>
#include <stddef.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlBinderSupport.h>
#include <hidl/HidlPassthroughSupport.h>
#include <hidl/HidlSupport.h>
#include <hidl/HidlTransportUtils.h>
#include <hidl/ServiceManagement.h>

// The kernel's name for SCHED_OTHER, which the C library does not have and generated code uses.
#ifndef SCHED_NORMAL
#define SCHED_NORMAL 0
#endif

namespace android {
namespace hardware {

/**
 * Sets how many threads of this process serve incoming calls. Comes before any other use of the
 * transport; without it there is one thread.
 *
 * @param maxThreads the caller's thread included if it will join; 0 with callerWillJoin is fatal.
 * @param callerWillJoin whether the caller will call joinRpcThreadpool.
 */
void configureRpcThreadpool(size_t maxThreads, bool callerWillJoin);

/**
 * Serves incoming calls until the program ends its transport, which one of a device never does.
 * Fatal if configureRpcThreadpool was not called.
 */
void joinRpcThreadpool();

/** A descriptor for poll or epoll, for programs with an event loop of their own; -1 on error. */
int setupTransportPolling();
/** Serves what has arrived at that descriptor. */
status_t handleTransportPoll(int fd);

/**
 * Asks for a minimum scheduling of the threads that serve this object. Comes before the object is
 * first sent anywhere. Kept, and otherwise ignored here.
 *
 * @param policy SCHED_NORMAL with a priority of -20 to 19, SCHED_FIFO or SCHED_RR with 1 to 99.
 * @return false for an object of another process or values outside of these.
 */
bool setMinSchedulerPolicy(const sp<::android::hidl::base::V1_0::IBase>& service, int policy,
                           int priority);

/** Asks for the security context of callers, likewise. False for an object of another process. */
bool setRequestingSid(const sp<::android::hidl::base::V1_0::IBase>& service, bool requesting);

/**
 * Whether both are the same object, however many proxies stand for it. Null equals only null;
 * objects of this process are compared by address.
 */
bool interfacesEqual(const sp<::android::hidl::base::V1_0::IBase>& left,
                     const sp<::android::hidl::base::V1_0::IBase>& right);

namespace details {

/**
 * The object as an IChild: the same object in this process, a new proxy for a remote one, null if
 * the object is null or no IChild. Asks a remote object for its chain.
 *
 * @param emitError a failed call gives a failed Return instead of null.
 */
template <typename IChild, typename IParent, typename BpChild>
Return<sp<IChild>> castInterface(sp<IParent> parent, const char* childIndicator, bool emitError) {
    static_assert(std::is_same<i_tag, typename IChild::_hidl_tag>::value, "child is not pure");
    static_assert(std::is_same<i_tag, typename IParent::_hidl_tag>::value, "parent is not pure");
    static_assert(std::is_same<bphw_tag, typename BpChild::_hidl_tag>::value, "not a proxy");
    if (parent == nullptr) return nullptr;

    Return<bool> castable = canCastInterface(parent.get(), childIndicator, emitError);
    if (!castable.isOk()) return StatusOf<bool, sp<IChild>>(castable);
    if (!castable) return nullptr;
    if (parent->isRemote()) return new BpChild(toBinder(parent));
    return static_cast<IChild*>(parent.get());
}

/** What IType::getService and tryGetService do; see getRawServiceInternal. */
template <typename BpType, typename IType = typename BpType::Pure>
sp<IType> getServiceInternal(const std::string& instance, bool retry, bool getStub) {
    static_assert(std::is_same<bphw_tag, typename BpType::_hidl_tag>::value, "not a proxy");
    const sp<::android::hidl::base::V1_0::IBase> service =
            getRawServiceInternal(IType::descriptor, instance, retry, getStub);
    if (service == nullptr) return nullptr;
    if (service->isRemote()) return new BpType(getOrCreateCachedBinder(service.get()));
    return IType::castFrom(service);
}

}  // namespace details

}  // namespace hardware
}  // namespace android
