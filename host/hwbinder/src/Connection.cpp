// SPDX-License-Identifier: Apache-2.0
// This end of a connection, and what the kernel knows of the other one.

#include "Connection.h"

#include <poll.h>
#include <sys/socket.h>

#include "ParcelContents.h"

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

bool Peer::isGone() const {
    if (mClosed) return true;
    // The kernel knows of a death before the event loop has read of it.
    pollfd query = {mSocket.get(), 0, 0};
    return poll(&query, 1, 0) == 1 && (query.revents & (POLLHUP | POLLERR)) != 0;
}

void Peer::close() {
    mClosed = true;
    // The duplicate would keep the connection open for the other end.
    shutdown(mSocket.get(), SHUT_RDWR);
}

Connection::Connection(ConnectionUser& user, kj::Own<kj::AsyncCapabilityStream> stream,
                       bool accepted, std::shared_ptr<Peer> otherEnd)
    : peer(std::move(otherEnd)),
      mStream(kj::mv(stream)),
      mNetwork(*mStream, ParcelContents::kMaxDescriptors, sideOf(accepted), readerOptions()),
      mRpc(capnp::makeRpcServer(mNetwork, user.offer(*this))),
      // Asked for once, and at once: asked for after the connection has broken, the RPC system
      // would begin anew on a stream that takes nothing any more, which ends the process.
      mRemoteProcess(remoteProcessOf(mRpc, sideOf(!accepted))) {
    EventLoop::assertCurrent();
}

wire::Process::Client Connection::remoteProcess() {
    EventLoop::assertCurrent();
    return mRemoteProcess;
}

kj::Promise<void> Connection::onDisconnect() {
    EventLoop::assertCurrent();
    return mNetwork.onDisconnect();
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
