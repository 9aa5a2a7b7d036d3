// SPDX-License-Identifier: Apache-2.0
// ParcelMessage: the part of a message that a parcel's content becomes.

#pragma once

#include "ParcelContents.h"
#include "Transport.capnp.h"

namespace android {
namespace hardware {
namespace transport {

/**
 * Copies the content of a parcel into a message. What refers to other things is left to the caller:
 * `encodeHandle(const native_handle_t*, wire::Handle::Builder)`, with null for a null handle, and
 * `encodeBinder(const ParcelObject&, wire::BinderRef::Builder)`.
 */
template <typename EncodeHandle, typename EncodeBinder>
void encodeParcel(const ParcelContents& contents, wire::Parcel::Builder parcel,
                  const EncodeHandle& encodeHandle, const EncodeBinder& encodeBinder) {
    parcel.setFlat(kj::arrayPtr(contents.flat.data(), contents.flat.size()));
    auto objects = parcel.initObjects(contents.objects.size());
    for (size_t i = 0; i < contents.objects.size(); i++) {
        const ParcelObject& object = contents.objects[i];
        wire::Object::Builder builder = objects[i];
        builder.setPosition(object.position);
        if (object.embedding) {
            builder.setEmbedded(true);
            builder.setParent(object.embedding->parent);
            builder.setParentOffset(object.embedding->offset);
        }
        switch (object.kind) {
            case ParcelObject::Kind::NULL_BUFFER:
                builder.setNull();
                break;
            case ParcelObject::Kind::BUFFER:
                builder.setBuffer(
                        kj::arrayPtr(static_cast<const kj::byte*>(object.buffer), object.length));
                break;
            case ParcelObject::Kind::HANDLE:
                encodeHandle(object.handle, builder.initHandle());
                break;
            case ParcelObject::Kind::BINDER:
                encodeBinder(object, builder.initBinder());
                break;
        }
    }
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
