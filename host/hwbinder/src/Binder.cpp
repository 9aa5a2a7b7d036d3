// SPDX-License-Identifier: Apache-2.0
// The parts of the binder classes that need no transport.

#include <hwbinder/Binder.h>

#include <sched.h>

#include <hwbinder/IInterface.h>
#include <hwbinder/Parcel.h>

namespace android {
namespace hardware {

IBinder::~IBinder() = default;

bool IBinder::checkSubclass(const void* /*subclassId*/) const {
    return false;
}

BHwBinder* IBinder::localBinder() {
    return nullptr;
}

BpHwBinder* IBinder::remoteBinder() {
    return nullptr;
}

BHwBinder::BHwBinder() : mSchedPolicy(SCHED_OTHER), mSchedPriority(0) {}

BHwBinder::~BHwBinder() = default;

status_t BHwBinder::transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags,
                             TransactCallback callback) {
    data.setDataPosition(0);
    return onTransact(code, data, reply, flags, [&callback](Parcel& finished) {
        finished.setDataPosition(0);
        if (callback) callback(finished);
    });
}

status_t BHwBinder::onTransact(uint32_t /*code*/, const Parcel& /*data*/, Parcel* /*reply*/,
                               uint32_t /*flags*/, TransactCallback /*callback*/) {
    return UNKNOWN_TRANSACTION;
}

status_t BHwBinder::linkToDeath(const sp<DeathRecipient>& /*recipient*/, void* /*cookie*/,
                                uint32_t /*flags*/) {
    return INVALID_OPERATION;
}

status_t BHwBinder::unlinkToDeath(const wp<DeathRecipient>& /*recipient*/, void* /*cookie*/,
                                  uint32_t /*flags*/, wp<DeathRecipient>* /*outRecipient*/) {
    return INVALID_OPERATION;
}

void BHwBinder::attachObject(const void* /*objectId*/, void* /*object*/, void* /*cleanupCookie*/,
                             object_cleanup_func /*func*/) {}

void* BHwBinder::findObject(const void* /*objectId*/) const {
    return nullptr;
}

void BHwBinder::detachObject(const void* /*objectId*/) {}

BHwBinder* BHwBinder::localBinder() {
    return this;
}

int BHwBinder::getMinSchedulingPolicy() {
    return mSchedPolicy;
}

int BHwBinder::getMinSchedulingPriority() {
    return mSchedPriority;
}

bool BHwBinder::isRequestingSid() {
    return mRequestingSid;
}

void BHwBinder::setRequestingSid(bool requestSid) {
    mRequestingSid = requestSid;
}

BpHwRefBase::BpHwRefBase(const sp<IBinder>& binder) : mRemote(binder) {}

BpHwRefBase::~BpHwRefBase() = default;

void BpHwRefBase::onFirstRef() {}

void BpHwRefBase::onLastStrongRef(const void* /*id*/) {}

bool BpHwRefBase::onIncStrongAttempted(uint32_t /*flags*/, const void* /*id*/) {
    // Once the last strong reference has gone, so has the proxy.
    return false;
}

IInterface::IInterface() = default;

IInterface::~IInterface() = default;

sp<IBinder> IInterface::asBinder(const IInterface* iface) {
    if (iface == nullptr) return nullptr;
    return const_cast<IInterface*>(iface)->onAsBinder();
}

sp<IBinder> IInterface::asBinder(const sp<IInterface>& iface) {
    return asBinder(iface.get());
}

}  // namespace hardware
}  // namespace android
