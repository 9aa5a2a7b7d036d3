// SPDX-License-Identifier: Apache-2.0
// Connection: one socket between two processes, and what each offers the other on it.

#pragma once

#include <memory>
#include <set>
#include <string>

#include <capnp/rpc-twoparty.h>
#include <kj/refcount.h>

#include "Endpoint.h"

namespace android {
namespace hardware {
namespace transport {

/** Event loop only. Kept alive by the endpoint until it breaks, and by what was shared on it. */
class Connection : public kj::Refcounted {
  public:
    Connection(Endpoint& endpoint, kj::Own<kj::AsyncCapabilityStream> stream, bool accepted,
               std::shared_ptr<Peer> peer);

    /** The other end's socket name; empty until an accepted connection has been introduced. */
    std::string address;
    const std::shared_ptr<Peer> peer;
    /** The other end's objects that are known by way of this connection. */
    std::set<RemoteObject*> objects;

    /** What the other end offers first. Once the connection is broken, calls on it fail. */
    wire::Process::Client remoteProcess() { return mRemoteProcess; }
    kj::Promise<void> onDisconnect() { return mNetwork.onDisconnect(); }

  private:
    // In the order in which they use each other, so that they go in the reverse order.
    kj::Own<kj::AsyncCapabilityStream> mStream;
    capnp::TwoPartyVatNetwork mNetwork;
    capnp::RpcSystem<capnp::rpc::twoparty::VatId> mRpc;
    wire::Process::Client mRemoteProcess;
};

/** What a connection offers first. */
class ProcessServer final : public wire::Process::Server {
  public:
    ProcessServer(Endpoint& endpoint, Connection& connection)
        : mEndpoint(endpoint), mConnection(connection) {}

    kj::Promise<void> introduce(IntroduceContext context) override;
    kj::Promise<void> object(ObjectContext context) override;
    kj::Promise<void> contextObject(ContextObjectContext context) override;

  private:
    Endpoint& mEndpoint;
    // Not counted: the connection owns the RPC system, which owns this.
    Connection& mConnection;
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
