// SPDX-License-Identifier: Apache-2.0
// Parcels on their way across a connection, with the descriptors in them.

#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include "ObjectTable.h"
#include "ParcelMessage.h"

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

}  // namespace

void ObjectTable::encode(const ParcelContents& contents, Connection& to,
                         wire::Parcel::Builder parcel) {
    EventLoop::assertCurrent();
    encodeParcel(contents, parcel, encodeHandle,
                 [this, &to](const ParcelObject& object, wire::BinderRef::Builder ref) {
                     encode(object.binder, to, ref);
                 });
}

ParcelObject ObjectTable::decode(wire::Object::Reader reader, Connection& from) {
    EventLoop::assertCurrent();
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

kj::Promise<OwnedContents> ObjectTable::decode(wire::Parcel::Reader parcel, Connection& from) {
    EventLoop::assertCurrent();
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
