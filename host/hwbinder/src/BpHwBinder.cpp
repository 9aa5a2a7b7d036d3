// SPDX-License-Identifier: Apache-2.0
// Calls to objects of other processes, and who is told of their death.

#define LOG_TAG "hwbinder"

#include <hwbinder/BpHwBinder.h>

#include <vector>

#include <hwbinder/Parcel.h>
#include <hwbinder/ProcessState.h>
#include <log/log.h>

#include "Endpoint.h"
#include "ObjectTable.h"
#include "ParcelContents.h"
#include "host/Mutex.h"

namespace android {
namespace hardware {

namespace {

/** Says or ends it if this process has forbidden itself calls that wait. */
void checkRestriction(uint32_t code) {
    sp<ProcessState> process = ProcessState::selfOrNull();
    if (process == nullptr) return;
    switch (process->getCallRestriction()) {
        case ProcessState::CallRestriction::NONE:
            return;
        case ProcessState::CallRestriction::ERROR_IF_NOT_ONEWAY:
            ALOGE("Call %u waits, and this process makes oneway calls only", code);
            return;
        case ProcessState::CallRestriction::FATAL_IF_NOT_ONEWAY:
            LOG_ALWAYS_FATAL("Call %u waits, and this process makes oneway calls only", code);
    }
}

}  // namespace

struct BpHwBinder::DeathLinks {
    struct Link {
        sp<DeathRecipient> recipient;
        void* cookie;
    };

    explicit DeathLinks(bool isDead) : obituarySent(isDead) {}
    ~DeathLinks() {
        for (Link& link : links) transport::EventLoop::release(std::move(link.recipient));
    }

    orvo::Mutex mutex;
    std::vector<Link> links GUARDED_BY(mutex);
    bool obituarySent GUARDED_BY(mutex);
};

BpHwBinder::BpHwBinder(std::shared_ptr<transport::RemoteObject> object)
    : mObject(std::move(object)),
      // Of an object that was gone when the reference arrived there is no death left to hear of.
      mLinks(std::make_unique<DeathLinks>(mObject->peer == nullptr)) {}

BpHwBinder::~BpHwBinder() = default;

status_t BpHwBinder::transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags,
                              TransactCallback callback) {
    if (mObject->isDead()) return DEAD_OBJECT;

    status_t status = OK;
    transport::OwnedContents sealed = data.contents().seal(&status);
    if (status != OK) return status;

    transport::Endpoint& endpoint = *transport::Endpoint::instance();
    if ((flags & FLAG_ONEWAY) != 0) {
        endpoint.send(mObject, code, flags, std::move(sealed));
        return OK;
    }

    checkRestriction(code);
    transport::Reply answer = endpoint.call(mObject, code, flags, std::move(sealed));
    if (answer.status != OK) return answer.status;
    Parcel ignored;
    Parcel& result = reply != nullptr ? *reply : ignored;
    result.adopt(std::unique_ptr<transport::ParcelContents>(answer.contents.release()));
    if (callback) callback(result);
    return OK;
}

status_t BpHwBinder::linkToDeath(const sp<DeathRecipient>& recipient, void* cookie,
                                 uint32_t /*flags*/) {
    if (recipient == nullptr) return BAD_VALUE;
    orvo::MutexLock lock(mLinks->mutex);
    if (mLinks->obituarySent) return DEAD_OBJECT;
    mLinks->links.push_back({recipient, cookie});
    return OK;
}

status_t BpHwBinder::unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie,
                                   uint32_t /*flags*/, wp<DeathRecipient>* outRecipient) {
    sp<DeathRecipient> removed;
    orvo::MutexLock lock(mLinks->mutex);
    if (mLinks->obituarySent) return DEAD_OBJECT;
    auto& links = mLinks->links;
    for (auto link = links.begin(); link != links.end(); ++link) {
        const bool byRecipient = recipient != nullptr && recipient == link->recipient;
        const bool byCookie = recipient == nullptr && cookie == link->cookie;
        if (!byRecipient && !byCookie) continue;
        if (outRecipient != nullptr) *outRecipient = link->recipient;
        removed = link->recipient;
        links.erase(link);
        return OK;
    }
    return NAME_NOT_FOUND;
}

void BpHwBinder::sendObituary() {
    std::vector<DeathLinks::Link> links;
    {
        orvo::MutexLock lock(mLinks->mutex);
        if (mLinks->obituarySent) return;
        mLinks->obituarySent = true;
        links.swap(mLinks->links);
    }
    for (const DeathLinks::Link& link : links) link.recipient->binderDied(this);
}

void BpHwBinder::attachObject(const void* /*objectId*/, void* /*object*/, void* /*cleanupCookie*/,
                              object_cleanup_func /*func*/) {}

void* BpHwBinder::findObject(const void* /*objectId*/) const {
    return nullptr;
}

void BpHwBinder::detachObject(const void* /*objectId*/) {}

BpHwBinder* BpHwBinder::remoteBinder() {
    return this;
}

int32_t BpHwBinder::handle() const {
    return mObject->handle;
}

}  // namespace hardware
}  // namespace android
