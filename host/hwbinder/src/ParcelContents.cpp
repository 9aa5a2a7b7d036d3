// SPDX-License-Identifier: Apache-2.0
// Appending, copying and checking the contents of parcels.

#include "ParcelContents.h"

#include <fcntl.h>
#include <string.h>

#include <algorithm>

#include "EventLoop.h"

namespace android {
namespace hardware {
namespace transport {

namespace {

constexpr size_t kPointerSize = 8;
constexpr size_t kPlaceSize = sizeof(uint32_t);

/** Null if a descriptor cannot be duplicated. No program that is started meanwhile inherits one. */
OwnedNativeHandle duplicate(const native_handle_t& handle) {
    OwnedNativeHandle copy(native_handle_create(handle.numFds, handle.numInts));
    if (copy == nullptr) return nullptr;
    std::fill_n(copy->data, handle.numFds, -1);
    for (int i = 0; i < handle.numFds; i++) {
        copy->data[i] = fcntl(handle.data[i], F_DUPFD_CLOEXEC, 0);
        if (copy->data[i] < 0) return nullptr;
    }
    std::copy_n(handle.data + handle.numFds, handle.numInts, copy->data + handle.numFds);
    return copy;
}

}  // namespace

void NativeHandleDeleter::operator()(native_handle_t* handle) const {
    native_handle_close(handle);
    native_handle_delete(handle);
}

void ContentsDeleter::operator()(ParcelContents* contents) const {
    for (ParcelObject& object : contents->objects) {
        const bool isLocal = object.binder != nullptr && object.binder->localBinder() != nullptr;
        if (isLocal) EventLoop::release(std::move(object.binder));
    }
    delete contents;
}

status_t ParcelContents::append(ParcelObject object, size_t* number) {
    if (object.embedding && !canEmbed(*object.embedding)) return BAD_VALUE;

    object.position = flat.size();
    // The place keeps values and objects in one order; its content only helps who looks at a dump.
    const uint32_t place = objects.size();
    const auto* bytes = reinterpret_cast<const uint8_t*>(&place);
    flat.insert(flat.end(), bytes, bytes + kPlaceSize);
    if (number != nullptr) *number = objects.size();
    objects.push_back(std::move(object));
    return OK;
}

const ParcelObject* ParcelContents::at(size_t position) const {
    // Objects are kept in the order of their places.
    auto found = std::lower_bound(
            objects.begin(), objects.end(), position,
            [](const ParcelObject& object, size_t wanted) { return object.position < wanted; });
    if (found == objects.end() || found->position != position) return nullptr;
    return &*found;
}

bool ParcelContents::canEmbed(const Embedding& embedding) const {
    if (embedding.parent >= objects.size()) return false;
    const ParcelObject& parent = objects[embedding.parent];
    return parent.kind == ParcelObject::Kind::BUFFER && parent.length >= kPointerSize &&
           embedding.offset <= parent.length - kPointerSize;
}

std::unique_ptr<uint64_t[]> ParcelContents::copyOf(const void* buffer, size_t length) {
    // The last word is zeroed because the copy may end inside it.
    const size_t words = std::max<size_t>(1, (length + 7) / 8);
    std::unique_ptr<uint64_t[]> copy(new uint64_t[words]);
    copy[words - 1] = 0;
    if (length > 0) memcpy(copy.get(), buffer, length);
    return copy;
}

size_t ParcelContents::payloadSize() const {
    size_t size = flat.size();
    for (const ParcelObject& object : objects) {
        size += kObjectOverhead;
        if (object.kind == ParcelObject::Kind::BUFFER) size += object.length;
        if (size > kMaxPayload) break;
    }
    return size;
}

size_t ParcelContents::descriptorCount() const {
    size_t count = 0;
    for (const ParcelObject& object : objects) {
        if (object.handle != nullptr) count += object.handle->numFds;
    }
    return count;
}

OwnedContents ParcelContents::seal(status_t* status) const {
    if (payloadSize() > kMaxPayload || descriptorCount() > kMaxDescriptors) {
        *status = FAILED_TRANSACTION;
        return nullptr;
    }
    OwnedContents sealed(new ParcelContents);
    sealed->flat = flat;
    sealed->objects.reserve(objects.size());
    for (const ParcelObject& object : objects) {
        ParcelObject& copy = sealed->objects.emplace_back();
        copy.kind = object.kind;
        copy.position = object.position;
        copy.embedding = object.embedding;
        copy.binder = object.binder;
        if (object.kind == ParcelObject::Kind::BUFFER) {
            copy.storage = copyOf(object.buffer, object.length);
            copy.buffer = copy.storage.get();
            copy.length = object.length;
        }
        if (object.handle != nullptr) {
            copy.ownedHandle = duplicate(*object.handle);
            copy.handle = copy.ownedHandle.get();
            if (copy.handle == nullptr) {
                *status = NO_MEMORY;
                return nullptr;
            }
        }
    }
    *status = OK;
    return sealed;
}

bool ParcelContents::relocate() {
    if (payloadSize() > kMaxPayload) return false;
    size_t nextFree = 0;
    for (size_t number = 0; number < objects.size(); number++) {
        const ParcelObject& object = objects[number];
        if (object.position < nextFree || object.position % kPlaceSize != 0) return false;
        if (flat.size() < kPlaceSize || object.position > flat.size() - kPlaceSize) return false;
        nextFree = object.position + kPlaceSize;

        if (!object.embedding) continue;
        if (object.kind == ParcelObject::Kind::BINDER) return false;
        if (object.embedding->parent >= number || !canEmbed(*object.embedding)) return false;
        const ParcelObject& parent = objects[object.embedding->parent];
        const void* address = nullptr;
        if (object.kind == ParcelObject::Kind::BUFFER) address = object.buffer;
        if (object.kind == ParcelObject::Kind::HANDLE) address = object.handle;
        const uint64_t pointer = reinterpret_cast<uintptr_t>(address);
        memcpy(reinterpret_cast<uint8_t*>(parent.storage.get()) + object.embedding->offset,
               &pointer, kPointerSize);
    }
    return true;
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
