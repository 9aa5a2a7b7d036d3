// SPDX-License-Identifier: Apache-2.0
// Which objects are known here, and how references to them cross a connection.

#include "ObjectTable.h"

#include "LocalObject.h"
#include "Sockets.h"
#include "ThreadPool.h"

namespace android {
namespace hardware {
namespace transport {

namespace {

int32_t nextHandle() {
    static std::atomic<int32_t> last{0};
    return ++last;
}

/** What a connection offers first. */
class ProcessServer final : public wire::Process::Server {
  public:
    ProcessServer(ObjectTable& objects, Connections& connections, Connection& connection)
        : mObjects(objects), mConnections(connections), mConnection(connection) {}

    kj::Promise<void> introduce(IntroduceContext context) override;
    kj::Promise<void> object(ObjectContext context) override;
    kj::Promise<void> contextObject(ContextObjectContext context) override;

  private:
    ObjectTable& mObjects;
    Connections& mConnections;
    // Not counted: the connection owns the RPC system, which owns this.
    Connection& mConnection;
};

kj::Promise<void> ProcessServer::introduce(IntroduceContext context) {
    EventLoop::assertCurrent();
    const std::string address = context.getParams().getAddress().cStr();
    KJ_REQUIRE(isAddress(address), "not the name of a socket");
    KJ_REQUIRE(isAddressOf(address, mConnection.peer->pid), "the name of another one's socket");
    KJ_REQUIRE(mConnection.address.empty(), "introduced already");
    mConnections.introduced(mConnection, address);
    return kj::READY_NOW;
}

kj::Promise<void> ProcessServer::object(ObjectContext context) {
    EventLoop::assertCurrent();
    KJ_IF_MAYBE (binder, mObjects.localObject(context.getParams().getId(), mConnection)) {
        context.getResults().setBinder(kj::mv(*binder));
        return kj::READY_NOW;
    }
    KJ_FAIL_REQUIRE("no such object");
}

kj::Promise<void> ProcessServer::contextObject(ContextObjectContext context) {
    EventLoop::assertCurrent();
    mObjects.encode(mObjects.contextObject(), mConnection, context.getResults().initBinder());
    return kj::READY_NOW;
}

}  // namespace

RemoteObject::RemoteObject(ObjectTable& knownTo, std::string livesAt, uint64_t number,
                           wire::Binder::Client client)
    : table(knownTo),
      address(std::move(livesAt)),
      id(number),
      handle(nextHandle()),
      binder(kj::mv(client)) {
    EventLoop::assertCurrent();
}

RemoteObject::~RemoteObject() {
    EventLoop::assertCurrent();
    table.forget(*this);
    KJ_IF_MAYBE (open, connection) {
        (*open)->objects.erase(this);
    }
}

sp<BHwBinder> ObjectTable::contextObject() {
    orvo::MutexLock lock(mContextMutex);
    return mContextObject;
}

void ObjectTable::setContextObject(const sp<BHwBinder>& object) {
    orvo::MutexLock lock(mContextMutex);
    mContextObject = object;
}

void ObjectTable::encode(const sp<IBinder>& binder, Connection& to, wire::BinderRef::Builder ref) {
    EventLoop::assertCurrent();
    if (binder == nullptr) return;
    if (BHwBinder* local = binder->localBinder(); local != nullptr) {
        std::shared_ptr<LocalObject> object = share(local);
        ref.setAddress(ownAddress());
        ref.setId(object->id());
        ref.setBinder(kj::heap<ObjectServer>(*this, to, std::move(object)));
        return;
    }
    BpHwBinder* remote = binder->remoteBinder();
    KJ_REQUIRE(remote != nullptr, "a binder that is neither local nor remote");
    const std::shared_ptr<RemoteObject>& object = remote->remoteObject();
    ref.setAddress(object->address);
    ref.setId(object->id);
    ref.setBinder(object->binder);
}

sp<IBinder> ObjectTable::decode(wire::BinderRef::Reader ref, Connection& from) {
    EventLoop::assertCurrent();
    const std::string address = ref.getAddress().cStr();
    if (address.empty()) return nullptr;
    KJ_REQUIRE(isAddress(address), "not the name of a socket");
    if (address == ownAddress()) {
        auto found = mLocalById.find(ref.getId());
        KJ_REQUIRE(found != mLocalById.end(), "a reference to an object that we never gave away");
        return found->second.lock()->object();
    }
    auto known = mRemoteObjects.find({address, ref.getId()});
    if (known != mRemoteObjects.end()) {
        // If its proxy is being destroyed right now, or its connection broke, it gets another one.
        sp<BpHwBinder> proxy = known->second->proxy.promote();
        if (proxy != nullptr && !known->second->isDead()) return proxy;
    }
    return newProxy(address, ref.getId(), ref.getBinder(), from);
}

kj::Maybe<wire::Binder::Client> ObjectTable::localObject(uint64_t id, Connection& to) {
    EventLoop::assertCurrent();
    auto found = mLocalById.find(id);
    if (found == mLocalById.end()) return nullptr;
    return wire::Binder::Client(kj::heap<ObjectServer>(*this, to, found->second.lock()));
}

void ObjectTable::forget(const LocalObject& object) {
    EventLoop::assertCurrent();
    mLocalByBinder.erase(object.object().get());
    mLocalById.erase(object.id());
}

void ObjectTable::forget(RemoteObject& object) {
    EventLoop::assertCurrent();
    auto found = mRemoteObjects.find({object.address, object.id});
    if (found != mRemoteObjects.end() && found->second == &object) mRemoteObjects.erase(found);
}

wire::Process::Client ObjectTable::offer(Connection& connection) {
    EventLoop::assertCurrent();
    return kj::heap<ProcessServer>(*this, mConnections, connection);
}

void ObjectTable::disconnected(Connection& connection) {
    EventLoop::assertCurrent();
    for (RemoteObject* object : connection.objects) {
        sp<BpHwBinder> proxy = object->proxy.promote();
        if (proxy == nullptr) continue;
        ThreadPool::instance().submit([proxy = std::move(proxy)] { proxy->sendObituary(); });
    }
}

std::shared_ptr<LocalObject> ObjectTable::share(const sp<BHwBinder>& binder) {
    EventLoop::assertCurrent();
    auto found = mLocalByBinder.find(binder.get());
    if (found != mLocalByBinder.end()) return found->second.lock();
    auto object = std::make_shared<LocalObject>(*this, binder, randomNumber());
    mLocalByBinder[binder.get()] = object;
    mLocalById[object->id()] = object;
    return object;
}

sp<BpHwBinder> ObjectTable::newProxy(const std::string& address, uint64_t id,
                                     wire::Binder::Client viaSender, Connection& from) {
    EventLoop::assertCurrent();
    Connection* direct = address == from.address ? &from : mConnections.to(address);
    wire::Binder::Client binder = viaSender;
    if (direct != nullptr && direct != &from) {
        auto request = direct->remoteProcess().objectRequest();
        request.setId(id);
        auto answer = request.send();
        binder = answer.getBinder();
        // Until its process has heard of us, the sender's reference keeps the object alive.
        mConnections.watch(answer.ignoreResult().attach(kj::mv(viaSender)));
    }
    // Made, used and freed on the event loop, but held by proxies on any thread.
    EventLoop& loop = mLoop;
    std::shared_ptr<RemoteObject> object(
            new RemoteObject(*this, address, id, kj::mv(binder)),
            [&loop](RemoteObject* last) { loop.post([last]() { delete last; }); });
    if (direct != nullptr) {
        object->peer = direct->peer;
        object->connection = kj::addRef(*direct);
        direct->objects.insert(object.get());
    }
    mRemoteObjects[{address, id}] = object.get();
    sp<BpHwBinder> proxy = new BpHwBinder(object);
    object->proxy = proxy;
    return proxy;
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
