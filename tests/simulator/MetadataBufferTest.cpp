// SPDX-License-Identifier: Apache-2.0
// Tests of MetadataBuffer: the packed layout, and bytes that are none of it.

#include "simulator/description/MetadataBuffer.h"

#include <cstring>
#include <random>

#include <gtest/gtest.h>

namespace orvo::simulator::testing {
namespace {

using android::hardware::camera::common::V1_0::CameraMetadataType;

std::vector<uint8_t> sample() {
    return packMetadata({{9, CameraMetadataType::INT64, std::vector<uint8_t>(24, 1)},
                         {2, CameraMetadataType::BYTE, {5, 6, 7}},
                         {4, CameraMetadataType::BYTE, {1, 2, 3, 4, 5}}});
}

TEST(MetadataBufferTest, EntriesComeBackInTheOrderOfTheirTags) {
    const auto buffer = sample();
    const auto entries = unpackMetadata(buffer.data(), buffer.size());
    ASSERT_TRUE(entries.has_value());
    ASSERT_EQ(3u, entries->size());
    EXPECT_EQ(2u, (*entries)[0].tag);
    EXPECT_EQ("5 6 7", (*entries)[0].toText());
    EXPECT_EQ(4u, (*entries)[1].tag);
    EXPECT_EQ("1 2 3 4 5", (*entries)[1].toText());
    EXPECT_EQ(9u, (*entries)[2].tag);
    EXPECT_EQ(3u, (*entries)[2].count());
}

TEST(MetadataBufferTest, TheHeaderTellsTheSizeAndWhereThingsStart) {
    const auto buffer = sample();
    uint32_t words[9];
    memcpy(words, buffer.data(), sizeof(words));
    EXPECT_EQ(buffer.size(), words[0]);
    EXPECT_EQ(1u, words[1]);            // version
    EXPECT_EQ(3u, words[3]);            // entries
    EXPECT_EQ(48u, words[5]);           // right after the header
    EXPECT_EQ(48u + 3 * 16, words[8]);  // then the values that fit in no entry
    EXPECT_EQ(8u + 24, words[6]);       // each at a multiple of 8
}

TEST(MetadataBufferTest, NoEntriesMakeABufferToo) {
    const auto buffer = packMetadata({});
    const auto entries = unpackMetadata(buffer.data(), buffer.size());
    ASSERT_TRUE(entries.has_value());
    EXPECT_TRUE(entries->empty());
}

TEST(MetadataBufferTest, AnEntryWithoutValuesComesBackWithoutThem) {
    const auto buffer = packMetadata({{3, CameraMetadataType::BYTE, {}}});
    const auto entries = unpackMetadata(buffer.data(), buffer.size());
    ASSERT_TRUE(entries.has_value());
    ASSERT_EQ(1u, entries->size());
    EXPECT_EQ(0u, (*entries)[0].count());
}

TEST(MetadataBufferTest, ATruncatedBufferIsNone) {
    const auto buffer = sample();
    for (size_t size = 0; size < buffer.size(); size++) {
        EXPECT_FALSE(unpackMetadata(buffer.data(), size).has_value()) << size;
    }
    EXPECT_FALSE(unpackMetadata(nullptr, 0).has_value());
}

TEST(MetadataBufferTest, DamagedBytesAreNeverReadOutOfBounds) {
    // Reads beyond the exactly sized copy are found by the sanitizers' builds.
    std::mt19937 random(1);
    for (int round = 0; round < 20000; round++) {
        auto buffer = sample();
        for (int i = 0; i < 3; i++) buffer[random() % buffer.size()] = random() & 0xff;
        const auto entries = unpackMetadata(buffer.data(), buffer.size());
        if (!entries) continue;
        for (const MetadataEntry& entry : *entries) {
            EXPECT_LE(entry.bytes.size(), buffer.size());
        }
    }
}

}  // namespace
}  // namespace orvo::simulator::testing
