// SPDX-License-Identifier: Apache-2.0
// The notifications that pass through the provider object to the framework.

#include <stdio.h>

#include <future>

#include "tests/support/Fault.h"
#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using android::hardware::Return;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

LogLine gotChange(const std::string& name, const std::string& status) {
    return infoLine("Got camera status change for " + name + " and status " + status);
}

LogLine translated(const std::string& name) {
    return infoLine("providerDeviceNameToAndroidDeviceName " + name);
}

LogLine active(const std::string& key, const std::string& value) {
    return infoLine("mActiveDevices Key: " + key + ", Value: " + value);
}

class DeviceStatusTest : public ProviderTest {
  protected:
    DeviceStatusTest() {
        makeObject("legacy/0", {"external/0", "virtual/0"});
        mObject->mCallback = mFramework;
    }

    Return<void> report(const std::string& name, CameraDeviceStatus status) {
        return mObject->cameraDeviceStatusChange(name, status);
    }

    std::string ids(const std::string& type) {
        return mProperties.value("camera." + type + ".ids");
    }
};

TEST_F(DeviceStatusTest, APresentDeviceIsRecordedListedAndForwarded) {
    EXPECT_TRUE(report("device@3.2/external/100", CameraDeviceStatus::PRESENT).isOk());
    EXPECT_THAT(activeDevices(),
                ElementsAre(Pair("device@3.2/legacy/100", "device@3.2/external/100")));
    EXPECT_THAT(mProperties.writes(), ElementsAre(PropertyWrite{"camera.external.ids", "100"}));
    EXPECT_THAT(
            mFramework->notifications(),
            ElementsAre(deviceNotification("device@3.2/legacy/100", CameraDeviceStatus::PRESENT)));
    EXPECT_THAT(mLog.lines(),
                ElementsAre(gotChange("device@3.2/external/100", "PRESENT"),
                            translated("device@3.2/external/100"),
                            active("device@3.2/legacy/100", "device@3.2/external/100")));
}

TEST_F(DeviceStatusTest, IdsAreListedInTheOrderOfTheReports) {
    report("device@3.2/legacy/0", CameraDeviceStatus::PRESENT);
    EXPECT_EQ(ids("legacy"), "0");
    report("device@3.2/legacy/1", CameraDeviceStatus::PRESENT);
    EXPECT_EQ(ids("legacy"), "0, 1");
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/0", "device@3.2/legacy/0"),
                                             Pair("device@3.2/legacy/1", "device@3.2/legacy/1")));
}

TEST_F(DeviceStatusTest, ARepeatedPresenceListsTheIdAgainAndRewritesTheOneEntry) {
    report("device@3.2/legacy/0", CameraDeviceStatus::PRESENT);
    report("device@3.2/legacy/1", CameraDeviceStatus::PRESENT);
    report("device@3.2/external/0", CameraDeviceStatus::PRESENT);
    report("device@3.2/legacy/0", CameraDeviceStatus::PRESENT);
    EXPECT_EQ(ids("legacy"), "0, 1, 0");
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/0", "device@3.2/legacy/0"),
                                             Pair("device@3.2/legacy/1", "device@3.2/legacy/1")));
    EXPECT_THAT(mFramework->notifications(), SizeIs(4)) << "each report is forwarded";
}

TEST_F(DeviceStatusTest, ADeviceThatLeavesIsForgottenUnlistedAndForwarded) {
    reportPresent({"device@3.2/external/100", "device@3.2/external/101"});
    EXPECT_TRUE(report("device@3.2/external/100", CameraDeviceStatus::NOT_PRESENT).isOk());
    EXPECT_THAT(activeDevices(),
                ElementsAre(Pair("device@3.2/legacy/101", "device@3.2/external/101")));
    EXPECT_EQ(ids("external"), "101");
    EXPECT_EQ(mFramework->notifications().back(),
              deviceNotification("device@3.2/legacy/100", CameraDeviceStatus::NOT_PRESENT));
    EXPECT_THAT(mLog.lines(),
                ElementsAre(gotChange("device@3.2/external/100", "NOT_PRESENT"),
                            translated("device@3.2/external/100"),
                            active("device@3.2/legacy/101", "device@3.2/external/101")));
}

