// SPDX-License-Identifier: Apache-2.0
// What crosses a connection: parcels, descriptors and references to binders.

#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include "Connection.h"
#include "Endpoint.h"
#include "LocalObject.h"
#include "ParcelMessage.h"
#include "Sockets.h"

namespace android {
namespace hardware {
namespace transport {

namespace {

constexpr kj::Duration kDescriptorPatience = 2 * kj::SECONDS;

/** Carries one descriptor to the other end. */
class DescriptorServer final : public wire::Descriptor::Server {
  public:
    explicit DescriptorServer(int fd) : mFd(fd) {}
    kj::Maybe<int> getFd() override { return mFd.get(); }

  private:
    const base::unique_fd mFd;
};

void encodeHandle(const native_handle_t* handle, wire::Handle::Builder builder) {
    builder.setPresent(handle != nullptr);
    if (handle == nullptr) return;
    auto descriptors = builder.initDescriptors(handle->numFds);
    for (int i = 0; i < handle->numFds; i++) {
        const int copy = fcntl(handle->data[i], F_DUPFD_CLOEXEC, 0);
        KJ_REQUIRE(copy >= 0, "no descriptor left", strerror(errno));
        descriptors.set(i, kj::heap<DescriptorServer>(copy));
    }
    auto ints = builder.initInts(handle->numInts);
    for (int i = 0; i < handle->numInts; i++) ints.set(i, handle->data[handle->numFds + i]);
}

/** The handle, with -1 for each descriptor; those follow. Throws if it is too large. */
OwnedNativeHandle decodeHandle(wire::Handle::Reader reader) {
    const auto descriptors = reader.getDescriptors();
    const auto ints = reader.getInts();
    KJ_REQUIRE(descriptors.size() <= ParcelContents::kMaxDescriptors, "too many descriptors");
    KJ_REQUIRE(ints.size() <= NATIVE_HANDLE_MAX_INTS, "too many ints");
    OwnedNativeHandle handle(native_handle_create(descriptors.size(), ints.size()));
    KJ_REQUIRE(handle != nullptr, "no memory for a handle");
    for (size_t i = 0; i < descriptors.size(); i++) handle->data[i] = -1;
    for (size_t i = 0; i < ints.size(); i++) handle->data[descriptors.size() + i] = ints[i];
    return handle;
}

/** Fetches the descriptors of a handle into it. */
void fetchDescriptors(wire::Handle::Reader reader, native_handle_t* handle, kj::Timer& timer,
                      kj::Vector<kj::Promise<void>>* fetches) {
    int index = 0;
    for (wire::Descriptor::Client descriptor : reader.getDescriptors()) {
        auto fetch = descriptor.getFd().then([handle, index](kj::Maybe<int> fd) {
            // The descriptor belongs to the message and is closed with it.
            KJ_IF_MAYBE (open, fd) {
                handle->data[index] = fcntl(*open, F_DUPFD_CLOEXEC, 0);
            }
            KJ_REQUIRE(handle->data[index] >= 0, "a descriptor did not arrive");
        });
        // An honest peer's descriptors come with the message. One that only promises them must not
        // hold up the calls that wait behind this one.
        auto inTime = timer.timeoutAfter(kDescriptorPatience, kj::mv(fetch));
        fetches->add(inTime.attach(kj::mv(descriptor)));
        index++;
    }
}

ParcelObject decodeBuffer(capnp::Data::Reader bytes) {
    ParcelObject object;
    object.kind = ParcelObject::Kind::BUFFER;
    object.length = bytes.size();
    object.storage = ParcelContents::copyOf(bytes.begin(), bytes.size());
    object.buffer = object.storage.get();
    return object;
}

int32_t nextHandle() {
    static std::atomic<int32_t> last{0};
    return ++last;
}

}  // namespace

RemoteObject::RemoteObject(Endpoint& knownTo, std::string livesAt, uint64_t number,
                           wire::Binder::Client client)
    : endpoint(knownTo),
      address(std::move(livesAt)),
      id(number),
      handle(nextHandle()),
      binder(kj::mv(client)) {}

RemoteObject::~RemoteObject() {
    auto found = endpoint.mRemoteObjects.find({address, id});
    if (found != endpoint.mRemoteObjects.end() && found->second == this) {
        endpoint.mRemoteObjects.erase(found);
    }
    KJ_IF_MAYBE (open, connection) {
        (*open)->objects.erase(this);
    }
}

std::shared_ptr<LocalObject> Endpoint::share(const sp<BHwBinder>& binder) {
    auto found = mLocalByBinder.find(binder.get());
    if (found != mLocalByBinder.end()) return found->second.lock();
    auto object = std::make_shared<LocalObject>(*this, binder, randomNumber());
    mLocalByBinder[binder.get()] = object;
    mLocalById[object->id()] = object;
    return object;
}

kj::Maybe<wire::Binder::Client> Endpoint::localObject(uint64_t id, Connection& to) {
    auto found = mLocalById.find(id);
    if (found == mLocalById.end()) return nullptr;
    return wire::Binder::Client(kj::heap<ObjectServer>(*this, to, found->second.lock()));
}

void Endpoint::encode(const sp<IBinder>& binder, Connection& to, wire::BinderRef::Builder ref) {
    if (binder == nullptr) return;
    if (BHwBinder* local = binder->localBinder(); local != nullptr) {
        std::shared_ptr<LocalObject> object = share(local);
        ref.setAddress(mAddress);
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

void Endpoint::encode(const ParcelContents& contents, Connection& to,
                      wire::Parcel::Builder parcel) {
    encodeParcel(contents, parcel, encodeHandle,
                 [this, &to](const ParcelObject& object, wire::BinderRef::Builder ref) {
                     encode(object.binder, to, ref);
                 });
}

sp<BpHwBinder> Endpoint::newProxy(const std::string& address, uint64_t id,
                                  wire::Binder::Client viaSender, Connection& from) {
    Connection* direct = address == from.address ? &from : connectionTo(address);
    wire::Binder::Client binder = viaSender;
    if (direct != nullptr && direct != &from) {
        auto request = direct->remoteProcess().objectRequest();
        request.setId(id);
        auto answer = request.send();
        binder = answer.getBinder();
        // Until its process has heard of us, the sender's reference keeps the object alive.
        watch(answer.ignoreResult().attach(kj::mv(viaSender)));
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

sp<IBinder> Endpoint::decode(wire::BinderRef::Reader ref, Connection& from) {
    const std::string address = ref.getAddress().cStr();
    if (address.empty()) return nullptr;
    KJ_REQUIRE(isAddress(address), "not the name of a socket");
    if (address == mAddress) {
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

ParcelObject Endpoint::decode(wire::Object::Reader reader, Connection& from) {
    ParcelObject object;
    switch (reader.which()) {
        case wire::Object::NULL_:
            break;
        case wire::Object::BUFFER:
            object = decodeBuffer(reader.getBuffer());
            break;
        case wire::Object::HANDLE:
            object.kind = ParcelObject::Kind::HANDLE;
            if (!reader.getHandle().getPresent()) break;
            object.ownedHandle = decodeHandle(reader.getHandle());
            object.handle = object.ownedHandle.get();
            break;
        case wire::Object::BINDER:
            object.kind = ParcelObject::Kind::BINDER;
            object.binder = decode(reader.getBinder(), from);
            break;
        default:
            KJ_FAIL_REQUIRE("an object of a kind that does not exist");
    }
    object.position = reader.getPosition();
    if (reader.getEmbedded()) {
        object.embedding = Embedding{reader.getParent(), reader.getParentOffset()};
    }
    return object;
}

kj::Promise<OwnedContents> Endpoint::decode(wire::Parcel::Reader parcel, Connection& from) {
    OwnedContents contents(new ParcelContents);
    const auto flat = parcel.getFlat();
    const auto objects = parcel.getObjects();
    // A few bytes can claim millions of objects: nothing is made of them before they are counted.
    KJ_REQUIRE(objects.size() <= flat.size() / sizeof(uint32_t), "objects without a place");
    KJ_REQUIRE(objects.size() <= ParcelContents::kMaxObjects, "too many objects");
    contents->flat.assign(flat.begin(), flat.end());
    size_t descriptors = 0;
    size_t bytes = 0;
    for (wire::Object::Reader reader : objects) {
        ParcelObject object = decode(reader, from);
        bytes += object.length;
        if (object.handle != nullptr) descriptors += object.handle->numFds;
        KJ_REQUIRE(bytes <= ParcelContents::kMaxPayload, "more bytes than one call can carry");
        KJ_REQUIRE(descriptors <= ParcelContents::kMaxDescriptors, "too many descriptors");
        contents->objects.push_back(std::move(object));
    }
    KJ_REQUIRE(contents->relocate(), "a parcel whose objects do not fit together");

    kj::Vector<kj::Promise<void>> fetches;
    for (size_t i = 0; i < contents->objects.size(); i++) {
        native_handle_t* handle = contents->objects[i].ownedHandle.get();
        if (handle == nullptr) continue;
        fetchDescriptors(objects[i].getHandle(), handle, mLoop.io().getTimer(), &fetches);
    }
    return kj::joinPromises(fetches.releaseAsArray())
            .then([contents = std::move(contents)]() mutable { return std::move(contents); });
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
