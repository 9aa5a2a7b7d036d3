// SPDX-License-Identifier: Apache-2.0
// A stranger who speaks the transport's protocol to a serving process and sends it spoiled calls:
// each is answered or refused, in time, and the next honest one is served.

#include <capnp/rpc-twoparty.h>
#include <hwbinder/IBinder.h>
#include <kj/async-io.h>

#include "fuzz/support/Require.h"
#include "fuzz/transport/Interfaces.h"
#include "fuzz/transport/Spoiling.h"
#include "fuzz/transport/ThisProcess.h"
#include "fuzz/transport/WireMessages.h"

namespace {

using orvo::fuzz::ByteSource;
using orvo::fuzz::HonestCall;
using orvo::fuzz::KnownObject;
using orvo::fuzz::require;
namespace wire = orvo::fuzz::wire;

constexpr auto kPatience = 10 * kj::SECONDS;

/** One connection, and what is known of the process behind it. */
class Stranger {
    template <typename Promise>
    auto inTime(Promise&& promise) {
        return mIo.provider->getTimer()
                .timeoutAfter(kPatience, kj::mv(promise))
                .wait(mIo.waitScope);
    }

  public:
    explicit Stranger(kj::AsyncIoContext& io)
        : mIo(io),
          mStream(io.lowLevelProvider->wrapUnixSocketFd(
                  orvo::fuzz::connectAsStranger(orvo::fuzz::serveKinds()),
                  kj::LowLevelAsyncIoProvider::TAKE_OWNERSHIP)),
          mClient(*mStream, 16),
          mProcess(mClient.bootstrap().castAs<wire::Process>()),
          mContext(inTime(mProcess.contextObjectRequest().send())),
          mBinder(mContext.getBinder().getBinder()),
          mKnown{mContext.getBinder().getAddress().cStr(), mContext.getBinder().getId()} {}

    /** A call like the honest one; what its outcome is does not matter. */
    void send(const HonestCall& call, ByteSource& source) {
        auto request = mBinder.transactRequest();
        request.setCode(source.below(32) == 31 ? source.number<uint32_t>() : call.code);
        request.setFlags(source.below(32) == 31 ? source.number<uint32_t>() : call.flags);
        auto chain = request.initChain(source.below(8) == 7 ? source.below(400) : 0);
        for (wire::Frame::Builder frame : chain) {
            frame.setAddress(source.flag() ? mKnown.address : source.text());
            frame.setThread(source.number<uint64_t>());
        }
        const auto contents = orvo::fuzz::spoil(*call.data, source);
        orvo::fuzz::fillParcel(*contents, mKnown, source, request.initData());
        answered(request.send().ignoreResult());
    }

    void askForObject(uint64_t id) {
        auto request = mProcess.objectRequest();
        request.setId(id);
        answered(request.send().ignoreResult());
    }

    void introduce(const std::string& address) {
        auto request = mProcess.introduceRequest();
        request.setAddress(address);
        answered(request.send().ignoreResult());
    }

    void checkServing(const HonestCall& ping) {
        auto request = mBinder.transactRequest();
        request.setCode(ping.code);
        ByteSource nothing(nullptr, 0);
        orvo::fuzz::fillParcel(*ping.data, mKnown, nothing, request.initData());
        require(inTime(request.send()).getStatus() == 0, "an honest call is served");
    }

    uint64_t contextId() const { return mKnown.id; }

  private:
    /** With a result or with an exception, but not with silence. */
    void answered(kj::Promise<void> promise) {
        bool came = false;
        inTime(promise.then([&came] { came = true; }, [&came](kj::Exception&&) { came = true; }));
        require(came, "every request is answered");
    }

    kj::AsyncIoContext& mIo;
    kj::Own<kj::AsyncCapabilityStream> mStream;
    capnp::TwoPartyClient mClient;
    wire::Process::Client mProcess;
    capnp::Response<wire::Process::ContextObjectResults> mContext;
    wire::Binder::Client mBinder;
    const KnownObject mKnown;
};

const HonestCall& pingOf(const std::vector<HonestCall>& calls) {
    constexpr uint32_t kPingCode = 256921159;
    for (const HonestCall& call : calls) {
        if (call.code == kPingCode) return call;
    }
    require(false, "there is an honest ping");
    return calls.front();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static kj::AsyncIoContext& io = *new kj::AsyncIoContext(kj::setupAsyncIo());
    const std::vector<HonestCall>& calls = orvo::fuzz::interfaces().front().calls;

    ByteSource source(data, size);
    Stranger stranger(io);
    do {
        switch (source.below(16)) {
            case 14:
                stranger.askForObject(source.flag() ? stranger.contextId()
                                                    : source.number<uint64_t>());
                break;
            case 15:
                stranger.introduce(source.text());
                break;
            default:
                stranger.send(calls[source.below(calls.size())], source);
        }
    } while (!source.empty());
    stranger.checkServing(pingOf(calls));
    return 0;
}