TEST_F(DeviceStatusTest, ADeviceThatNeverCameStillLeavesThePropertyAndIsForwarded) {
    mProperties.preset("camera.external.ids", "5, 6");
    reportPresent({"device@3.2/virtual/1"});
    EXPECT_TRUE(report("device@3.2/external/5", CameraDeviceStatus::NOT_PRESENT).isOk());
    EXPECT_EQ(ids("external"), "6");
    EXPECT_THAT(activeDevices(), SizeIs(1));
    EXPECT_EQ(mFramework->notifications().back(),
              deviceNotification("device@3.2/legacy/5", CameraDeviceStatus::NOT_PRESENT));
}

TEST_F(DeviceStatusTest, EnumeratingIsLoggedAsNotPresentChangesNothingAndIsForwardedAsItIs) {
    reportPresent({"device@3.2/external/1"});
    const auto writes = mProperties.writes();
    EXPECT_TRUE(report("device@3.2/external/1", CameraDeviceStatus::ENUMERATING).isOk());
    EXPECT_THAT(activeDevices(), SizeIs(1));
    EXPECT_EQ(mProperties.writes(), writes);
    EXPECT_EQ(mFramework->notifications().back(),
              deviceNotification("device@3.2/legacy/1", CameraDeviceStatus::ENUMERATING));
    EXPECT_THAT(mLog.lines(), ElementsAre(gotChange("device@3.2/external/1", "NOT_PRESENT"),
                                          translated("device@3.2/external/1"),
                                          active("device@3.2/legacy/1", "device@3.2/external/1")));
}

TEST_F(DeviceStatusTest, AnUnknownStatusIsTreatedLikeEnumerating) {
    const auto status = static_cast<CameraDeviceStatus>(77);
    EXPECT_TRUE(report("device@3.2/external/1", status).isOk());
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_THAT(mProperties.writes(), IsEmpty());
    EXPECT_THAT(mFramework->notifications(),
                ElementsAre(deviceNotification("device@3.2/legacy/1", status)));
    EXPECT_THAT(mLog.lines(), ElementsAre(gotChange("device@3.2/external/1", "NOT_PRESENT"),
                                          translated("device@3.2/external/1")));
}

TEST_F(DeviceStatusTest, EveryReportLogsAllActiveDevicesInKeyOrder) {
    reportPresent({"device@3.2/external/2", "device@1.0/virtual/9", "device@3.2/external/10"});
    report("device@3.2/external/7", CameraDeviceStatus::NOT_PRESENT);
    EXPECT_THAT(mLog.lines(), ElementsAre(gotChange("device@3.2/external/7", "NOT_PRESENT"),
                                          translated("device@3.2/external/7"),
                                          active("device@1.0/legacy/9", "device@1.0/virtual/9"),
                                          active("device@3.2/legacy/10", "device@3.2/external/10"),
                                          active("device@3.2/legacy/2", "device@3.2/external/2")));
}

TEST_F(DeviceStatusTest, ANameThatDoesNotParseGoesOnWithoutTypeAndId) {
    EXPECT_TRUE(report("camera0", CameraDeviceStatus::PRESENT).isOk());
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("@/legacy/", "camera0")));
    EXPECT_THAT(mProperties.writes(), ElementsAre(PropertyWrite{"camera..ids", "", false}));
    EXPECT_THAT(mFramework->notifications(),
                ElementsAre(deviceNotification("@/legacy/", CameraDeviceStatus::PRESENT)));
    EXPECT_THAT(mLog.lines(), ElementsAre(gotChange("camera0", "PRESENT"), translated("camera0"),
                                          errorLine("Failed to parse device name camera0"),
                                          active("@/legacy/", "camera0")));
}

TEST_F(DeviceStatusTest, ANameThatDoesNotParseLeavesLikeAnyOther) {
    reportPresent({"device@3.2"});
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@/legacy/", "device@3.2")));
    mProperties.preset("camera..ids", ", x");
    EXPECT_TRUE(report("device@3.2", CameraDeviceStatus::NOT_PRESENT).isOk());
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_EQ(mProperties.writes().back(), (PropertyWrite{"camera..ids", "x", false}));
    EXPECT_THAT(mLog.lines(),
                ElementsAre(gotChange("device@3.2", "NOT_PRESENT"), translated("device@3.2"),
                            errorLine("Failed to parse device name device@3.2")));
}

