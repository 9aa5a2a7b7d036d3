// SPDX-License-Identifier: Apache-2.0
// The camera id properties: how an id enters one and how it leaves.

#include "provider/naming/CameraIdProperty.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/CapturedLog.h"
#include "tests/support/FakeProperties.h"

namespace android::hardware::camera::provider::V2_4::implementation {
namespace {

using orvo::test::PropertyWrite;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kProperty[] = "camera.legacy.ids";

class CameraIdPropertyTest : public ::testing::Test {
  protected:
    // What the property holds after `id` has left a property of that value.
    std::string without(const std::string& id, const std::string& value) {
        mProperties.preset(kProperty, value);
        removeCameraIdFromSystemProperty("legacy", id);
        return mProperties.value(kProperty);
    }

    orvo::test::FakeProperties mProperties;
    orvo::test::CapturedLog mLog;
};

TEST_F(CameraIdPropertyTest, TheFirstIdStandsAloneAndLaterOnesFollow) {
    appendCameraIdToSystemProperty("legacy", "0");
    appendCameraIdToSystemProperty("legacy", "1");
    appendCameraIdToSystemProperty("legacy", "100");
    EXPECT_THAT(mProperties.writes(),
                ElementsAre(PropertyWrite{kProperty, "0"}, PropertyWrite{kProperty, "0, 1"},
                            PropertyWrite{kProperty, "0, 1, 100"}));
    EXPECT_THAT(mProperties.reads(), ElementsAre(kProperty, kProperty, kProperty));
}

TEST_F(CameraIdPropertyTest, ARepeatedIdIsListedAgain) {
    for (const char* id : {"0", "1", "1"}) appendCameraIdToSystemProperty("legacy", id);
    EXPECT_EQ(mProperties.value(kProperty), "0, 1, 1");
}

TEST_F(CameraIdPropertyTest, EachTypeHasItsOwnProperty) {
    appendCameraIdToSystemProperty("legacy", "0");
    appendCameraIdToSystemProperty("external", "100");
    removeCameraIdFromSystemProperty("external", "100");
    EXPECT_THAT(mProperties.writes(), ElementsAre(PropertyWrite{"camera.legacy.ids", "0"},
                                                  PropertyWrite{"camera.external.ids", "100"},
                                                  PropertyWrite{"camera.external.ids", ""}));
}

TEST_F(CameraIdPropertyTest, WhatThePropertyHeldBeforeIsKept) {
    mProperties.preset(kProperty, "7");
    appendCameraIdToSystemProperty("legacy", "0");
    EXPECT_EQ(mProperties.value(kProperty), "7, 0");
}

TEST_F(CameraIdPropertyTest, AValueOfNinetyOneCharactersIsAcceptedAndALongerOneRefused) {
    mProperties.preset(kProperty, std::string(88, '1'));
    appendCameraIdToSystemProperty("legacy", "2");
    const std::string full = std::string(88, '1') + ", 2";
    ASSERT_EQ(full.size(), 91u);
    EXPECT_EQ(mProperties.value(kProperty), full);

    appendCameraIdToSystemProperty("legacy", "3");
    EXPECT_THAT(mProperties.writes(), ElementsAre(PropertyWrite{kProperty, full},
                                                  PropertyWrite{kProperty, full + ", 3", false}));
    EXPECT_EQ(mProperties.value(kProperty), full);
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(CameraIdPropertyTest, OnlyNinetyOneCharactersOfAValueAreSeen) {
    mProperties.preset(kProperty, std::string(95, '1'));
    removeCameraIdFromSystemProperty("legacy", "2");
    EXPECT_EQ(mProperties.value(kProperty), std::string(91, '1'));
}

TEST_F(CameraIdPropertyTest, AnIdLeavesFromTheStartTheMiddleAndTheEnd) {
    EXPECT_EQ(without("0", "0, 1"), "1");
    EXPECT_EQ(without("1", "0, 1"), "0");
    EXPECT_EQ(without("1", "0, 1, 2"), "0, 2");
    EXPECT_EQ(without("2", "0, 1, 2"), "0, 1");
    EXPECT_EQ(without("100", "100, 101, 0"), "101, 0");
}

TEST_F(CameraIdPropertyTest, TheLastIdLeavesAnEmptyProperty) {
    mProperties.preset(kProperty, "1");
    removeCameraIdFromSystemProperty("legacy", "1");
    EXPECT_THAT(mProperties.writes(), ElementsAre(PropertyWrite{kProperty, ""}));
}

TEST_F(CameraIdPropertyTest, AnIdThatIsNotListedWritesTheValueBackUnchanged) {
    mProperties.preset(kProperty, "0, 1");
    removeCameraIdFromSystemProperty("legacy", "5");
    EXPECT_THAT(mProperties.writes(), ElementsAre(PropertyWrite{kProperty, "0, 1"}));
}

TEST_F(CameraIdPropertyTest, TheFirstMatchAsTextGoesAlsoInsideALongerId) {
    EXPECT_EQ(without("1", "10, 1"), "0, 1");
    EXPECT_EQ(without("0", "100, 0"), "10, 0");
    EXPECT_EQ(without("0, 1", "10, 11"), "11");
}

TEST_F(CameraIdPropertyTest, OnlyTheFirstOccurrenceGoes) {
    EXPECT_EQ(without("1", "0, 1, 1"), "0, 1");
    EXPECT_EQ(without("1", "1, 1, 1"), "1, 1");
}

TEST_F(CameraIdPropertyTest, NothingIsWrittenWhenThePropertyIsUnsetOrEmpty) {
    removeCameraIdFromSystemProperty("legacy", "0");
    mProperties.preset(kProperty, "");
    removeCameraIdFromSystemProperty("legacy", "0");
    removeCameraIdFromSystemProperty("legacy", "");
    EXPECT_THAT(mProperties.writes(), IsEmpty());
    EXPECT_THAT(mProperties.reads(), ElementsAre(kProperty, kProperty, kProperty));
}

TEST_F(CameraIdPropertyTest, ATrailingBlankAndThenATrailingCommaAreDroppedInAnyCase) {
    EXPECT_EQ(without("7", "0, "), "0");
    EXPECT_EQ(without("7", "0,"), "0");
    EXPECT_EQ(without("7", "0 "), "0");
    EXPECT_EQ(without("7", "0,  "), "0, ") << "one blank only";
    EXPECT_EQ(without("7", "0,,"), "0,") << "one comma only";
    EXPECT_EQ(without("7", "0 ,"), "0 ") << "the blank is looked for first";
    EXPECT_EQ(without("7", " "), "");
    EXPECT_EQ(without("7", ","), "");
}

TEST_F(CameraIdPropertyTest, ACommaAfterTheIdTakesTheCharacterBehindItAlong) {
    EXPECT_EQ(without("0", "0,1"), "");
    EXPECT_EQ(without("0", "0,12"), "2");
    EXPECT_EQ(without("0", "0,"), "");
    EXPECT_EQ(without("0", "x0, 1"), "x1");
}

TEST_F(CameraIdPropertyTest, TheEmptyIdIsFoundAtTheStartAndErasesNothingThere) {
    EXPECT_EQ(without("", "0, 1"), "0, 1");
    EXPECT_EQ(without("", ", 0"), "0");
    EXPECT_EQ(without("", "0, "), "0");
}

TEST_F(CameraIdPropertyTest, TheEmptyTypeAndIdEditTheirPropertyLikeAnyOther) {
    appendCameraIdToSystemProperty("", "");
    mProperties.preset("camera..ids", "x");
    appendCameraIdToSystemProperty("", "");
    removeCameraIdFromSystemProperty("", "");
    // The platform refuses the name, which nobody looks at.
    EXPECT_THAT(mProperties.writes(), ElementsAre(PropertyWrite{"camera..ids", "", false},
                                                  PropertyWrite{"camera..ids", "x, ", false},
                                                  PropertyWrite{"camera..ids", "x", false}));
}

TEST_F(CameraIdPropertyTest, NothingIsLogged) {
    appendCameraIdToSystemProperty("legacy", "0");
    removeCameraIdFromSystemProperty("legacy", "1");
    removeCameraIdFromSystemProperty("legacy", "0");
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

}  // namespace
}  // namespace android::hardware::camera::provider::V2_4::implementation
