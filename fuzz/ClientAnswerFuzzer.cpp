// SPDX-License-Identifier: Apache-2.0
// A server that speaks the transport's protocol and answers calls with spoiled messages: its
// clients get results or errors.

#include <string>
#include <thread>

#include <capnp/rpc-twoparty.h>
#include <hwbinder/ProcessState.h>
#include <kj/async-io.h>

#include "ObjectTable.h"
#include "fuzz/support/Require.h"
#include "fuzz/transport/Interfaces.h"
#include "fuzz/transport/Spoiling.h"
#include "fuzz/transport/ThisProcess.h"
#include "fuzz/transport/WireMessages.h"

namespace {

using android::sp;
using android::hardware::IBinder;
using android::hardware::ProcessState;
using orvo::fuzz::ByteSource;
using orvo::fuzz::HonestCall;
using orvo::fuzz::Interface;
using orvo::fuzz::KnownObject;
using orvo::fuzz::require;
namespace wire = orvo::fuzz::wire;

constexpr char kAddress[] = "1-0000000000000001";
const KnownObject kContext{kAddress, 1};

/** First bytes from here on ask for the context object, and are answered with any reference. */
constexpr size_t kAsksForContext = 192;

/**
 * The input in use. The client waits for each answer, so its thread and the server's never use it
 * at the same time; the socket between them orders what they do.
 */
const Interface* gInterface = nullptr;
ByteSource* gSource = nullptr;

class RogueBinder final : public wire::Binder::Server {
  public:
    kj::Promise<void> transact(TransactContext context) override {
        const uint32_t code = context.getParams().getCode();
        // Nobody waits for it; the input may be another one by now.
        if ((context.getParams().getFlags() & IBinder::FLAG_ONEWAY) != 0) return kj::READY_NOW;
        const HonestCall* honest = &gInterface->calls.front();
        for (const HonestCall& call : gInterface->calls) {
            if (call.code == code) honest = &call;
        }
        auto results = context.getResults();
        if (honest->reply == nullptr || gSource->below(32) == 31) {
            results.setStatus(gSource->number<int32_t>());
            return kj::READY_NOW;
        }
        const auto contents = orvo::fuzz::spoil(*honest->reply, *gSource);
        orvo::fuzz::fillParcel(*contents, kContext, *gSource, results.initReply());
        return kj::READY_NOW;
    }
};

class RogueProcess final : public wire::Process::Server {
  public:
    kj::Promise<void> introduce(IntroduceContext) override { return kj::READY_NOW; }
    kj::Promise<void> object(ObjectContext context) override {
        context.getResults().setBinder(kj::heap<RogueBinder>());
        return kj::READY_NOW;
    }
    kj::Promise<void> contextObject(ContextObjectContext context) override {
        auto binder = context.getResults().initBinder();
        binder.setAddress(kContext.address);
        binder.setId(kContext.id);
        binder.setBinder(kj::heap<RogueBinder>());
        if (!gSource->empty()) orvo::fuzz::fillBinder(kContext, *gSource, binder);
        return kj::READY_NOW;
    }
};

/** Serves on a thread of its own for as long as this process lives. */
void serve() {
    const std::string path = orvo::fuzz::joinFreshDevice() + "/" + kAddress;
    kj::AsyncIoContext io = kj::setupAsyncIo();
    auto address = io.provider->getNetwork()
                           .parseAddress(kj::str("unix:", path.c_str()))
                           .wait(io.waitScope);
    auto receiver = address->listen();
    capnp::TwoPartyServer server(kj::heap<RogueProcess>());
    auto serving = server.listenCapStreamReceiver(*receiver, 16);
    orvo::fuzz::pretendManager(kAddress);
    serving.wait(io.waitScope);
}

sp<IBinder> contextObject() {
    return ProcessState::self()->getContextObject(nullptr);
}

/** Starts the server on the first call, and connects again if an input broke the connection. */
const sp<IBinder>& honestContextObject() {
    static ByteSource nothing(nullptr, 0);
    static sp<IBinder>& context = *new sp<IBinder>;
    gSource = &nothing;
    if (context == nullptr) {
        // The endpoint makes the directory of the sockets.
        require(orvo::fuzz::joinFreshDevice() != "" && contextObject() == nullptr, "no server yet");
        std::thread(serve).detach();
        while ((context = contextObject()) == nullptr) std::this_thread::yield();
    }
    if (context->remoteBinder()->remoteObject()->isDead()) context = contextObject();
    require(context != nullptr && context->remoteBinder() != nullptr, "the server is there");
    return context;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto& interfaces = orvo::fuzz::interfaces();
    sp<IBinder> object = honestContextObject();

    ByteSource source(data, size);
    gSource = &source;
    const size_t first = source.below(256);
    gInterface = &interfaces[first % interfaces.size()];
    if (first >= kAsksForContext) object = contextObject();
    if (object == nullptr || object->remoteBinder() == nullptr) return 0;
    gInterface->methods[source.below(gInterface->methods.size())](object);
    if (source.flag()) gInterface->methods[source.below(gInterface->methods.size())](object);
    return 0;
}