TEST_F(DeviceStatusTest, WithoutACallbackTheReportIsDroppedButItsChangesStand) {
    recordFault("framework's callback", "there is none when a device status comes",
                "a warning; the changes stand, nothing is replayed");
    mObject->mCallback = nullptr;
    EXPECT_TRUE(report("device@3.2/external/1", CameraDeviceStatus::PRESENT).isOk());
    EXPECT_THAT(activeDevices(), SizeIs(1));
    EXPECT_EQ(ids("external"), "1");
    EXPECT_THAT(mLog.lines(),
                ElementsAre(gotChange("device@3.2/external/1", "PRESENT"),
                            translated("device@3.2/external/1"),
                            active("device@3.2/legacy/1", "device@3.2/external/1"),
                            warningLine("cameraDeviceStatusChange:358 No callback registered")));

    mObject->setCallback(mFramework);
    EXPECT_THAT(mFramework->notifications(), IsEmpty()) << "nothing is replayed";
}

TEST_F(DeviceStatusTest, TheFrameworksTransportResultGoesBackToTheProvider) {
    recordFault("framework's callback", "a device status fails in transport",
                "the failure goes back to the provider; the changes stand");
    mFramework->rejected = {"device@3.2/legacy/1"};
    const Return<void> result = report("device@3.2/external/1", CameraDeviceStatus::PRESENT);
    EXPECT_FALSE(result.isOk());
    EXPECT_TRUE(result.isDeadObject());
    EXPECT_THAT(activeDevices(), SizeIs(1)) << "the changes stand";
}

TEST_F(DeviceStatusTest, ARefusedPropertyWriteChangesNothingElse) {
    recordFault("property", "the ids grow too long for a value and the write is refused",
                "the property keeps its value; the device is recorded and forwarded");
    mProperties.preset("camera.external.ids", std::string(91, '1'));
    EXPECT_TRUE(report("device@3.2/external/1", CameraDeviceStatus::PRESENT).isOk());
    EXPECT_EQ(ids("external"), std::string(91, '1'));
    EXPECT_THAT(activeDevices(), SizeIs(1));
    EXPECT_THAT(mFramework->notifications(), SizeIs(1));
}

TEST_F(DeviceStatusTest, APropertyThatCannotBeReadCountsAsEmpty) {
    recordFault("property", "the ids cannot be read",
                "they count as empty: the new id stands alone, and there is nothing to remove");
    mProperties.preset("camera.external.ids", "7");
    mProperties.readsFail = true;
    EXPECT_TRUE(report("device@3.2/external/1", CameraDeviceStatus::PRESENT).isOk());
    EXPECT_EQ(ids("external"), "1");
    EXPECT_TRUE(report("device@3.2/external/1", CameraDeviceStatus::NOT_PRESENT).isOk());
    EXPECT_EQ(ids("external"), "1");
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_THAT(mFramework->notifications(), SizeIs(2));
}

TEST_F(DeviceStatusTest, APropertyThatCannotBeWrittenChangesNothingElse) {
    recordFault("property", "the ids cannot be written",
                "the property keeps its value; the device is recorded, forgotten and forwarded");
    mProperties.preset("camera.external.ids", "7");
    mProperties.writesFail = true;
    EXPECT_TRUE(report("device@3.2/external/1", CameraDeviceStatus::PRESENT).isOk());
    EXPECT_THAT(activeDevices(), SizeIs(1));
    EXPECT_TRUE(report("device@3.2/external/1", CameraDeviceStatus::NOT_PRESENT).isOk());
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_EQ(ids("external"), "7");
    EXPECT_THAT(mFramework->notifications(), SizeIs(2));
}

TEST_F(DeviceStatusTest, ThePropertyIsEditedUnderTheLockAndTheFrameworkCalledOutsideIt) {
    int writes = 0;
    mProperties.onWrite = [&] {
        ++writes;
        EXPECT_FALSE(activeDevicesAreUnlocked());
    };
    mFramework->onNotification = [&](const Notification&) {
        EXPECT_TRUE(activeDevicesAreUnlocked());
    };
    report("device@3.2/external/1", CameraDeviceStatus::PRESENT);
    report("device@3.2/external/1", CameraDeviceStatus::NOT_PRESENT);
    EXPECT_EQ(writes, 2);
    EXPECT_THAT(mFramework->notifications(), SizeIs(2));
}

