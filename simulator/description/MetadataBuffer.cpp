// SPDX-License-Identifier: Apache-2.0
// MetadataBuffer: writes and checks the packed layout of camera metadata.

#include "simulator/description/MetadataBuffer.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <utility>

using android::hardware::camera::common::V1_0::CameraMetadataType;

namespace orvo::simulator {

namespace {

constexpr uint32_t kVersion = 1;
constexpr size_t kInlineBytes = 4;
constexpr size_t kValueAlignment = 8;

struct Header {
    uint32_t size;
    uint32_t version;
    uint32_t flags;
    uint32_t entryCount;
    uint32_t entryCapacity;
    uint32_t entriesStart;
    uint32_t dataCount;
    uint32_t dataCapacity;
    uint32_t dataStart;
    uint32_t padding;
    uint64_t vendorId;
};
static_assert(sizeof(Header) == 48);

struct Entry {
    uint32_t tag;
    uint32_t count;
    uint32_t valueOrOffset;
    uint8_t type;
    uint8_t reserved[3];
};
static_assert(sizeof(Entry) == 16);

size_t aligned(size_t size) {
    return (size + kValueAlignment - 1) / kValueAlignment * kValueAlignment;
}

template <typename T>
void printValues(const std::vector<uint8_t>& bytes, std::ostream& out) {
    for (size_t at = 0; at + sizeof(T) <= bytes.size(); at += sizeof(T)) {
        T value;
        memcpy(&value, bytes.data() + at, sizeof(T));
        out << (at == 0 ? "" : " ") << +value;
    }
}

void printRationals(const std::vector<uint8_t>& bytes, std::ostream& out) {
    for (size_t at = 0; at + 8 <= bytes.size(); at += 8) {
        int32_t parts[2];
        memcpy(parts, bytes.data() + at, sizeof(parts));
        out << (at == 0 ? "" : " ") << parts[0] << "/" << parts[1];
    }
}

/** Nothing if the entry does not lie inside the buffer. */
std::optional<MetadataEntry> unpackEntry(const uint8_t* data, const Header& header,
                                         const Entry& packed) {
    if (packed.type > static_cast<uint8_t>(CameraMetadataType::RATIONAL)) return std::nullopt;
    const auto type = static_cast<CameraMetadataType>(packed.type);
    const uint64_t bytes = uint64_t{packed.count} * metadataSizeOf(type);
    const uint8_t* values = reinterpret_cast<const uint8_t*>(&packed.valueOrOffset);
    if (bytes > kInlineBytes) {
        if (packed.valueOrOffset + bytes > header.dataCount) return std::nullopt;
        values = data + header.dataStart + packed.valueOrOffset;
    }
    return MetadataEntry{packed.tag, type, {values, values + bytes}};
}

bool isSound(const Header& header, size_t size) {
    return header.version == kVersion && header.size == size && header.dataStart <= size &&
           header.dataCount <= size - header.dataStart && header.entriesStart <= size &&
           header.entryCount <= (size - header.entriesStart) / sizeof(Entry);
}

}  // namespace

size_t metadataSizeOf(CameraMetadataType type) {
    switch (type) {
        case CameraMetadataType::BYTE:
            return 1;
        case CameraMetadataType::INT32:
        case CameraMetadataType::FLOAT:
            return 4;
        case CameraMetadataType::INT64:
        case CameraMetadataType::DOUBLE:
        case CameraMetadataType::RATIONAL:
            return 8;
    }
    return 1;
}

size_t MetadataEntry::count() const {
    return bytes.size() / metadataSizeOf(type);
}

std::string MetadataEntry::toText() const {
    std::ostringstream out;
    switch (type) {
        case CameraMetadataType::BYTE:
            printValues<uint8_t>(bytes, out);
            break;
        case CameraMetadataType::INT32:
            printValues<int32_t>(bytes, out);
            break;
        case CameraMetadataType::FLOAT:
            printValues<float>(bytes, out);
            break;
        case CameraMetadataType::INT64:
            printValues<int64_t>(bytes, out);
            break;
        case CameraMetadataType::DOUBLE:
            printValues<double>(bytes, out);
            break;
        case CameraMetadataType::RATIONAL:
            printRationals(bytes, out);
            break;
    }
    return out.str();
}

std::vector<uint8_t> packMetadata(std::vector<MetadataEntry> entries) {
    std::sort(entries.begin(), entries.end(),
              [](const MetadataEntry& a, const MetadataEntry& b) { return a.tag < b.tag; });
    std::vector<Entry> packed;
    std::vector<uint8_t> values;
    for (const MetadataEntry& entry : entries) {
        Entry next{};
        next.tag = entry.tag;
        next.count = static_cast<uint32_t>(entry.count());
        next.type = static_cast<uint8_t>(entry.type);
        if (entry.bytes.size() <= kInlineBytes) {
            std::copy(entry.bytes.begin(), entry.bytes.end(),
                      reinterpret_cast<uint8_t*>(&next.valueOrOffset));
        } else {
            next.valueOrOffset = static_cast<uint32_t>(values.size());
            values.insert(values.end(), entry.bytes.begin(), entry.bytes.end());
            values.resize(aligned(values.size()));
        }
        packed.push_back(next);
    }
    const size_t entryBytes = packed.size() * sizeof(Entry);
    Header header{};
    header.version = kVersion;
    header.entryCount = header.entryCapacity = static_cast<uint32_t>(packed.size());
    header.entriesStart = sizeof(Header);
    header.dataCount = header.dataCapacity = static_cast<uint32_t>(values.size());
    header.dataStart = static_cast<uint32_t>(sizeof(Header) + entryBytes);
    header.size = static_cast<uint32_t>(header.dataStart + values.size());
    std::vector<uint8_t> buffer(header.size);
    memcpy(buffer.data(), &header, sizeof(header));
    if (!packed.empty()) memcpy(buffer.data() + header.entriesStart, packed.data(), entryBytes);
    if (!values.empty()) memcpy(buffer.data() + header.dataStart, values.data(), values.size());
    return buffer;
}

std::optional<std::vector<MetadataEntry>> unpackMetadata(const uint8_t* data, size_t size) {
    Header header;
    if (data == nullptr || size < sizeof(header)) return std::nullopt;
    memcpy(&header, data, sizeof(header));
    if (!isSound(header, size)) return std::nullopt;
    std::vector<MetadataEntry> entries;
    entries.reserve(header.entryCount);
    for (uint32_t i = 0; i < header.entryCount; i++) {
        Entry packed;
        memcpy(&packed, data + header.entriesStart + i * sizeof(Entry), sizeof(packed));
        auto entry = unpackEntry(data, header, packed);
        if (!entry) return std::nullopt;
        entries.push_back(std::move(*entry));
    }
    return entries;
}

}  // namespace orvo::simulator
