// SPDX-License-Identifier: Apache-2.0
// Connection: one socket between two processes.

#pragma once

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <set>
#include <string>

#include <android-base/unique_fd.h>
#include <capnp/rpc-twoparty.h>
#include <kj/refcount.h>

#include "EventLoop.h"
#include "Transport.capnp.h"

namespace android {
namespace hardware {
namespace transport {

class Connection;
struct RemoteObject;

/** Tells from any thread whether the process at the other end of a connection is still there. */
class Peer {
  public:
    explicit Peer(base::unique_fd socket) : mSocket(std::move(socket)) {}
    bool isGone() const;
    void close();

    // Set before it is shared.
    pid_t pid = 0;
    uid_t uid = 0;

  private:
    const base::unique_fd mSocket;  ///< a duplicate, only to ask the kernel
    std::atomic<bool> mClosed{false};
};

/** What connections are made for. Event loop only. */
class ConnectionUser {
  public:
    /** What the other end of a new connection gets first. */
    virtual wire::Process::Client offer(Connection& connection) = 0;
    /** The connection has broken; nothing arrives on it any more. */
    virtual void disconnected(Connection& connection) = 0;

  protected:
    ~ConnectionUser() = default;
};

/** Event loop only. Kept alive by Connections until it breaks, and by what was shared on it. */
class Connection : public kj::Refcounted {
  public:
    Connection(ConnectionUser& user, kj::Own<kj::AsyncCapabilityStream> stream, bool accepted,
               std::shared_ptr<Peer> peer);

    /** The other end's socket name; empty until an accepted connection has been introduced. */
    std::string address GUARDED_BY(gLoopThread);
    const std::shared_ptr<Peer> peer;
    /** The other end's objects that are known by way of this connection. */
    std::set<RemoteObject*> objects GUARDED_BY(gLoopThread);

    /** What the other end offers first. Once the connection is broken, calls on it fail. */
    wire::Process::Client remoteProcess();
    kj::Promise<void> onDisconnect();

  private:
    // In the order in which they use each other, so that they go in the reverse order.
    kj::Own<kj::AsyncCapabilityStream> mStream GUARDED_BY(gLoopThread);
    capnp::TwoPartyVatNetwork mNetwork GUARDED_BY(gLoopThread);
    capnp::RpcSystem<capnp::rpc::twoparty::VatId> mRpc GUARDED_BY(gLoopThread);
    wire::Process::Client mRemoteProcess GUARDED_BY(gLoopThread);
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
