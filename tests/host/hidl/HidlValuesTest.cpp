// SPDX-License-Identifier: Apache-2.0
// Arrays, versions, enums, sizes, and how values are printed.

#include <algorithm>
#include <array>
#include <iterator>
#include <new>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hidl/MQDescriptor.h>

namespace sample {

enum class Kind : uint32_t { ONE = 1, FOUR = 4 };

struct Named {
    int value;
};

std::string toString(const Named& named) {
    return "Named#" + std::to_string(named.value);
}

}  // namespace sample

template <>
constexpr std::array<sample::Kind, 2> android::hardware::details::hidl_enum_values<sample::Kind> = {
        sample::Kind::ONE, sample::Kind::FOUR};

namespace {

using namespace android::hardware;
using android::sp;
using android::hardware::details::hidl_pointer;
using android::hardware::details::toHexString;

/** What an object of that type leaves of the bytes that were in its place before. */
template <typename T, typename... Arguments>
size_t bytesLeftBehind(const Arguments&... arguments) {
    constexpr unsigned char kBefore = 0xA5;
    alignas(T) unsigned char place[sizeof(T)];
    std::fill(std::begin(place), std::end(place), kBefore);
    T* const object = new (place) T(arguments...);
    const size_t left = std::count(std::begin(place), std::end(place), kBefore);
    object->~T();
    return left;
}

/** They are sent to other processes as they are. */
TEST(HidlLayoutTest, NothingOfWhatWasThereBeforeStaysInAnObject) {
    EXPECT_EQ(0u, bytesLeftBehind<hidl_string>("text"));
    EXPECT_EQ(0u, bytesLeftBehind<hidl_string>());
    EXPECT_EQ(0u, bytesLeftBehind<hidl_vec<hidl_string>>());
    EXPECT_EQ(0u, bytesLeftBehind<hidl_handle>());
    EXPECT_EQ(0u, bytesLeftBehind<hidl_memory>());
}

TEST(HidlLayoutTest, SizesAreTheSameInEveryProcess) {
    EXPECT_EQ(16u, sizeof(hidl_string));
    EXPECT_EQ(16u, sizeof(hidl_vec<char>));
    EXPECT_EQ(16u, sizeof(hidl_handle));
    EXPECT_EQ(40u, sizeof(hidl_memory));
    EXPECT_EQ(4u, sizeof(hidl_version));
    EXPECT_EQ(24u, sizeof(GrantorDescriptor));
    EXPECT_EQ(32u, (sizeof(MQDescriptor<char, kSynchronizedReadWrite>)));
    EXPECT_EQ(6u * 4, (sizeof(hidl_array<int32_t, 2, 3>)));
    EXPECT_EQ(8u, sizeof(hidl_pointer<char>));
}

TEST(HidlLayoutTest, PointersLieWhereTheTransportPatchesThem) {
    EXPECT_EQ(0u, hidl_string::kOffsetOfBuffer);
    EXPECT_EQ(0u, hidl_vec<int>::kOffsetOfBuffer);
    EXPECT_EQ(0u, hidl_handle::kOffsetOfNativeHandle);
    EXPECT_EQ(0u, hidl_memory::kOffsetOfHandle);
    EXPECT_EQ(24u, hidl_memory::kOffsetOfName);
    EXPECT_EQ(0u, MQDescriptorSync<int>::kOffsetOfGrantors);
    EXPECT_EQ(16u, MQDescriptorSync<int>::kOffsetOfHandle);
}

TEST(HidlPointerTest, APointerStartsAsNullAndIsNullAfterAMove) {
    int value = 5;
    hidl_pointer<int> pointer;
    EXPECT_EQ(nullptr, static_cast<int*>(pointer));
    pointer = &value;
    hidl_pointer<int> copy(pointer);
    hidl_pointer<int> moved(std::move(pointer));
    EXPECT_EQ(nullptr, static_cast<int*>(pointer));
    EXPECT_EQ(&value, static_cast<void*>(copy));
    EXPECT_EQ(5, *moved);
    EXPECT_EQ(5, moved[0]);
    copy = std::move(moved);
    EXPECT_EQ(nullptr, static_cast<int*>(moved));
}

TEST(HidlArrayTest, ElementsAreReadAndWritten) {
    const int32_t raw[] = {1, 2, 3};
    hidl_array<int32_t, 3> array(raw);
    array[1] = 7;
    EXPECT_EQ(7, array[1]);
    EXPECT_EQ(3u, array.size());
    EXPECT_EQ(3u, array.elementCount());
    EXPECT_EQ(array.data() + 2, &array[2]);
    const int32_t* pointer = raw;
    EXPECT_EQ(1, (hidl_array<int32_t, 3>(pointer))[0]);
}

TEST(HidlArrayTest, SeveralDimensionsLieRowByRow) {
    const int32_t raw[] = {0, 1, 2, 3, 4, 5};
    hidl_array<int32_t, 2, 3> array(raw);
    EXPECT_EQ(4, array[1][1]);
    array[1][2] = 9;
    EXPECT_EQ(9, array.data()[5]);
    EXPECT_EQ(std::make_tuple(size_t{2}, size_t{3}), array.size());
    EXPECT_EQ(6u, array.elementCount());
    const hidl_array<int32_t, 2, 3>& view = array;
    EXPECT_EQ(9, view[1][2]);
}

TEST(HidlArrayTest, StdArraysGoInAndOut) {
    const std::array<std::array<int32_t, 3>, 2> nested = {{{0, 1, 2}, {3, 4, 5}}};
    const hidl_array<int32_t, 2, 3> array(nested);
    EXPECT_EQ(5, array[1][2]);
    const std::array<std::array<int32_t, 3>, 2> back = array;
    EXPECT_EQ(nested, back);
    hidl_array<int32_t, 2, 3> other;
    other[0] = nested[1];
    EXPECT_EQ(4, other[0][1]);
}

TEST(HidlArrayTest, ArraysAreComparedByElements) {
    const hidl_array<uint8_t, 2> a(std::array<uint8_t, 2>{1, 2});
    const hidl_array<uint8_t, 2> b(std::array<uint8_t, 2>{1, 3});
    EXPECT_TRUE(a == a);
    EXPECT_TRUE(a != b);
}

TEST(HidlVersionTest, VersionsAreOrderedByMajorThenMinor) {
    constexpr hidl_version version = make_hidl_version(2, 4);
    static_assert(version.get_major() == 2 && version.get_minor() == 4, "parts");
    EXPECT_TRUE(version == hidl_version(2, 4));
    EXPECT_TRUE(version != hidl_version(4, 2));
    EXPECT_TRUE(version < hidl_version(2, 5) && version < hidl_version(3, 0));
    EXPECT_TRUE(version > hidl_version(1, 9));
    EXPECT_TRUE(version <= version && version >= version);
}

TEST(HidlEnumTest, ARangeVisitsEveryValueInOrder) {
    std::vector<sample::Kind> forwards;
    for (sample::Kind kind : hidl_enum_range<sample::Kind>()) forwards.push_back(kind);
    EXPECT_EQ((std::vector<sample::Kind>{sample::Kind::ONE, sample::Kind::FOUR}), forwards);
    const hidl_enum_range<sample::Kind> range;
    EXPECT_EQ(sample::Kind::FOUR, *range.rbegin());
    EXPECT_EQ(2, range.cend() - range.cbegin());
    EXPECT_EQ(2, range.crend() - range.crbegin());
    static_assert(std::is_same<hidl_bitfield<sample::Kind>, uint32_t>::value, "bit field");
}

TEST(ToStringTest, NumbersArePrintedAsNumbers) {
    EXPECT_EQ("1", toString(true));
    EXPECT_EQ("0", toString(false));
    EXPECT_EQ("65", toString(uint8_t{65}));
    EXPECT_EQ("-5", toString(int64_t{-5}));
    EXPECT_EQ(std::to_string(1.5), toString(1.5));
}

TEST(ToStringTest, PointersArePrintedInHexadecimal) {
    EXPECT_EQ("0", toString(static_cast<const void*>(nullptr)));
    EXPECT_EQ("0x1f", toString(reinterpret_cast<const void*>(0x1f)));
    EXPECT_EQ("0", toString(hidl_handle()));
    EXPECT_EQ("death_recipient@0", toString(sp<hidl_death_recipient>()));
}

TEST(ToStringTest, HexadecimalNumbersOfEightBitsAreNoCharacters) {
    EXPECT_EQ("0x41", toHexString(uint8_t{0x41}));
    EXPECT_EQ("41", toHexString(uint8_t{0x41}, false));
    EXPECT_EQ("0", toHexString(0));
    EXPECT_EQ("0x80000000", toHexString(0x80000000u));
}

TEST(ToStringTest, TextIsQuoted) {
    EXPECT_EQ("\"text\"", toString(hidl_string("text")));
}

TEST(ToStringTest, MemoryIsPrintedWithItsParts) {
    EXPECT_EQ("memory {.name = \"\", .size = 0, .handle = 0}", toString(hidl_memory()));
}

TEST(ToStringTest, VectorsArePrintedWithTheirLength) {
    EXPECT_EQ("[3]{1, 2, 3}", toString(hidl_vec<int>{1, 2, 3}));
    EXPECT_EQ("[0]{}", toString(hidl_vec<int>()));
    EXPECT_EQ("[2]{\"a\", \"b\"}", toString(hidl_vec<hidl_string>{"a", "b"}));
    EXPECT_EQ("[1]{[1]{7}}", toString(hidl_vec<hidl_vec<uint8_t>>{{7}}));
    EXPECT_EQ("[1]{Named#3}", toString(hidl_vec<sample::Named>{{3}}));
}

TEST(ToStringTest, ArraysArePrintedWithAllTheirLengths) {
    EXPECT_EQ("[2]{7, 255}", toString(hidl_array<uint8_t, 2>(std::array<uint8_t, 2>{7, 255})));
    const int32_t raw[] = {0, 1, 2, 3, 4, 5};
    EXPECT_EQ("[2][3]{{0, 1, 2}, {3, 4, 5}}", toString(hidl_array<int32_t, 2, 3>(raw)));
    const sample::Named named[] = {{1}, {2}};
    EXPECT_EQ("[1][2]{{Named#1, Named#2}}", toString(hidl_array<sample::Named, 1, 2>(named)));
}

TEST(ToStringTest, QueuesArePrintedWithTheirParts) {
    EXPECT_EQ("MQDescriptor {.grantors = [0]{}, .handle = null, .quantum = 0, .flags = 0}",
              toString(MQDescriptorSync<int>()));
}

TEST(BuildTest, ThisIsNoBuildForDevelopment) {
    EXPECT_FALSE(android::hardware::details::debuggable());
}

}  // namespace
