// SPDX-License-Identifier: Apache-2.0
// Spoiling: what a dishonest peer makes of an honest parcel.

#pragma once

#include "ParcelContents.h"
#include "fuzz/support/ByteSource.h"

namespace orvo::fuzz {

/**
 * A copy of `honest` with the changes that `source` asks for, until it asks for no more or is used
 * up. Keeps only what holds for everything that was decoded from a message: a buffer owns its
 * bytes, and nothing else has any. `relocate()` is left to the caller.
 */
android::hardware::transport::OwnedContents spoil(
        const android::hardware::transport::ParcelContents& honest, ByteSource& source);

}  // namespace orvo::fuzz
