// SPDX-License-Identifier: Apache-2.0
// Camera metadata: any bytes are a buffer or none, and what was unpacked packs to the same.

#include <algorithm>
#include <vector>

#include "fuzz/support/Require.h"
#include "simulator/description/MetadataBuffer.h"

using orvo::fuzz::require;
using orvo::simulator::MetadataEntry;
using orvo::simulator::packMetadata;
using orvo::simulator::unpackMetadata;

namespace {

bool precedes(const MetadataEntry& a, const MetadataEntry& b) {
    if (a.tag != b.tag) return a.tag < b.tag;
    return a.type != b.type ? a.type < b.type : a.bytes < b.bytes;
}

bool same(const MetadataEntry& a, const MetadataEntry& b) {
    return a.tag == b.tag && a.type == b.type && a.bytes == b.bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    auto entries = unpackMetadata(data, size);
    if (!entries) return 0;
    for (const MetadataEntry& entry : *entries) {
        (void)entry.toText();
        require(entry.bytes.size() <= size, "an entry is not larger than its buffer");
    }

    const std::vector<uint8_t> packed = packMetadata(*entries);
    auto again = unpackMetadata(packed.data(), packed.size());
    require(again.has_value(), "what was packed can be unpacked");
    std::sort(entries->begin(), entries->end(), precedes);
    std::sort(again->begin(), again->end(), precedes);
    require(std::equal(entries->begin(), entries->end(), again->begin(), again->end(), same),
            "entries survive packing");
    return 0;
}
