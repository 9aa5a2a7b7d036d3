// SPDX-License-Identifier: Apache-2.0
// Changes the contents of parcels.

#include "fuzz/transport/Spoiling.h"

#include <fcntl.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <utility>

#include "fuzz/support/Require.h"

namespace orvo::fuzz {

using android::hardware::transport::Embedding;
using android::hardware::transport::OwnedContents;
using android::hardware::transport::OwnedNativeHandle;
using android::hardware::transport::ParcelContents;
using android::hardware::transport::ParcelObject;

namespace {

constexpr size_t kMostObjects = 64;
constexpr size_t kMostFlatBytes = 4096;

/** Often near what makes sense, now and then anything. */
uint64_t chooseSize(ByteSource& source) {
    switch (source.below(4)) {
        case 0:
            return source.number<uint64_t>();
        case 1:
            return source.number<uint32_t>();
        default:
            return source.number<uint8_t>();
    }
}

/** Writes the bytes over some of the existing ones. */
void overwrite(void* bytes, size_t length, size_t offset, const std::string& with) {
    if (offset >= length) return;
    memcpy(static_cast<uint8_t*>(bytes) + offset, with.data(),
           std::min(with.size(), length - offset));
}

void setBuffer(ParcelObject* object, const std::string& bytes) {
    object->kind = ParcelObject::Kind::BUFFER;
    object->length = bytes.size();
    object->storage = ParcelContents::copyOf(bytes.data(), bytes.size());
    object->buffer = object->storage.get();
}

void setHandle(ParcelObject* object, size_t descriptors, size_t ints) {
    object->kind = ParcelObject::Kind::HANDLE;
    OwnedNativeHandle handle(native_handle_create(descriptors, ints));
    for (size_t i = 0; i < descriptors; i++) {
        handle->data[i] = open("/dev/null", O_RDWR | O_CLOEXEC);
        require(handle->data[i] >= 0, "a descriptor is free");
    }
    for (size_t i = 0; i < ints; i++) handle->data[descriptors + i] = static_cast<int>(i);
    object->ownedHandle = std::move(handle);
    object->handle = object->ownedHandle.get();
}

/** Another kind of object in the same place, hanging from the same parent. */
void changeKind(ParcelObject* object, ByteSource& source) {
    ParcelObject changed;
    changed.position = object->position;
    changed.embedding = object->embedding;
    switch (source.below(4)) {
        case 0:
            break;
        case 1:
            setBuffer(&changed, source.text());
            break;
        case 2:
            setHandle(&changed, source.below(3), source.below(4));
            break;
        default:
            changed.kind = source.flag() ? ParcelObject::Kind::BINDER : ParcelObject::Kind::HANDLE;
    }
    *object = std::move(changed);
}

void changeObject(ParcelObject* object, ByteSource& source) {
    switch (source.below(5)) {
        case 0:
            object->position = chooseSize(source);
            break;
        case 1:
            object->embedding = Embedding{chooseSize(source), chooseSize(source)};
            break;
        case 2:
            object->embedding.reset();
            break;
        case 3: {
            const size_t offset = source.number<uint8_t>();
            const std::string bytes = source.text(16);
            if (object->storage != nullptr) {
                overwrite(object->storage.get(), object->length, offset, bytes);
            }
            break;
        }
        default:
            changeKind(object, source);
    }
}

void changeOnce(ParcelContents* contents, ByteSource& source) {
    std::vector<ParcelObject>& objects = contents->objects;
    switch (source.below(6)) {
        case 0: {
            const size_t offset = source.number<uint16_t>();
            overwrite(contents->flat.data(), contents->flat.size(), offset, source.text(16));
            break;
        }
        case 1:
            contents->flat.resize(source.below(kMostFlatBytes));
            break;
        case 2:
            // A further object behind the others, with a place of its own.
            if (objects.size() >= kMostObjects) break;
            objects.emplace_back().position = contents->flat.size();
            contents->flat.resize(contents->flat.size() + sizeof(uint32_t));
            changeKind(&objects.back(), source);
            break;
        case 3:
            if (!objects.empty()) objects.erase(objects.begin() + source.below(objects.size()));
            break;
        default:
            if (!objects.empty()) changeObject(&objects[source.below(objects.size())], source);
    }
}

}  // namespace

OwnedContents spoil(const ParcelContents& honest, ByteSource& source) {
    android::status_t status = android::OK;
    OwnedContents contents = honest.seal(&status);
    require(status == android::OK, "honest contents can be copied");
    while (!source.empty() && source.below(16) != 0) changeOnce(contents.get(), source);
    return contents;
}

}  // namespace orvo::fuzz
