// SPDX-License-Identifier: Apache-2.0
// Device names from a provider's form to the framework's and back.

#include <chrono>
#include <future>

#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class DeviceNameTranslationTest : public ProviderTest {
  protected:
    DeviceNameTranslationTest() { makeObject("legacy/0", {"external/0", "virtual/0"}); }

    static LogLine warning(const std::string& name) {
        return errorLine("WARNING: Failed to parse device name " + name +
                         ". Android frameworkwill likely fail to recognize this camera");
    }
};

TEST_F(DeviceNameTranslationTest, ToTheFrameworkOnlyTheTypeIsReplaced) {
    const std::pair<const char*, const char*> names[] = {
            {"device@3.2/legacy/0", "device@3.2/legacy/0"},
            {"device@3.2/external/100", "device@3.2/legacy/100"},
            {"device@1.0/virtual/7", "device@1.0/legacy/7"},
            {"device@3.2/external", "device@3.2/legacy/"},
            {"device@3.2/legacy/0/1", "device@3.2/legacy/0/1"},
            {"device@3.2//0", "device@3.2/legacy/0"},
            {"camera0", "@/legacy/"},
            {"device@3.2", "device@/legacy/"},
            {"@/", "@/legacy/"},
            {"external/0", "@/legacy/"},
    };
    for (const auto& [provider, framework] : names) {
        EXPECT_EQ(mObject->providerDeviceNameToAndroidDeviceName(provider), framework);
        EXPECT_THAT(mLog.take(),
                    ElementsAre(infoLine(std::string("providerDeviceNameToAndroidDeviceName ") +
                                         provider)));
    }
    EXPECT_THAT(activeDevices(), IsEmpty());
}

TEST_F(DeviceNameTranslationTest, TheTypeIsThatOfTheOwnInstance) {
    makeObject("a b/c/d", {"external/0"});
    EXPECT_EQ(mObject->providerDeviceNameToAndroidDeviceName("device@3.2/external/1"),
              "device@3.2/a b/1");
    makeObject("/0", {"external/0"});
    EXPECT_EQ(mObject->providerDeviceNameToAndroidDeviceName("device@3.2/external/1"),
              "device@3.2//1");
}

TEST_F(DeviceNameTranslationTest, TwoDevicesOfOneIdShareOneFrameworkName) {
    reportPresent({"device@3.2/legacy/0", "device@3.2/external/0"});
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/0", "device@3.2/external/0")));
}

TEST_F(DeviceNameTranslationTest, ToTheProviderThePresentDeviceIsLookedUp) {
    reportPresent({"device@3.2/external/100"});
    EXPECT_EQ(mObject->androidDeviceNameToProviderDeviceName("device@3.2/legacy/100"),
              "device@3.2/external/100");
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(DeviceNameTranslationTest, AnUnknownNameIsEnteredWithoutAValueSilently) {
    EXPECT_EQ(mObject->androidDeviceNameToProviderDeviceName("device@3.2/legacy/5"), "");
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/5", "")));
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(DeviceNameTranslationTest, ANameOfAnyTypeIsLookedUp) {
    EXPECT_EQ(mObject->androidDeviceNameToProviderDeviceName("camera@x/other/y/z"), "");
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("camera@x/other/y/z", "")));
}

TEST_F(DeviceNameTranslationTest, AnEntryWithoutAValueGetsOneWhenItsDeviceAppears) {
    mObject->androidDeviceNameToProviderDeviceName("device@3.2/legacy/5");
    reportPresent({"device@3.2/external/5"});
    EXPECT_EQ(mObject->androidDeviceNameToProviderDeviceName("device@3.2/legacy/5"),
              "device@3.2/external/5");
}

TEST_F(DeviceNameTranslationTest, AnEntryWithoutAValueGoesWhenItsDeviceDisappears) {
    mObject->androidDeviceNameToProviderDeviceName("device@3.2/legacy/5");
    mObject->cameraDeviceStatusChange("device@3.2/external/5", CameraDeviceStatus::NOT_PRESENT);
    EXPECT_THAT(activeDevices(), IsEmpty());
}

TEST_F(DeviceNameTranslationTest, AMalformedOrIncompleteFrameworkNameIsReturnedWithAWarning) {
    for (const char* name :
         {"", "camera0", "legacy/0", "device@3.2", "device@3.2/legacy", "device@3.2/legacy/",
          "device@3.2//0", "device@/legacy/0", "@3.2/legacy/0", "@/"}) {
        EXPECT_EQ(mObject->androidDeviceNameToProviderDeviceName(name), name);
        EXPECT_THAT(mLog.take(), ElementsAre(warning(name)));
    }
    EXPECT_THAT(activeDevices(), IsEmpty());
}

TEST_F(DeviceNameTranslationTest, TheWarningComesWithoutTheLock) {
    int lines = 0;
    mLog.onLine = [&](const LogLine& line) {
        ++lines;
        EXPECT_TRUE(activeDevicesAreUnlocked()) << line.text;
    };
    mObject->androidDeviceNameToProviderDeviceName("device@3.2/legacy");
    EXPECT_EQ(lines, 1);
}

TEST_F(DeviceNameTranslationTest, TheLookUpTakesTheLockOfTheMap) {
    mObject->mActiveDevicesMutex.lock();
    std::future<std::string> answer = std::async(std::launch::async, [this] {
        return mObject->androidDeviceNameToProviderDeviceName("device@3.2/legacy/5");
    });
    EXPECT_EQ(answer.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    mObject->mActiveDevices["device@3.2/legacy/4"] = "x";
    mObject->mActiveDevicesMutex.unlock();
    EXPECT_EQ(answer.get(), "");
    EXPECT_THAT(activeDevices(),
                ElementsAre(Pair("device@3.2/legacy/4", "x"), Pair("device@3.2/legacy/5", "")));
    EXPECT_TRUE(activeDevicesAreUnlocked());
}

using DeviceNameTranslationDeathTest = DeviceNameTranslationTest;

TEST_F(DeviceNameTranslationDeathTest, AnEmptyProviderDeviceNameEndsTheProcess) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                mObject->providerDeviceNameToAndroidDeviceName("");
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(shutdownText(
                    {infoLine("providerDeviceNameToAndroidDeviceName "),
                     errorLine("FATAL: Failed to find replacement provider for legacy/0. Name "
                               "can't be empty.")})));
}

}  // namespace
}  // namespace orvo::test
