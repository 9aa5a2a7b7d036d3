// SPDX-License-Identifier: Apache-2.0
// MetadataBuffer: camera metadata in the packed layout that crosses the camera interfaces.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <android/hardware/camera/common/1.0/types.h>

namespace orvo::simulator {

/** One entry: a tag with its values, as the bytes of an array of the type. */
struct MetadataEntry {
    uint32_t tag;
    android::hardware::camera::common::V1_0::CameraMetadataType type;
    std::vector<uint8_t> bytes;

    /** How many values the bytes hold. */
    size_t count() const;
    /** The values for a person, such as "1.5 2"; rationals as "1/3". */
    std::string toText() const;
};

/** Bytes of one value. */
size_t metadataSizeOf(android::hardware::camera::common::V1_0::CameraMetadataType type);

/**
 * Packs entries into one buffer: a header, then 16 bytes for each entry in ascending order of
 * tags, then the values that are longer than 4 bytes, each at a multiple of 8.
 */
std::vector<uint8_t> packMetadata(std::vector<MetadataEntry> entries);

/**
 * Unpacks a buffer of that layout.
 *
 * @return nothing if the bytes are no such buffer: every count and offset is checked, so that any
 *         bytes may be given.
 */
std::optional<std::vector<MetadataEntry>> unpackMetadata(const uint8_t* data, size_t size);

}  // namespace orvo::simulator
