// SPDX-License-Identifier: Apache-2.0
// Stands in a test for a remote object whose stub lives in the same process.

#include "tests/host/hidl/LoopBackBinder.h"

#include <utility>

#include "ParcelContents.h"

namespace orvo::test {

using android::BAD_VALUE;
using android::DEAD_OBJECT;
using android::NAME_NOT_FOUND;
using android::OK;
using android::sp;
using android::wp;
using android::hardware::IBinder;

LoopBackBinder::LoopBackBinder(sp<IBinder> stub) : mStub(std::move(stub)) {}

LoopBackBinder::Status LoopBackBinder::carry(const Parcel& from, Parcel* to) {
    Status status = OK;
    auto contents = from.contents().seal(&status);
    if (status != OK) return status;
    if (!contents->relocate()) return BAD_VALUE;
    to->adopt(std::unique_ptr<android::hardware::transport::ParcelContents>(contents.release()));
    return OK;
}

LoopBackBinder::Status LoopBackBinder::transact(uint32_t code, const Parcel& data, Parcel* reply,
                                                uint32_t flags, TransactCallback) {
    data.setDataPosition(0);
    const char* token = data.readCString();
    calls.push_back({code, flags, token == nullptr ? "" : token});
    if (mStub == nullptr) return DEAD_OBJECT;
    const auto error = errors.find(code);
    if (error != errors.end()) return error->second;

    Parcel received;
    Status status = carry(data, &received);
    if (status != OK) return status;
    Parcel answer;
    bool answered = false;
    status = mStub->transact(code, received, &answer, flags,
                             [&](Parcel& finished) { answered = carry(finished, reply) == OK; });
    if (status != OK || answered || (flags & FLAG_ONEWAY) != 0) return status;
    return carry(answer, reply);
}

LoopBackBinder::Status LoopBackBinder::linkToDeath(const sp<DeathRecipient>& recipient, void*,
                                                   uint32_t) {
    if (linkStatus == OK) links.push_back(recipient);
    return linkStatus;
}

LoopBackBinder::Status LoopBackBinder::unlinkToDeath(const wp<DeathRecipient>& recipient, void*,
                                                     uint32_t, wp<DeathRecipient>*) {
    if (unlinkStatus != OK) return unlinkStatus;
    for (auto link = links.begin(); link != links.end(); ++link) {
        if (*link == recipient.promote()) {
            links.erase(link);
            return OK;
        }
    }
    return NAME_NOT_FOUND;
}

void LoopBackBinder::attachObject(const void*, void*, void*, object_cleanup_func) {}

void* LoopBackBinder::findObject(const void*) const {
    return nullptr;
}

void LoopBackBinder::detachObject(const void*) {}

void LoopBackBinder::sendObituary() {
    for (const sp<DeathRecipient>& link : std::exchange(links, {})) link->binderDied(this);
}

}  // namespace orvo::test
