// SPDX-License-Identifier: Apache-2.0
// A stranger who speaks the transport's protocol to a serving process and sends it spoiled calls:
// each is answered or refused, in time, and the next honest one is served.

#include <memory>

#include <capnp/rpc-twoparty.h>
#include <hwbinder/IBinder.h>
#include <kj/async-io.h>
#include <kj/vector.h>

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

/** Of a chain: seldom more than what a server takes, as long ones cost time. */
size_t chooseLength(ByteSource& source) {
    switch (source.below(32)) {
        case 31:
            return source.below(400);
        case 30:
        case 29:
            return source.below(4);
        default:
            return 0;
    }
}

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
        auto chain = request.initChain(chooseLength(source));
        for (wire::Frame::Builder frame : chain) {
            frame.setAddress(source.flag() ? mKnown.address : source.text());
            frame.setThread(source.number<uint64_t>());
        }
        const auto contents = orvo::fuzz::spoil(*call.data, source);
        orvo::fuzz::fillParcel(*contents, mKnown, source, request.initData());
        expectAnswer(request.send().ignoreResult());
    }

    void askForObject(uint64_t id) {
        auto request = mProcess.objectRequest();
        request.setId(id);
        expectAnswer(request.send().ignoreResult());
    }

    void introduce(const std::string& address) {
        auto request = mProcess.introduceRequest();
        request.setAddress(address);
        expectAnswer(request.send().ignoreResult());
    }

    /** Every request so far is answered, if only with an exception; and so is an honest one. */
    void checkServing(const HonestCall& ping) {
        auto request = mBinder.transactRequest();
        request.setCode(ping.code);
        ByteSource nothing(nullptr, 0);
        orvo::fuzz::fillParcel(*ping.data, mKnown, nothing, request.initData());
        auto served = request.send();
        inTime(kj::joinPromises(mAnswers.releaseAsArray()));
        require(inTime(kj::mv(served)).getStatus() == 0, "an honest call is served");
    }

    uint64_t contextId() const { return mKnown.id; }

  private:
    void expectAnswer(kj::Promise<void> answer) {
        mAnswers.add(answer.catch_([](kj::Exception&&) {}));
    }

    kj::AsyncIoContext& mIo;
    kj::Own<kj::AsyncCapabilityStream> mStream;
    capnp::TwoPartyClient mClient;
    wire::Process::Client mProcess;
    capnp::Response<wire::Process::ContextObjectResults> mContext;
    wire::Binder::Client mBinder;
    const KnownObject mKnown;
    kj::Vector<kj::Promise<void>> mAnswers;  ///< Awaited; those of a stranger that leaves are not.
};

const std::vector<HonestCall>& calls() {
    return orvo::fuzz::interfaces().front().calls;
}

const HonestCall& honestPing() {
    constexpr uint32_t kPingCode = 256921159;
    for (const HonestCall& call : calls()) {
        if (call.code == kPingCode) return call;
    }
    require(false, "there is an honest ping");
    return calls().front();
}

/** One request, or another connection. */
void ask(std::unique_ptr<Stranger>& stranger, kj::AsyncIoContext& io, ByteSource& source) {
    switch (source.below(16)) {
        case 13:
            stranger.reset();
            stranger = std::make_unique<Stranger>(io);
            break;
        case 14:
            stranger->askForObject(source.flag() ? stranger->contextId()
                                                 : source.number<uint64_t>());
            break;
        case 15:
            stranger->introduce(source.text());
            break;
        default:
            stranger->send(calls()[source.below(calls().size())], source);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static kj::AsyncIoContext& io = *new kj::AsyncIoContext(kj::setupAsyncIo());
    // Its answers are there when an input ends, so the next one begins like the first.
    static std::unique_ptr<Stranger>& stranger =
            *new std::unique_ptr<Stranger>(std::make_unique<Stranger>(io));

    ByteSource source(data, size);
    ask(stranger, io, source);
    if (source.flag()) ask(stranger, io, source);
    stranger->checkServing(honestPing());
    return 0;
}
