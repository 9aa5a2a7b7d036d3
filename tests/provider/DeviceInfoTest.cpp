// SPDX-License-Identifier: Apache-2.0
// Taking device names apart.

#include "provider/naming/DeviceInfo.h"

#include <ostream>
#include <tuple>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/CapturedLog.h"
#include "tests/support/OlderGoogleTest.h"

namespace android::hardware::camera::provider::V2_4::implementation {

static bool operator==(const DeviceInfo& left, const DeviceInfo& right) {
    return std::tie(left.prefix, left.version, left.type, left.id) ==
           std::tie(right.prefix, right.version, right.type, right.id);
}

static std::ostream& operator<<(std::ostream& stream, const DeviceInfo& info) {
    return stream << "{" << info.prefix << "|" << info.version << "|" << info.type << "|" << info.id
                  << "}";
}

namespace {

struct Case {
    const char* name;
    bool parses;
    DeviceInfo info;
};

void PrintTo(const Case& testCase, std::ostream* stream) {
    *stream << testCase.name;
}

class DeviceNameTest : public ::testing::TestWithParam<Case> {};

TEST_P(DeviceNameTest, IsTakenApart) {
    const orvo::test::CapturedLog log;
    // Left over from an earlier name, and to be forgotten in every case.
    DeviceInfo info = {"old prefix", "old version", "old type", "old id"};
    EXPECT_EQ(parseDeviceString(GetParam().name, info), GetParam().parses);
    EXPECT_EQ(info, GetParam().info);
    EXPECT_THAT(log.lines(), ::testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
        Names, DeviceNameTest,
        ::testing::Values(
                Case{"device@3.2/legacy/0", true, {"device", "3.2", "legacy", "0"}},
                Case{"device@1.0/external/100", true, {"device", "1.0", "external", "100"}},
                Case{"device@3.2/legacy", true, {"device", "3.2", "legacy", ""}},
                Case{"device@3.2/legacy/", true, {"device", "3.2", "legacy", ""}},
                Case{"device@3.2/legacy/0/extra", true, {"device", "3.2", "legacy", "0/extra"}},
                Case{"device@3.2/legacy/0/", true, {"device", "3.2", "legacy", "0/"}},
                Case{"device@3.2/legacy//0", true, {"device", "3.2", "legacy", "/0"}},
                Case{"@/", true, {"", "", "", ""}}, Case{"@//", true, {"", "", "", ""}},
                Case{"device@/x/y", true, {"device", "", "x", "y"}},
                Case{"@3.2/legacy/0", true, {"", "3.2", "legacy", "0"}},
                Case{"device@3.2//0", true, {"device", "3.2", "", "0"}},
                Case{"device@3.2/", true, {"device", "3.2", "", ""}},
                Case{"a/b@c/d/e", true, {"a/b", "c", "d", "e"}},
                Case{"a@b@c/d/e", true, {"a", "b@c", "d", "e"}},
                Case{"camera@not a version/any type/any id",
                     true,
                     {"camera", "not a version", "any type", "any id"}},
                Case{"", false, {"", "", "", ""}}, Case{"legacy/0", false, {"", "", "", ""}},
                Case{"camera0", false, {"", "", "", ""}},
                Case{"device@3.2", false, {"device", "", "", ""}},
                Case{"device@", false, {"device", "", "", ""}},
                Case{"a/b@c", false, {"a/b", "", "", ""}}, Case{"@", false, {"", "", "", ""}}));

TEST(DeviceInfoTest, SplittingForgetsTheEarlierParts) {
    for (const std::string_view name : {"", "camera0", "device@", "@/", "device@3.2"}) {
        SCOPED_TRACE(name);
        DeviceNameParts parts = {"old prefix", "old version", "old type", "old id"};
        splitDeviceName(name, parts);
        EXPECT_EQ(parts.prefix, name.substr(0, 6) == "device" ? "device" : "");
        EXPECT_EQ(parts.version, "");
        EXPECT_EQ(parts.type, "");
        EXPECT_EQ(parts.id, "");
    }
}

TEST(DeviceInfoTest, TheTypeOfAnInstanceIsTheTextBeforeItsFirstSlash) {
    EXPECT_EQ(typeOfInstance("legacy/0"), "legacy");
    EXPECT_EQ(typeOfInstance("a/b/c"), "a");
    EXPECT_EQ(typeOfInstance("/"), "");
    EXPECT_EQ(typeOfInstance("legacy"), std::nullopt);
    EXPECT_EQ(typeOfInstance(""), std::nullopt);
}

TEST(DeviceInfoTest, BytesOfAnyValueAreKept) {
    using namespace std::string_literals;
    DeviceInfo info;
    EXPECT_TRUE(parseDeviceString("dev\0ice@\xff/t\n/i\x80"s, info));
    EXPECT_EQ(info, (DeviceInfo{"dev\0ice"s, "\xff", "t\n", "i\x80"}));
}

TEST(DeviceInfoTest, AVeryLongNameIsTakenApart) {
    const std::string part(100000, 'x');
    DeviceInfo info;
    EXPECT_TRUE(parseDeviceString(part + "@" + part + "/" + part + "/" + part, info));
    EXPECT_EQ(info, (DeviceInfo{part, part, part, part}));
}

}  // namespace
}  // namespace android::hardware::camera::provider::V2_4::implementation
