// SPDX-License-Identifier: Apache-2.0
// What programs that serve or call interfaces need of the transport.

#define LOG_TAG "HidlTransportSupport"

#include <hidl/HidlTransportSupport.h>

#include <hidl/Static.h>

namespace android {
namespace hardware {

using ::android::hidl::base::V1_0::IBase;

void configureRpcThreadpool(size_t maxThreads, bool callerWillJoin) {
    configureBinderRpcThreadpool(maxThreads, callerWillJoin);
}

void joinRpcThreadpool() {
    joinBinderRpcThreadpool();
}

int setupTransportPolling() {
    return setupBinderPolling();
}

status_t handleTransportPoll(int) {
    return handleBinderPoll();
}

bool setMinSchedulerPolicy(const sp<IBase>& service, int policy, int priority) {
    if (service->isRemote()) {
        ALOGE("Cannot set the scheduling of an object of another process.");
        return false;
    }
    const bool isFair = policy == SCHED_NORMAL && priority >= -20 && priority <= 19;
    const bool isRealTime =
            (policy == SCHED_FIFO || policy == SCHED_RR) && priority >= 1 && priority <= 99;
    if (!isFair && !isRealTime) {
        ALOGE("Scheduling policy %d with priority %d is not supported.", policy, priority);
        return false;
    }
    details::gServicePrioMap->set(service, {policy, priority});
    return true;
}

bool setRequestingSid(const sp<IBase>& service, bool requesting) {
    if (service->isRemote()) {
        ALOGE("Cannot ask for the callers of an object of another process.");
        return false;
    }
    details::gServiceSidMap->set(service, bool{requesting});
    return true;
}

bool interfacesEqual(const sp<IBase>& left, const sp<IBase>& right) {
    if (left == nullptr || right == nullptr || !left->isRemote() || !right->isRemote()) {
        return left == right;
    }
    return getOrCreateCachedBinder(left.get()) == getOrCreateCachedBinder(right.get());
}

}  // namespace hardware
}  // namespace android
