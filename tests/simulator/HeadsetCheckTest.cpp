// SPDX-License-Identifier: Apache-2.0
// Tests of HeadsetCheck: all that is wrong in one go, and a new device that has nothing wrong.

#include "simulator/description/HeadsetCheck.h"

#include <filesystem>
#include <string>

#include <android-base/file.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/description/DescriptionKeys.h"
#include "simulator/description/HeadsetFiles.h"
#include "tests/simulator/support/FreshDirectory.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class HeadsetCheckTest : public ::testing::Test {
  protected:
    HeadsetCheckTest() { copyHeadset(mDevice); }

    void change(const std::string& file, const std::string& from, const std::string& to) const {
        edit(mDevice + "/" + file, from, to);
    }
    std::string pathOf(const std::string& file) const { return mDevice + "/" + file; }

    FreshDirectory mDirectory;
    const std::string mDevice = mDirectory.path() + "/device";
    static constexpr char kMap[] = "vendor/etc/orvo_vendor_manifest.xml";
    static constexpr char kManifest[] = "vendor/etc/vintf/manifest.xml";
};

TEST_F(HeadsetCheckTest, TheDefaultDeviceIsInOrder) {
    EXPECT_THAT(checkHeadset(mDevice), IsEmpty());
}

TEST_F(HeadsetCheckTest, WhatIsNoDeviceIsSaidOnce) {
    EXPECT_THAT(checkHeadset("/no/such"), ElementsAre(StartsWith("there is no device directory ")));
    std::filesystem::create_directories(mDirectory.path() + "/empty");
    EXPECT_THAT(checkHeadset(mDirectory.path() + "/empty"),
                ElementsAre(HasSubstr("has no vendor tree"),
                            HasSubstr("/device.yaml: cannot be read")));
}

TEST_F(HeadsetCheckTest, MistakesOfAllFilesAreToldInOneGo) {
    change("device.yaml", "name: headset", "nme: headset\nname: headset");
    change("providers/external.yaml", "torch: true", "torch: maybe");
    change("providers/virtual.yaml", "facing: FRONT", "facing: LEFT");
    change(kManifest, "<transport>hwbinder", "<transport>pigeon");
    change(kMap, "\"virtual/0\">legacy/0<", "\"virtual/0\"> legacy/0 <");
    change("vendor/etc/mrprovider.yaml", "instance: default/0", "instance: other/0");
    const auto mistakes = checkHeadset(mDevice);
    EXPECT_THAT(mistakes,
                ::testing::IsSupersetOf({
                        StartsWith(pathOf("device.yaml:4: the device has no key 'nme'; ")),
                        StartsWith(pathOf("providers/external.yaml:5: the description: torch is ")),
                        StartsWith(pathOf("providers/virtual.yaml:15: camera 'device@3.2/virtual/7'"
                                          ": facing is 'LEFT'; ")),
                        StartsWith(pathOf(kManifest) + ":7: unknown transport \"pigeon\"; "),
                        StartsWith(pathOf(kMap) + ":6: the key \" legacy/0 \" has blanks"),
                        StartsWith(pathOf("vendor/etc/mrprovider.yaml:")),
                }));
}

TEST_F(HeadsetCheckTest, WhatIsNotDeclaredIsNamed) {
    change(kManifest, "<instance>virtual/0</instance>", "");
    change(kManifest, "<instance>virtual/0</instance>", "");
    EXPECT_THAT(
            checkHeadset(mDevice),
            ElementsAre(
                    pathOf(kManifest) + ": does not declare android.hardware.camera.provider@2.4::"
                                        "ICameraProvider/virtual/0, so nobody finds it; add it",
                    pathOf(kManifest) + ": does not declare vendor.orvo.simulator@1.0::"
                                        "ISimulatedProvider/virtual/0, so nobody finds it; add it",
                    StartsWith(pathOf(kMap) + ":6: the manifest does not declare the value "
                                              "\"virtual/0\"")));
}

TEST_F(HeadsetCheckTest, WhatIsServedHasSomethingBehindItAndThatHasAProcess) {
    change("device.yaml", "- legacy/0 ", "- front/0 ");
    change("device.yaml", "  - providers/virtual.yaml\n", "");
    change(kManifest, "<instance>legacy/0", "<instance>front/0</instance><instance>legacy/0");
    EXPECT_THAT(checkHeadset(mDevice),
                ElementsAre(StartsWith(pathOf(kMap) + ": nothing stands behind \"front/0\""),
                            StartsWith(pathOf(kMap) + ":6: nothing provides \"virtual/0\"")));
}

TEST_F(HeadsetCheckTest, AMapIsMissedOnlyWhereItIsAsked) {
    std::filesystem::remove(pathOf(kMap));
    EXPECT_THAT(checkHeadset(mDevice), ElementsAre(HasSubstr("cannot be opened")));
    change("device.yaml", "- legacy/0 ", "");
    change("device.yaml", "     # the aggregating", "# the aggregating");
    EXPECT_THAT(checkHeadset(mDevice), IsEmpty());
}

TEST_F(HeadsetCheckTest, ANewDeviceHasNothingWrong) {
    const std::string directory = mDirectory.path() + "/a/new/one";
    const auto made = makeHeadset(directory);
    ASSERT_TRUE(made) << made.error().message();
    EXPECT_THAT(checkHeadset(directory), IsEmpty());
    const auto description = HeadsetDescription::read(directory);
    ASSERT_TRUE(description) << description.error().message();
    const auto files = HeadsetFiles::read(*description);
    ASSERT_TRUE(files);
    EXPECT_THAT(files->warnings(), IsEmpty());
    EXPECT_FALSE(files->allBehind("legacy/0").empty());
}

TEST_F(HeadsetCheckTest, ANewDeviceReplacesNothing) {
    std::filesystem::create_directories(mDirectory.path() + "/empty");
    EXPECT_TRUE(makeHeadset(mDirectory.path() + "/empty"));
    for (const std::string& there :
         {mDevice, mDirectory.path() + "/empty", pathOf("device.yaml")}) {
        const auto made = makeHeadset(there);
        ASSERT_FALSE(made);
        EXPECT_EQ("'" + there + "' is there and not empty; name a new directory",
                  made.error().message());
    }
    EXPECT_FALSE(makeHeadset("/proc/new"));
}

TEST(DescriptionKeysTest, ThePageSaysWhatTheReaderKnows) {
    std::string page;
    ASSERT_TRUE(android::base::ReadFileToString(ORVO_DESCRIPTIONS_PAGE, &page));
    EXPECT_EQ(descriptionKeysPage(), page) << "write this into " << ORVO_DESCRIPTIONS_PAGE << ":\n"
                                           << descriptionKeysPage();
}

}  // namespace
}  // namespace orvo::simulator::testing
