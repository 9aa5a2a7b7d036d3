// SPDX-License-Identifier: Apache-2.0
// Messages of the transport as a peer makes them that keeps no rule of the endpoint's.

#pragma once

#include <string>

#include "ParcelContents.h"
#include "Transport.capnp.h"
#include "fuzz/support/ByteSource.h"

namespace orvo::fuzz {

namespace wire = android::hardware::transport::wire;

/** Where a made-up reference to a binder may point to. */
struct KnownObject {
    std::string address;  ///< of a process
    uint64_t id;          ///< of an object in it that this peer was told of
};

/** A reference that may name the known object, another one, a process that is not there, nobody. */
void fillBinder(const KnownObject& known, ByteSource& source, wire::BinderRef::Builder ref);

/** The contents as a message; null binders become references as above. */
void fillParcel(const android::hardware::transport::ParcelContents& contents,
                const KnownObject& known, ByteSource& source, wire::Parcel::Builder parcel);

}  // namespace orvo::fuzz
