// SPDX-License-Identifier: Apache-2.0
// The camera id tables that exist from the load of the library on.

// One of the tables is local to this file, so the test is a part of it.
#include "provider/naming/DeviceMap.cpp"

#include <algorithm>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

// The objects whose destruction was registered while the program was loaded, in that order. Plain
// arrays, because they are filled before any object is constructed.
constexpr int kMaxRegistrations = 4096;
void* gRegistered[kMaxRegistrations];
int gRegistrationCount = 0;

int registrationOf(const void* object) {
    void** const end = gRegistered + gRegistrationCount;
    return static_cast<int>(std::find(gRegistered, end, object) - gRegistered);
}

}  // namespace

// The linker sends the registrations made by this program's own objects here.
extern "C" int __real___cxa_atexit(void (*destructor)(void*), void* object, void* library);
extern "C" int __wrap___cxa_atexit(void (*destructor)(void*), void* object, void* library) {
    if (gRegistrationCount < kMaxRegistrations) gRegistered[gRegistrationCount++] = object;
    return __real___cxa_atexit(destructor, object, library);
}

namespace android::hardware::camera::provider::V2_4::implementation {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

TEST(DeviceMapTest, TheDefaultTableHoldsTheKnownProvidersIdsInTheirStoredOrder) {
    EXPECT_THAT(gDefaultDeviceMap,
                ElementsAre(Pair("default/0", ElementsAre("93", "94", "2", "3", "4", "23", "24",
                                                          "25", "26", "27", "28", "29")),
                            Pair("external/0", ElementsAre("0", "91", "2", "3", "4", "32")),
                            Pair("legacy/0", ElementsAre("0", "1", "10", "51", "12", "5", "6", "7",
                                                         "8", "9", "10", "11")),
                            Pair("virtual/0", ElementsAre("60", "61", "62", "63", "64", "65", "6",
                                                          "7", "68", "69", "70", "71", "72", "73",
                                                          "74", "75", "76", "77", "78", "79"))));
}

TEST(DeviceMapTest, TheExportedMapIsEmptyAndTheFlagIsFalse) {
    EXPECT_THAT(gDeviceMap, IsEmpty());
    EXPECT_FALSE(gParseFlag);
    static_assert(std::is_same_v<decltype(gDeviceMap), decltype(gDefaultDeviceMap)>);
    static_assert(std::is_same_v<decltype(gParseFlag), bool> && sizeof(gParseFlag) == 1);
}

TEST(DeviceMapTest, TheDefaultTableIsBuiltFirstAndDestroyedLast) {
    const int table = registrationOf(&gDefaultDeviceMap);
    const int map = registrationOf(&gDeviceMap);
    ASSERT_LT(table, gRegistrationCount) << "the destruction of the table was never registered";
    ASSERT_LT(map, gRegistrationCount) << "the destruction of the map was never registered";
    EXPECT_EQ(table + 1, map);
    EXPECT_EQ(registrationOf(&gParseFlag), gRegistrationCount) << "the flag needs no destruction";
}

}  // namespace
}  // namespace android::hardware::camera::provider::V2_4::implementation
