// SPDX-License-Identifier: Apache-2.0
// The version that is part of the paths of some platform libraries.

#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <hidl/HidlInternal.h>

#include "tests/host/device/TemporaryDevice.h"

namespace {

using android::hardware::details::getVndkVersionStr;

TEST(VndkVersionTest, ThereIsNoneUnlessThePropertySaysSo) {
    const orvo::testing::TemporaryDevice device;
    EXPECT_EQ("", getVndkVersionStr());
    ASSERT_EQ(0, property_set("ro.vndk.version", "29"));
    EXPECT_EQ("-29", getVndkVersionStr());
}

TEST(VndkVersionTest, TheCurrentVersionHasNoNumber) {
    const orvo::testing::TemporaryDevice device;
    ASSERT_EQ(0, property_set("ro.vndk.version", "current"));
    EXPECT_EQ("", getVndkVersionStr());
}

}  // namespace
