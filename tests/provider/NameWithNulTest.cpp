// SPDX-License-Identifier: Apache-2.0
// Names may hold any byte: one with a NUL in it is kept and passed on whole.

#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using namespace std::string_literals;

// The NUL stands in front of every separator of the name.
const std::string kProviderName = "dev\0ice@3.2/external/1"s;
const std::string kFrameworkName = "dev\0ice@3.2/legacy/1"s;

class NameWithNulTest : public ProviderTest {
  protected:
    NameWithNulTest() {
        makeConnectedObject({"external/0"});
        mObject->mCallback = mFramework;
    }

    std::vector<std::string> askedDevices() { return mShims.shim("external/0")->askedDevices(); }
};

TEST_F(NameWithNulTest, ADeviceIsRecordedListedAndForwardedWhole) {
    mObject->cameraDeviceStatusChange(kProviderName, CameraDeviceStatus::PRESENT);
    EXPECT_THAT(activeDevices(), ElementsAre(Pair(kFrameworkName, kProviderName)));
    EXPECT_EQ(mProperties.value("camera.external.ids"), "1");
    EXPECT_THAT(mFramework->notifications(),
                ElementsAre(deviceNotification(kFrameworkName, CameraDeviceStatus::PRESENT)));
    EXPECT_EQ(mLog.count(errorLine("Failed to parse device name dev")), 0u) << "it parses";
}

TEST_F(NameWithNulTest, TheIdKeepsWhatFollowsTheNul) {
    mObject->cameraDeviceStatusChange("device@3.2/external/1\0x"s, CameraDeviceStatus::PRESENT);
    mObject->cameraDeviceStatusChange("device@3.2/external/1\0y"s, CameraDeviceStatus::PRESENT);
    EXPECT_THAT(activeDevices(),
                ElementsAre(Pair("device@3.2/legacy/1\0x"s, "device@3.2/external/1\0x"s),
                            Pair("device@3.2/legacy/1\0y"s, "device@3.2/external/1\0y"s)));
}

TEST_F(NameWithNulTest, ADeviceThatLeavesIsForgottenAndForwardedWhole) {
    reportPresent({kProviderName, "device@3.2/external/2"});
    mObject->cameraDeviceStatusChange(kProviderName, CameraDeviceStatus::NOT_PRESENT);
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/2", "device@3.2/external/2")));
    EXPECT_EQ(mProperties.value("camera.external.ids"), "2");
    EXPECT_EQ(mFramework->notifications().back(),
              deviceNotification(kFrameworkName, CameraDeviceStatus::NOT_PRESENT));
}

TEST_F(NameWithNulTest, ADeviceOfADeadProviderIsWithdrawnWhole) {
    reportPresent({kProviderName});
    EXPECT_EQ(mObject->removeAndNotifyDevicesByProviderName("external/0"), 1u);
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_EQ(mProperties.value("camera.external.ids"), "");
    EXPECT_EQ(mFramework->notifications().back(),
              deviceNotification(kFrameworkName, CameraDeviceStatus::NOT_PRESENT));
}

TEST_F(NameWithNulTest, ATorchChangeIsForwardedWhole) {
    mObject->torchModeStatusChange(kProviderName, TorchModeStatus::AVAILABLE_ON);
    EXPECT_THAT(mFramework->notifications(),
                ElementsAre(torchNotification(kFrameworkName, TorchModeStatus::AVAILABLE_ON)));
}

TEST_F(NameWithNulTest, ANameThatBeginsWithANulIsNotEmpty) {
    EXPECT_EQ(mObject->providerDeviceNameToAndroidDeviceName("\0@3.2/external/1"s),
              "\0@3.2/legacy/1"s);
    EXPECT_EQ(mObject->providerDeviceNameToAndroidDeviceName("\0"s), "@/legacy/");
}

TEST_F(NameWithNulTest, AFrameworksNameIsLookedUpWhole) {
    reportPresent({kProviderName});
    EXPECT_EQ(mObject->androidDeviceNameToProviderDeviceName(kFrameworkName), kProviderName);
    EXPECT_THAT(mLog.lines(), IsEmpty()) << "it parses";
}

TEST_F(NameWithNulTest, ADeviceIsAskedForWhole) {
    reportPresent({kProviderName});
    mObject->getCameraDeviceInterface_V1_x(kFrameworkName, [](Status, const auto&) {});
    mObject->getCameraDeviceInterface_V3_x(kFrameworkName, [](Status, const auto&) {});
    EXPECT_THAT(askedDevices(), ElementsAre("1 " + kProviderName, "3 " + kProviderName));
}

TEST_F(NameWithNulTest, ADeclaredProviderOfASimilarNameIsNotConnected) {
    const std::string name = "external/0\0x"s;
    const int lookups = mProxy->lookups("external/0");
    mProxy->declared = {name};
    mObject->initialize();
    EXPECT_EQ(mProxy->lookups(name), 0);
    EXPECT_EQ(mProxy->lookups("external/0"), lookups);
}

}  // namespace
}  // namespace orvo::test