TEST_F(DeviceStatusTest, TheDeviceIsRecordedBeforeItIsListedAndForgottenAfterItIsUnlisted) {
    std::vector<std::map<std::string, std::string>> seen;
    mProperties.onWrite = [&] { seen.push_back(lockedActiveDevices()); };
    report("device@3.2/external/1", CameraDeviceStatus::PRESENT);
    report("device@3.2/external/1", CameraDeviceStatus::NOT_PRESENT);
    const auto recorded = ElementsAre(Pair("device@3.2/legacy/1", "device@3.2/external/1"));
    EXPECT_THAT(seen, ElementsAre(recorded, recorded));
    EXPECT_THAT(activeDevices(), IsEmpty());
}

TEST_F(DeviceStatusTest, OnlyTheActiveDevicesAreLoggedUnderTheLock) {
    mObject->mCallback = nullptr;
    std::vector<std::string> unlocked;
    mLog.onLine = [&](const LogLine& line) {
        if (activeDevicesAreUnlocked()) unlocked.push_back(line.text);
    };
    report("camera0", CameraDeviceStatus::PRESENT);
    mObject->torchModeStatusChange("camera0", TorchModeStatus::AVAILABLE_ON);
    EXPECT_THAT(unlocked, ElementsAre("Got camera status change for camera0 and status PRESENT",
                                      "providerDeviceNameToAndroidDeviceName camera0",
                                      "Failed to parse device name camera0",
                                      "cameraDeviceStatusChange:358 No callback registered",
                                      "Torchmode changed  for camera0",
                                      "providerDeviceNameToAndroidDeviceName camera0",
                                      "torchModeStatusChange:375 No callback registered"));
    EXPECT_THAT(mLog.lines(), SizeIs(unlocked.size() + 1)) << "one active device is logged";
}

TEST_F(DeviceStatusTest, AFrameworkThatCallsBackFromItsHandlerIsServed) {
    std::string provider;
    mFramework->onNotification = [&](const Notification& notification) {
        provider = mObject->androidDeviceNameToProviderDeviceName(notification.name);
    };
    report("device@3.2/external/1", CameraDeviceStatus::PRESENT);
    EXPECT_EQ(provider, "device@3.2/external/1");
}

// One notification is held up inside the framework; the next provider's report passes it.
TEST_F(DeviceStatusTest, AReportDoesNotWaitForAnotherOnesForwarding) {
    std::promise<void> arrived;
    std::promise<void> released;
    mFramework->onNotification = [&](const Notification& notification) {
        if (notification.name != "device@3.2/legacy/1") return;
        arrived.set_value();
        released.get_future().wait();
    };
    std::future<void> first = std::async(std::launch::async, [this] {
        EXPECT_TRUE(report("device@3.2/external/1", CameraDeviceStatus::PRESENT).isOk());
    });
    arrived.get_future().wait();
    EXPECT_TRUE(report("device@3.2/virtual/2", CameraDeviceStatus::PRESENT).isOk());
    EXPECT_THAT(activeDevices(), SizeIs(2));
    EXPECT_THAT(mFramework->notifications(), SizeIs(1)) << "the second one came through first";
    released.set_value();
    first.get();
    EXPECT_THAT(mFramework->notifications(), SizeIs(2));
}

TEST_F(DeviceStatusTest, ManyProvidersMayReportAtOnce) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 50;
    std::vector<std::future<void>> reports;
    for (int thread = 0; thread < kThreads; ++thread) {
        reports.push_back(std::async(std::launch::async, [this, thread] {
            const std::string name =
                    "device@3.2/t" + std::to_string(thread) + "/" + std::to_string(thread);
            for (int round = 0; round < kRounds; ++round) {
                EXPECT_TRUE(report(name, CameraDeviceStatus::PRESENT).isOk());
                mObject->androidDeviceNameToProviderDeviceName("device@3.2/legacy/x");
                EXPECT_TRUE(
                        mObject->torchModeStatusChange(name, TorchModeStatus::AVAILABLE_ON).isOk());
                EXPECT_TRUE(report(name, CameraDeviceStatus::NOT_PRESENT).isOk());
            }
        }));
    }
    for (std::future<void>& finished : reports) finished.get();
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/x", "")));
    for (int thread = 0; thread < kThreads; ++thread) {
        EXPECT_EQ(ids("t" + std::to_string(thread)), "");
    }
    EXPECT_THAT(mFramework->notifications(), SizeIs(kThreads * kRounds * 3));
}

using DeviceStatusDeathTest = DeviceStatusTest;

