// SPDX-License-Identifier: Apache-2.0
// Endpoint: this process's socket, its connections, and the objects known on them.

#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>

#include <android-base/unique_fd.h>
#include <hwbinder/Binder.h>
#include <hwbinder/BpHwBinder.h>

#include "CallThread.h"
#include "EventLoop.h"
#include "Transport.capnp.h"
#include "host/Mutex.h"

namespace android {
namespace hardware {
namespace transport {

class Connection;
class Endpoint;
class LocalObject;

/** Tells from any thread whether the process at the other end of a connection is still there. */
class Peer {
  public:
    explicit Peer(base::unique_fd socket) : mSocket(std::move(socket)) {}
    bool isGone() const;
    void close();

    pid_t pid = 0;
    uid_t uid = 0;

  private:
    const base::unique_fd mSocket;  ///< a duplicate, only to ask the kernel
    std::atomic<bool> mClosed{false};
};

/** What this process knows of an object of another one. Lives and dies on the event loop. */
struct RemoteObject {
    RemoteObject(Endpoint& endpoint, std::string address, uint64_t id, wire::Binder::Client binder);
    ~RemoteObject();

    Endpoint& endpoint;
    const std::string address;  ///< socket name of the process that it lives in
    const uint64_t id;          ///< in that process
    const int32_t handle;       ///< in this process
    /** Null if its process was gone already when the reference arrived. Set before it is shared. */
    std::shared_ptr<Peer> peer;
    // Event loop only. The connection comes first, so that it goes last.
    kj::Maybe<kj::Own<Connection>> connection;
    wire::Binder::Client binder;
    wp<BpHwBinder> proxy;

    bool isDead() const { return peer == nullptr || peer->isGone(); }
};

/**
 * One per process that meets others, never destroyed. Public methods may be called on any thread
 * but the event loop's, unless they say otherwise.
 */
class Endpoint {
  public:
    /** Null, with a line that says why, if the device directory cannot be used. */
    static Endpoint* instance();

    const std::string& address() const { return mAddress; }
    EventLoop& loop() { return mLoop; }

    /** Makes a call and waits. `data` must be sealed. */
    Reply call(const std::shared_ptr<RemoteObject>& target, uint32_t code, uint32_t flags,
               OwnedContents data);
    /** Queues a call. */
    void send(const std::shared_ptr<RemoteObject>& target, uint32_t code, uint32_t flags,
              OwnedContents data);

    /** The service manager's object; null if there is none. */
    sp<IBinder> contextObject();
    bool becomeContextManager();
    void setContextObject(const sp<BHwBinder>& object);

    // What follows runs on the event loop only.

    /** How a reference to `binder` looks to the process at the other end. */
    void encode(const sp<IBinder>& binder, Connection& to, wire::BinderRef::Builder ref);
    void encode(const ParcelContents& contents, Connection& to, wire::Parcel::Builder parcel);

    /** What a reference from there means here. Throws if it makes no sense. */
    sp<IBinder> decode(wire::BinderRef::Reader ref, Connection& from);
    ParcelObject decode(wire::Object::Reader object, Connection& from);
    /** Throws, or rejects, if the parcel is not one that an honest peer sends. */
    kj::Promise<OwnedContents> decode(wire::Parcel::Reader parcel, Connection& from);

    /** The local object with that number as `to` sees it; null if there is none. */
    kj::Maybe<wire::Binder::Client> localObject(uint64_t id, Connection& to);
    sp<BHwBinder> localContextObject();

    void introduced(Connection& connection, const std::string& address);
    void disconnected(Connection& connection);
    /** Runs in the background; what it fails with is logged. */
    void watch(kj::Promise<void> promise) { mTasks->add(kj::mv(promise)); }

  private:
    friend class LocalObject;
    friend struct RemoteObject;
    using RemoteKey = std::pair<std::string, uint64_t>;

    Endpoint(std::string directory, std::string address, base::unique_fd listener);
    static Endpoint* create();

    kj::Promise<void> acceptLoop();
    /** The connection to the process with that socket, made now if need be; null if it is gone. */
    Connection* connectionTo(const std::string& address);
    Connection& open(kj::Own<kj::AsyncCapabilityStream> stream, bool accepted,
                     std::shared_ptr<Peer> peer);
    std::shared_ptr<LocalObject> share(const sp<BHwBinder>& binder);
    sp<BpHwBinder> newProxy(const std::string& address, uint64_t id, wire::Binder::Client viaSender,
                            Connection& from);
    std::string socketPath(const std::string& address) const { return mDirectory + "/" + address; }
    std::string managerAddress() const;
    void request(const std::shared_ptr<RemoteObject>& target, uint32_t code, uint32_t flags,
                 const CallChain& chain, OwnedContents data,
                 std::shared_ptr<CallThread::Pending> pending);
    kj::Promise<Reply> readReply(capnp::Response<wire::Binder::TransactResults>&& response,
                                 Connection& from);

    const std::string mDirectory;
    const std::string mAddress;
    EventLoop mLoop;

    orvo::Mutex mContextMutex;
    sp<BHwBinder> mContextObject GUARDED_BY(mContextMutex);

    // Event loop only.
    kj::Own<kj::TaskSet> mTasks;
    kj::Own<kj::ConnectionReceiver> mListener;
    std::map<std::string, Connection*> mConnections;  ///< by the address of the other end
    std::map<RemoteKey, RemoteObject*> mRemoteObjects;
    std::unordered_map<BHwBinder*, std::weak_ptr<LocalObject>> mLocalByBinder;
    std::unordered_map<uint64_t, std::weak_ptr<LocalObject>> mLocalById;
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
