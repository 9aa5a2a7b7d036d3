// SPDX-License-Identifier: Apache-2.0
// The two ends of a connection.

#include "Connection.h"

#include "LocalObject.h"
#include "Sockets.h"

namespace android {
namespace hardware {
namespace transport {

namespace {

capnp::rpc::twoparty::Side sideOf(bool accepted) {
    return accepted ? capnp::rpc::twoparty::Side::SERVER : capnp::rpc::twoparty::Side::CLIENT;
}

capnp::ReaderOptions readerOptions() {
    capnp::ReaderOptions options;
    // Room for the largest parcel with the overhead of many small objects, and no more: a peer
    // must not make us allocate without bound.
    options.traversalLimitInWords = 4 * ParcelContents::kMaxPayload / sizeof(capnp::word);
    return options;
}

wire::Process::Client remoteProcessOf(capnp::RpcSystem<capnp::rpc::twoparty::VatId>& rpc,
                                      capnp::rpc::twoparty::Side side) {
    capnp::MallocMessageBuilder message(4);
    auto otherSide = message.initRoot<capnp::rpc::twoparty::VatId>();
    otherSide.setSide(side);
    return rpc.bootstrap(otherSide).castAs<wire::Process>();
}

}  // namespace

Connection::Connection(Endpoint& endpoint, kj::Own<kj::AsyncCapabilityStream> stream, bool accepted,
                       std::shared_ptr<Peer> otherEnd)
    : peer(std::move(otherEnd)),
      mStream(kj::mv(stream)),
      mNetwork(*mStream, ParcelContents::kMaxDescriptors, sideOf(accepted), readerOptions()),
      mRpc(capnp::makeRpcServer(mNetwork, kj::heap<ProcessServer>(endpoint, *this))),
      // Asked for once, and at once: asked for after the connection has broken, the RPC system
      // would begin anew on a stream that takes nothing any more, which ends the process.
      mRemoteProcess(remoteProcessOf(mRpc, sideOf(!accepted))) {}

kj::Promise<void> ProcessServer::introduce(IntroduceContext context) {
    const std::string address = context.getParams().getAddress().cStr();
    KJ_REQUIRE(isAddress(address), "not the name of a socket");
    KJ_REQUIRE(isAddressOf(address, mConnection.peer->pid), "the name of another one's socket");
    KJ_REQUIRE(mConnection.address.empty(), "introduced already");
    mEndpoint.introduced(mConnection, address);
    return kj::READY_NOW;
}

kj::Promise<void> ProcessServer::object(ObjectContext context) {
    KJ_IF_MAYBE (binder, mEndpoint.localObject(context.getParams().getId(), mConnection)) {
        context.getResults().setBinder(kj::mv(*binder));
        return kj::READY_NOW;
    }
    KJ_FAIL_REQUIRE("no such object");
}

kj::Promise<void> ProcessServer::contextObject(ContextObjectContext context) {
    mEndpoint.encode(mEndpoint.localContextObject(), mConnection,
                     context.getResults().initBinder());
    return kj::READY_NOW;
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
