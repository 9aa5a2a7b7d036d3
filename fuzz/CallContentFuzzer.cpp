// SPDX-License-Identifier: Apache-2.0
// Generated stubs with calls whose parcels a peer has spoiled: each is served or refused.

#include <hwbinder/Parcel.h>

#include "fuzz/support/Require.h"
#include "fuzz/support/Surroundings.h"
#include "fuzz/transport/Interfaces.h"
#include "fuzz/transport/Spoiling.h"

using android::hardware::IBinder;
using android::hardware::Parcel;
using android::hardware::transport::OwnedContents;
using android::hardware::transport::ParcelContents;
using orvo::fuzz::ByteSource;
using orvo::fuzz::HonestCall;
using orvo::fuzz::Interface;
using orvo::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    [[maybe_unused]] static const bool quiet = [] {
        orvo::fuzz::silenceLog();
        return true;
    }();

    ByteSource source(data, size);
    const auto& interfaces = orvo::fuzz::interfaces();
    const Interface& interface = interfaces[source.below(interfaces.size())];
    const android::sp<IBinder> stub = interface.makeStub();
    do {
        const HonestCall& call = interface.calls[source.below(interface.calls.size())];
        OwnedContents contents = orvo::fuzz::spoil(*call.data, source);
        // What does not fit together is refused before it reaches a stub.
        if (!contents->relocate()) continue;

        Parcel parcel;
        parcel.adopt(std::unique_ptr<ParcelContents>(contents.release()));
        Parcel reply;
        int answers = 0;
        const android::status_t status =
                stub->transact(call.code, parcel, &reply, call.flags, [&](Parcel& answer) {
                    answers++;
                    android::status_t sealing = android::OK;
                    OwnedContents sealed = answer.contents().seal(&sealing);
                    require(sealing != android::OK || sealed->relocate(),
                            "what a stub answers fits together");
                });
        require(answers <= 1, "a call is answered once");
        require(status == android::OK || answers == 0, "a refused call has no answer");
    } while (!source.empty());
    return 0;
}
