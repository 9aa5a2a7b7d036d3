// SPDX-License-Identifier: Apache-2.0
// Generated proxies with answers whose parcels a server has spoiled: each is a result or an error.

#include <hwbinder/Parcel.h>

#include "fuzz/support/Surroundings.h"
#include "fuzz/transport/Interfaces.h"
#include "fuzz/transport/Spoiling.h"
#include "tests/host/hidl/LoopBackBinder.h"

namespace {

using android::status_t;
using android::hardware::Parcel;
using android::hardware::transport::OwnedContents;
using android::hardware::transport::ParcelContents;
using orvo::fuzz::ByteSource;
using orvo::fuzz::HonestCall;
using orvo::fuzz::Interface;

/** Answers every call with a spoiled version of the honest answer to it. */
class SpoilingServer final : public orvo::test::LoopBackBinder {
  public:
    SpoilingServer(const Interface& interface, ByteSource& source)
        : LoopBackBinder(nullptr), mInterface(interface), mSource(source) {}

    status_t transact(uint32_t code, const Parcel&, Parcel* reply, uint32_t flags,
                      TransactCallback callback) override {
        if ((flags & FLAG_ONEWAY) != 0) return android::OK;
        const HonestCall* honest = nullptr;
        for (const HonestCall& call : mInterface.calls) {
            if (call.code == code) honest = &call;
        }
        // Now and then the answer to another question.
        if (honest == nullptr || honest->reply == nullptr || mSource.below(32) == 31) {
            honest = &mInterface.calls[mSource.below(mInterface.calls.size())];
        }
        if (honest->reply == nullptr) return mSource.number<int32_t>() | INT32_MIN;
        OwnedContents contents = orvo::fuzz::spoil(*honest->reply, mSource);
        if (!contents->relocate()) return android::FAILED_TRANSACTION;
        reply->adopt(std::unique_ptr<ParcelContents>(contents.release()));
        if (callback) callback(*reply);
        return android::OK;
    }

  private:
    const Interface& mInterface;
    ByteSource& mSource;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    [[maybe_unused]] static const bool quiet = [] {
        orvo::fuzz::silenceLog();
        return true;
    }();

    ByteSource source(data, size);
    const auto& interfaces = orvo::fuzz::interfaces();
    const Interface& interface = interfaces[source.below(interfaces.size())];
    interface.callAll(new SpoilingServer(interface, source));
    return 0;
}
