// SPDX-License-Identifier: Apache-2.0
// The framework registers anew in the middle of something: which of its callbacks hears of it.

#include <functional>
#include <utility>

#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using android::sp;
using android::wp;
using android::hardware::camera::provider::V2_4::ICameraProviderCallback;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ReplacedCallbackTest : public ProviderTest {
  protected:
    ReplacedCallbackTest() : mLater(new RecordingCallback) {
        makeConnectedObject({"external/0"});
        mObject->mCallback = mFramework;
    }

    void TearDown() override {
        mLater.clear();
        // They hold callbacks, too.
        mLog.onLine = nullptr;
        mProperties.onWrite = nullptr;
        ProviderTest::TearDown();
    }

    // The framework registers that callback when the line is logged.
    void registerAtLine(const LogLine& last, const sp<RecordingCallback>& callback) {
        mLog.onLine = [this, last, callback](const LogLine& line) {
            if (line == last) mObject->mCallback = callback;
        };
    }

    // The framework registers that callback while an id property is written.
    void registerAtWrite(const sp<RecordingCallback>& callback) {
        // As setCallback does; nobody asks it here, because the lock is held.
        mProperties.onWrite = [this, callback] { mObject->mCallback = callback; };
    }

    void reportDevice(CameraDeviceStatus status) {
        EXPECT_TRUE(mObject->cameraDeviceStatusChange("device@3.2/external/1", status).isOk());
    }

    void reportTorch() {
        EXPECT_TRUE(mObject->torchModeStatusChange("device@3.2/external/1",
                                                   TorchModeStatus::AVAILABLE_ON)
                            .isOk());
    }

    // Reports devices of those ids, of which nobody hears.
    void appear(const std::vector<std::string>& ids) {
        const sp<ICameraProviderCallback> callback = std::exchange(mObject->mCallback, nullptr);
        for (const std::string& id : ids) reportPresent({"device@3.2/external/" + id});
        mObject->mCallback = callback;
    }

    size_t withdraw() { return mObject->removeAndNotifyDevicesByProviderName("external/0"); }

    static Notification gone(const std::string& id) {
        return deviceNotification("device@3.2/legacy/" + id, CameraDeviceStatus::NOT_PRESENT);
    }

    // How many notifications the framework's callback hears although everybody else lets go of it
    // in the first one.
    int heardWithoutBeingHeld(const std::function<void()>& notify) {
        const wp<RecordingCallback> callback = mFramework;
        int heard = 0;
        mFramework->onNotification = [&](const Notification&) {
            ++heard;
            mObject->setCallback(nullptr);
            mFramework.clear();
            EXPECT_NE(callback.promote(), nullptr);
        };
        notify();
        EXPECT_EQ(callback.promote(), nullptr) << "it is released afterwards";
        return heard;
    }

    sp<RecordingCallback> mLater;
    const LogLine mTranslated =
            infoLine("providerDeviceNameToAndroidDeviceName device@3.2/external/1");
    const LogLine mActive =
            infoLine("mActiveDevices Key: device@3.2/legacy/1, Value: device@3.2/external/1");
};

TEST_F(ReplacedCallbackTest, ADeviceStatusGoesToTheCallbackOfTheEndOfTheUpdate) {
    registerAtWrite(mLater);
    reportDevice(CameraDeviceStatus::PRESENT);
    EXPECT_THAT(mFramework->notifications(), IsEmpty());
    EXPECT_THAT(
            mLater->notifications(),
            ElementsAre(deviceNotification("device@3.2/legacy/1", CameraDeviceStatus::PRESENT)));

    mProperties.onWrite = nullptr;
    registerAtLine(mActive, mFramework);
    reportDevice(CameraDeviceStatus::ENUMERATING);
    EXPECT_THAT(mFramework->notifications(),
                ElementsAre(deviceNotification("device@3.2/legacy/1",
                                               CameraDeviceStatus::ENUMERATING)));
}

TEST_F(ReplacedCallbackTest, ACallbackThatIsTakenAwayDuringTheUpdateHearsNoDeviceStatus) {
    registerAtWrite(nullptr);
    reportDevice(CameraDeviceStatus::PRESENT);
    EXPECT_THAT(mFramework->notifications(), IsEmpty());
    EXPECT_EQ(mLog.lines().back(),
              warningLine("cameraDeviceStatusChange:358 No callback registered"));
}

TEST_F(ReplacedCallbackTest, ATorchStatusGoesToTheCallbackOfTheEndOfTheTranslation) {
    registerAtLine(mTranslated, mLater);
    reportTorch();
    EXPECT_THAT(mFramework->notifications(), IsEmpty());
    EXPECT_THAT(
            mLater->notifications(),
            ElementsAre(torchNotification("device@3.2/legacy/1", TorchModeStatus::AVAILABLE_ON)));
}

TEST_F(ReplacedCallbackTest, AWithdrawalGoesToACallbackThatComesWhileTheDevicesAreForgotten) {
    mObject->mCallback = nullptr;
    reportPresent({"device@3.2/external/1"});
    registerAtWrite(mLater);
    EXPECT_EQ(withdraw(), 1u);
    EXPECT_THAT(mLater->notifications(), ElementsAre(gone("1")));
}

TEST_F(ReplacedCallbackTest, AWithdrawalIsSilentWhenTheCallbackGoesWhileTheDevicesAreForgotten) {
    appear({"1"});
    registerAtWrite(nullptr);
    EXPECT_EQ(withdraw(), 0u);
    EXPECT_THAT(mFramework->notifications(), IsEmpty());
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(ReplacedCallbackTest, ALaterCallbackHearsTheRestOfAWithdrawal) {
    appear({"1", "2", "3"});
    mFramework->onNotification = [this](const Notification&) { mObject->setCallback(mLater); };
    EXPECT_EQ(withdraw(), 3u);
    EXPECT_THAT(mFramework->notifications(), ElementsAre(gone("1")));
    EXPECT_THAT(mLater->notifications(), ElementsAre(gone("2"), gone("3")));
}

// Each change of the registration comes while the notification of that number is being heard.
TEST_F(ReplacedCallbackTest, ACallbackThatIsTakenAwayHearsTheWithdrawalUntilThereIsAnother) {
    appear({"1", "2", "3", "4"});
    mFramework->onNotification = [this](const Notification& notification) {
        mObject->setCallback(notification == gone("1") ? nullptr : mLater);
    };
    mLater->onNotification = [this](const Notification&) { mObject->setCallback(nullptr); };
    EXPECT_EQ(withdraw(), 4u);
    EXPECT_THAT(mFramework->notifications(), ElementsAre(gone("1"), gone("2")));
    EXPECT_THAT(mLater->notifications(), ElementsAre(gone("3"), gone("4")));
    EXPECT_EQ(mLog.lines().back(),
              infoLine("Notified framework about 4/4 devices from dead provider external"));
}

TEST_F(ReplacedCallbackTest, ACallbackLastsUntilItHasHeardTheRestOfAWithdrawal) {
    appear({"1", "2"});
    EXPECT_EQ(heardWithoutBeingHeld([this] { withdraw(); }), 2);
}

TEST_F(ReplacedCallbackTest, ACallbackLastsUntilItHasHeardADeviceStatus) {
    EXPECT_EQ(heardWithoutBeingHeld([this] { reportDevice(CameraDeviceStatus::PRESENT); }), 1);
}

TEST_F(ReplacedCallbackTest, ACallbackLastsUntilItHasHeardATorchStatus) {
    EXPECT_EQ(heardWithoutBeingHeld([this] { reportTorch(); }), 1);
}

}  // namespace
}  // namespace orvo::test
