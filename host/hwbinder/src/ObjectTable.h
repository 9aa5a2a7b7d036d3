// SPDX-License-Identifier: Apache-2.0
// ObjectTable: the objects that this process shares with others, and theirs that it knows.

#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>

#include <hwbinder/Binder.h>
#include <hwbinder/BpHwBinder.h>

#include "Connections.h"
#include "EventLoop.h"
#include "ParcelContents.h"

namespace android {
namespace hardware {
namespace transport {

class LocalObject;
class ObjectTable;

/** What this process knows of an object of another one. Lives and dies on the event loop. */
struct RemoteObject {
    RemoteObject(ObjectTable& table, std::string address, uint64_t id, wire::Binder::Client binder);
    ~RemoteObject();

    ObjectTable& table;
    const std::string address;  ///< socket name of the process that it lives in
    const uint64_t id;          ///< in that process
    const int32_t handle;       ///< in this process
    /** Null if its process was gone already when the reference arrived. Set before it is shared. */
    std::shared_ptr<Peer> peer;
    // The connection comes first, so that it goes last.
    kj::Maybe<kj::Own<Connection>> connection GUARDED_BY(gLoopThread);
    wire::Binder::Client binder GUARDED_BY(gLoopThread);
    wp<BpHwBinder> proxy GUARDED_BY(gLoopThread);

    bool isDead() const { return peer == nullptr || peer->isGone(); }
};

/**
 * One per process that meets others, never destroyed. Turns references into what crosses a
 * connection and back. Event loop only, but for the context object of this process.
 */
class ObjectTable final : public ConnectionUser {
  public:
    ObjectTable(EventLoop& loop, Connections& connections)
        : mLoop(loop), mConnections(connections) {}

    /** What this process serves as the service manager; null in all others. On any thread. */
    sp<BHwBinder> contextObject();
    void setContextObject(const sp<BHwBinder>& object);
    const std::string& ownAddress() const { return mConnections.address(); }

    /** How a reference to `binder` looks to the process at the other end. */
    void encode(const sp<IBinder>& binder, Connection& to, wire::BinderRef::Builder ref);
    void encode(const ParcelContents& contents, Connection& to, wire::Parcel::Builder parcel);

    /** What a reference from there means here. Throws if it makes no sense. */
    sp<IBinder> decode(wire::BinderRef::Reader ref, Connection& from);
    /** Throws, or rejects, if the parcel is not one that an honest peer sends. */
    kj::Promise<OwnedContents> decode(wire::Parcel::Reader parcel, Connection& from);

    /** The local object with that number as `to` sees it; null if there is none. */
    kj::Maybe<wire::Binder::Client> localObject(uint64_t id, Connection& to);

    void forget(const LocalObject& object);
    void forget(RemoteObject& object);

    wire::Process::Client offer(Connection& connection) override;
    void disconnected(Connection& connection) override;

  private:
    using RemoteKey = std::pair<std::string, uint64_t>;

    ParcelObject decode(wire::Object::Reader object, Connection& from);
    std::shared_ptr<LocalObject> share(const sp<BHwBinder>& binder);
    sp<BpHwBinder> newProxy(const std::string& address, uint64_t id, wire::Binder::Client viaSender,
                            Connection& from);

    EventLoop& mLoop;
    Connections& mConnections;

    orvo::Mutex mContextMutex;
    sp<BHwBinder> mContextObject GUARDED_BY(mContextMutex);

    std::map<RemoteKey, RemoteObject*> mRemoteObjects GUARDED_BY(gLoopThread);
    std::unordered_map<BHwBinder*, std::weak_ptr<LocalObject>> mLocalByBinder
            GUARDED_BY(gLoopThread);
    std::unordered_map<uint64_t, std::weak_ptr<LocalObject>> mLocalById GUARDED_BY(gLoopThread);
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