TEST_F(DeviceStatusDeathTest, AnEmptyNameEndsTheProcessBeforeAnythingIsForwarded) {
    mFramework->onNotification = [](const Notification&) { fputs("forwarded\n", stderr); };
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                mSleep.onSleep = [this](std::chrono::nanoseconds) {
                    fputs(activeDevicesAreUnlocked() ? "unlocked\n" : "locked\n", stderr);
                };
                (void)report("", CameraDeviceStatus::PRESENT).isOk();
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(
                    MirroredLog::text({gotChange("", "PRESENT"), translated(""),
                                       errorLine("FATAL: Failed to find replacement provider for "
                                                 "legacy/0. Name can't be empty."),
                                       shutdownLines()[0]}) +
                    "unlocked\n" + MirroredLog::text({shutdownLines()[1]})));
}

using TorchStatusTest = DeviceStatusTest;

TEST_F(TorchStatusTest, ATorchChangeIsForwardedUnderTheFrameworksNameAndChangesNothingElse) {
    for (const auto status : {TorchModeStatus::AVAILABLE_ON, TorchModeStatus::AVAILABLE_OFF,
                              TorchModeStatus::NOT_AVAILABLE}) {
        EXPECT_TRUE(mObject->torchModeStatusChange("device@3.2/external/1", status).isOk());
        EXPECT_EQ(mFramework->notifications().back(),
                  torchNotification("device@3.2/legacy/1", status));
        EXPECT_THAT(mLog.take(),
                    ElementsAre(infoLine("Torchmode changed  for device@3.2/external/1"),
                                translated("device@3.2/external/1")));
    }
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_THAT(mProperties.writes(), IsEmpty());
    EXPECT_THAT(mProperties.reads(), IsEmpty());
}

TEST_F(TorchStatusTest, WithoutACallbackItIsDropped) {
    mObject->mCallback = nullptr;
    EXPECT_TRUE(
            mObject->torchModeStatusChange("device@3.2/external/1", TorchModeStatus::AVAILABLE_ON)
                    .isOk());
    EXPECT_THAT(mLog.lines(),
                ElementsAre(infoLine("Torchmode changed  for device@3.2/external/1"),
                            translated("device@3.2/external/1"),
                            warningLine("torchModeStatusChange:375 No callback registered")));
    EXPECT_THAT(mFramework->notifications(), IsEmpty());
}

TEST_F(TorchStatusTest, TheFrameworksTransportResultGoesBackToTheProvider) {
    recordFault("framework's callback", "a torch status fails in transport",
                "the failure goes back to the provider");
    mFramework->rejected = {"device@3.2/legacy/1"};
    const Return<void> result =
            mObject->torchModeStatusChange("device@3.2/external/1", TorchModeStatus::AVAILABLE_ON);
    EXPECT_FALSE(result.isOk());
    EXPECT_TRUE(result.isDeadObject());
}

TEST_F(TorchStatusTest, TheLockIsNeitherTakenNorNeeded) {
    const std::lock_guard<std::mutex> lock(mObject->mActiveDevicesMutex);
    EXPECT_TRUE(
            mObject->torchModeStatusChange("device@3.2/external/1", TorchModeStatus::AVAILABLE_ON)
                    .isOk());
    EXPECT_THAT(mFramework->notifications(), SizeIs(1));
}

TEST_F(TorchStatusTest, ANameThatDoesNotParseIsForwardedWithoutFurtherAdo) {
    EXPECT_TRUE(mObject->torchModeStatusChange("camera0", TorchModeStatus::AVAILABLE_ON).isOk());
    EXPECT_THAT(mFramework->notifications(),
                ElementsAre(torchNotification("@/legacy/", TorchModeStatus::AVAILABLE_ON)));
    EXPECT_THAT(mLog.lines(),
                ElementsAre(infoLine("Torchmode changed  for camera0"), translated("camera0")));
}

using TorchStatusDeathTest = DeviceStatusTest;

TEST_F(TorchStatusDeathTest, AnEmptyNameEndsTheProcess) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                (void)mObject->torchModeStatusChange("", TorchModeStatus::AVAILABLE_ON).isOk();
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(shutdownText(
                    {infoLine("Torchmode changed  for "), translated(""),
                     errorLine("FATAL: Failed to find replacement provider for legacy/0. Name "
                               "can't be empty.")})));
}

}  // namespace
}  // namespace orvo::test
