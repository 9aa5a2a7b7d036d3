// SPDX-License-Identifier: Apache-2.0
// Tests of HeadsetFiles: which providers a device's files speak of.

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/description/HeadsetFiles.h"
#include "tests/simulator/support/FreshDirectory.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char kManifest[] = "/vendor/etc/vintf/manifest.xml";
constexpr char kMap[] = "/vendor/etc/orvo_vendor_manifest.xml";

class HeadsetFilesTest : public ::testing::Test {
  protected:
    HeadsetFilesTest() { copyHeadset(mDevice); }

    android::base::Result<HeadsetFiles> read() const {
        const auto description = HeadsetDescription::read(mDevice);
        EXPECT_TRUE(description) << description.error().message();
        return HeadsetFiles::read(*description);
    }

    FreshDirectory mDirectory;
    const std::string mDevice = mDirectory.path() + "/device";
};

TEST_F(HeadsetFilesTest, ServedOnesComeFirstThenProcesses) {
    const auto files = read();
    ASSERT_TRUE(files);
    EXPECT_THAT(files->instances(),
                ElementsAre("legacy/0", "default/0", "external/0", "virtual/0"));
    EXPECT_TRUE(files->isServed("legacy/0"));
    EXPECT_FALSE(files->isDescribed("legacy/0"));
    EXPECT_TRUE(files->isDescribed("virtual/0"));
    EXPECT_TRUE(files->isDeclared("virtual/0"));
    EXPECT_EQ("legacy/0", files->behind("virtual/0"));
    EXPECT_EQ("", files->behind("legacy/0"));
    EXPECT_FALSE(files->allBehind("legacy/0").empty());
    EXPECT_TRUE(files->allBehind("default/0").empty());
}

TEST_F(HeadsetFilesTest, OneThatOnlyTheMapOrTheManifestNamesIsThereToo) {
    edit(mDevice + kMap, "</providers>",
         "<instance replace=\"usb/0\">legacy/0</instance></providers>");
    edit(mDevice + kManifest, "<instance>default/0</instance>",
         "<instance>default/0</instance><instance>spare/0</instance>");
    const auto files = read();
    ASSERT_TRUE(files);
    EXPECT_THAT(files->instances(), ElementsAre("legacy/0", "default/0", "external/0", "virtual/0",
                                                "usb/0", "spare/0"));
    EXPECT_FALSE(files->isDeclared("usb/0"));
    EXPECT_TRUE(files->isDeclared("spare/0"));
    EXPECT_EQ("", files->behind("spare/0"));
}

TEST_F(HeadsetFilesTest, AnUnknownNameIsAnsweredWithTheKnownOnes) {
    const auto files = read();
    ASSERT_TRUE(files);
    EXPECT_TRUE(files->checkKnown("virtual/0"));
    const auto unknown = files->checkKnown("virtual/1");
    ASSERT_FALSE(unknown);
    EXPECT_EQ(
            "there is no provider 'virtual/1'; there are legacy/0, default/0, external/0,"
            " virtual/0",
            unknown.error().message());
}

TEST_F(HeadsetFilesTest, AMapThatIsNotThereIsAnEmptyOne) {
    std::filesystem::remove(mDevice + kMap);
    const auto files = read();
    ASSERT_TRUE(files);
    EXPECT_EQ("", files->behind("virtual/0"));
    EXPECT_THAT(files->warnings(), ElementsAre(HasSubstr("the reader says 'Failed to open ")));
}

TEST_F(HeadsetFilesTest, WhereNobodyAsksTheMapItNeedNotBeThere) {
    std::filesystem::remove(mDevice + kMap);
    edit(mDevice + "/device.yaml", "- legacy/0", "");
    const auto files = read();
    ASSERT_TRUE(files);
    EXPECT_THAT(files->warnings(), IsEmpty());
}

TEST_F(HeadsetFilesTest, AMalformedMapIsWarnedOf) {
    edit(mDevice + kMap, "</providers>", "</provider>");
    const auto files = read();
    ASSERT_TRUE(files);
    EXPECT_EQ("", files->behind("virtual/0"));
    EXPECT_THAT(files->warnings(), ElementsAre(HasSubstr("orvo_vendor_manifest.xml:7: ")));
}

TEST_F(HeadsetFilesTest, AMalformedManifestIsRefused) {
    edit(mDevice + kManifest, "</manifest>", "</manifes>");
    const auto files = read();
    ASSERT_FALSE(files);
    EXPECT_THAT(files.error().message(), HasSubstr("manifest.xml"));
}

TEST_F(HeadsetFilesTest, ADirectoryThatMayNotBeReadIsNotSaidToBeMissing) {
    chmod(mDirectory.path().c_str(), 0755);
    for (const std::string& unreadable : {mDevice + "/vendor", mDevice}) {
        chmod(unreadable.c_str(), 0);
        EXPECT_EXIT(
                {
                    if (geteuid() == 0 && setuid(65534) != 0) _exit(1);
                    const auto device = HeadsetDescription::read(mDevice);
                    std::cerr << (device ? "read" : device.error().message());
                    _exit(0);
                },
                ::testing::ExitedWithCode(0),
                unreadable + "' may not be read .Permission denied.; give yourself the right");
        chmod(unreadable.c_str(), 0755);
    }
}

}  // namespace
}  // namespace orvo::simulator::testing
