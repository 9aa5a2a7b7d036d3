// SPDX-License-Identifier: Apache-2.0
// The way back of a provider that died.

#include <chrono>

#include "tests/support/Fault.h"
#include "tests/support/RecoveryTest.h"

namespace orvo::test {
namespace {

using android::sp;
using android::wp;
using android::hardware::camera::provider::V2_4::ICameraProvider;
using android::hardware::camera::provider::V2_4::ICameraProviderCallback;
using std::chrono::nanoseconds;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

constexpr char kName[] = "external/0";
constexpr std::chrono::milliseconds kPause(500);

class ReconnectionTest : public RecoveryTest {
  protected:
    ReconnectionTest() { connect({kName, "virtual/0"}); }

    void TearDown() override {
        mNext.clear();
        RecoveryTest::TearDown();
    }

    // Registers a fresh service in place of the dead one.
    void restart() {
        mNext = new ScriptedProvider;
        mProxy->start(kName, mNext);
    }

    // Lets the service come back just before the reconnection's look-up number `lookup`.
    void restartBeforeLookup(int lookup) {
        mProxy->stop(kName);
        mProxy->onGetService = [this, lookup](const std::string&) {
            if (mProxy->lookups(kName) - 1 == lookup - 1) restart();
        };
    }

    // The lines of the reconnection, after all of it has ended.
    std::vector<LogLine> finish() {
        finishReconnections();
        return mLog.take();
    }

    int reconnectionLookups() { return mProxy->lookups(kName) - 1; }

    sp<ScriptedProvider> mNext;
    const LogLine mNoService = errorLine("Failed to get service external/0");
};

TEST_F(ReconnectionTest, AProviderThatIsBackAtOnceIsReconnectedAtTheFirstAttempt) {
    restart();
    const sp<ScriptedProvider> oldShim = mShims.shim(kName);
    die(kName);
    EXPECT_THAT(finish(), ElementsAre(reconnectedLine(kName, 1)));

    EXPECT_EQ(reconnectionLookups(), 1);
    EXPECT_THAT(mSleep.sleeps(), ElementsAre(kPause)) << "there is a pause before the first one";
    EXPECT_EQ(descriptor(kName)->mProvider, mNext);
    EXPECT_EQ(descriptor(kName)->mShim.promote(), mShims.shim(kName));
    EXPECT_NE(mShims.shim(kName), oldShim);
    EXPECT_EQ(mShims.calls().back().provider, mNext.get());
}

TEST_F(ReconnectionTest, TheNewServiceIsLinkedWithTheSameCookie) {
    restart();
    die(kName);
    finish();
    ASSERT_THAT(mNext->links(), SizeIs(1));
    EXPECT_EQ(mNext->links()[0].cookie, cookie(kName));
    const sp<android::hardware::hidl_death_recipient> object = mObject;
    EXPECT_EQ(mNext->links()[0].recipient.promote(), object);
}

TEST_F(ReconnectionTest, TheObjectIsRegisteredWithTheNewShimOnly) {
    restart();
    const sp<ScriptedProvider> oldShim = mShims.shim(kName);
    die(kName);
    finish();
    const sp<ICameraProviderCallback> object = mObject;
    EXPECT_THAT(mShims.shim(kName)->callbacks(), ElementsAre(object))
            << "although the framework has registered nothing";
    EXPECT_THAT(mNext->callbacks(), IsEmpty()) << "the service itself gets none";
    EXPECT_THAT(oldShim->callbacks(), IsEmpty());
    EXPECT_THAT(mShims.shim("virtual/0")->callbacks(), IsEmpty());
}

TEST_F(ReconnectionTest, AProviderThatIsBackAfterThreeAttemptsIsReconnectedAtTheFourth) {
    recordFault("service look-up", "the first three look-ups after a death fail",
                "the fourth attempt connects it");
    restartBeforeLookup(4);
    die(kName);
    EXPECT_THAT(finish(),
                ElementsAre(mNoService, mNoService, mNoService, reconnectedLine(kName, 4)));
    EXPECT_EQ(descriptor(kName)->mProvider, mNext);
}

TEST_F(ReconnectionTest, AProviderThatNeverComesBackIsGivenUpAfterTenAttempts) {
    recordFault("service look-up", "a provider that died never comes back",
                "ten attempts, then an error line; the other providers are served on");
    EXPECT_EQ(mObject->setCallback(mFramework), Status::OK);
    reportPresent({"device@3.2/external/1", "device@3.2/virtual/2"});
    mShims.shim("virtual/0")->cameraIds.value = {"device@3.2/virtual/2"};
    mProxy->stop(kName);
    die(kName);
    std::vector<LogLine> expected(10, mNoService);
    expected.push_back(gaveUpLine(kName));
    EXPECT_EQ(finish(), expected);
    EXPECT_EQ(reconnectionLookups(), 10);
    EXPECT_EQ(descriptor(kName)->mProvider, nullptr);
    EXPECT_NE(descriptor(kName)->mShim.promote(), nullptr) << "as the last attempt left it";
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/2", "device@3.2/virtual/2")));

    // The others are served on.
    std::vector<std::string> names;
    mObject->getCameraIdList([&](Status status, const auto& listed) {
        EXPECT_EQ(status, Status::OK);
        names.assign(listed.begin(), listed.end());
    });
    EXPECT_THAT(names, ElementsAre("device@3.2/virtual/2"));
    mLog.take();
    reportPresent({"device@3.2/virtual/3"});
    EXPECT_EQ(mFramework->notifications().back(),
              deviceNotification("device@3.2/legacy/3", CameraDeviceStatus::PRESENT));
}

TEST_F(ReconnectionTest, AfterTheTenthAttemptTheDescriptorKeepsWhatThatOneLeft) {
    recordFault("underlying `setCallback`", "fails in transport in every reconnection",
                "given up after ten attempts; the provider stays connected, with its last shim");
    restart();
    mShims.makeWith(kName, [this] {
        const sp<ScriptedProvider> shim = new ScriptedProvider;
        shim->setCallbackFails = true;
        mServices["shim"] = shim;
        return shim.get();
    });
    die(kName);
    EXPECT_THAT(finish(), ElementsAre(gaveUpLine(kName)));
    EXPECT_EQ(reconnectionLookups(), 10);
    EXPECT_EQ(descriptor(kName)->mProvider, mNext);
    EXPECT_EQ(descriptor(kName)->mShim.promote(), mServices["shim"]);
    EXPECT_EQ(mNext->unlinkCalls(), 0);
    EXPECT_THAT(mNext->links(), SizeIs(10)) << "as each attempt linked";
}

TEST_F(ReconnectionTest, EveryAttemptIsPrecededByAPauseOfTheSameLength) {
    std::vector<std::string> events;
    mProxy->onGetService = [&](const std::string&) { events.push_back("attempt"); };
    mSleep.onSleep = [&](nanoseconds) {
        mReconnection.pass();
        events.push_back("pause");
    };
    mProxy->stop(kName);
    die(kName);
    EXPECT_EQ(finish().back(), gaveUpLine(kName));
    std::vector<std::string> expected;
    for (int attempt = 1; attempt <= 10; ++attempt) {
        expected.push_back("pause");
        expected.push_back("attempt");
    }
    EXPECT_EQ(events, expected);
    EXPECT_EQ(mSleep.sleeps(), std::vector<nanoseconds>(10, kPause)) << "no growth, no jitter";
}

TEST_F(ReconnectionTest, AProviderWhoseShimCannotBeMadeIsGivenUpAlthoughItsServiceIsFound) {
    recordFault("shim creation", "the factory returns null to every reconnection",
                "ten attempts, each undone, then given up");
    restart();
    mShims.refuse(kName);
    die(kName);
    const LogLine noShim = errorLine("Failed to create QuillCameraProviderShim for external/0");
    std::vector<LogLine> expected(10, noShim);
    expected.push_back(gaveUpLine(kName));
    EXPECT_EQ(finish(), expected);
    EXPECT_EQ(reconnectionLookups(), 10);
    EXPECT_THAT(mNext->links(), IsEmpty());
    EXPECT_EQ(mNext->unlinkCalls(), 10);
    EXPECT_EQ(descriptor(kName)->mProvider, nullptr);
    EXPECT_EQ(descriptor(kName)->mShim.promote(), nullptr);
}

TEST_F(ReconnectionTest, AFailedLinkCostsAnAttempt) {
    recordFault("death link", "a reconnection cannot link",
                "an error line; the next attempt is made");
    restart();
    mNext->linkRefused = true;
    mProxy->onGetService = [this](const std::string&) {
        if (reconnectionLookups() == 1) restart();
    };
    die(kName);
    EXPECT_THAT(finish(), ElementsAre(errorLine("Could not link to death for external/0"),
                                      reconnectedLine(kName, 2)));
}

TEST_F(ReconnectionTest, AnErrorStatusOfSetCallbackCountsAsReconnected) {
    recordFault("underlying `setCallback`", "answers an error status to a reconnection",
                "ignored: the provider counts as reconnected");
    restart();
    const sp<ScriptedProvider> shim = new ScriptedProvider;
    shim->setCallbackStatus = Status::INTERNAL_ERROR;
    mShims.prepare(kName, shim);
    die(kName);
    EXPECT_THAT(finish(), ElementsAre(reconnectedLine(kName, 1)));
    EXPECT_THAT(shim->callbacks(), SizeIs(1));
}

TEST_F(ReconnectionTest, ATransportFailureOfSetCallbackCostsAnAttemptSilently) {
    recordFault("underlying `setCallback`", "fails in transport in a reconnection",
                "costs an attempt, without a line");
    restart();
    const sp<ScriptedProvider> shim = new ScriptedProvider;
    shim->setCallbackFails = true;
    mShims.prepare(kName, shim);
    die(kName);
    EXPECT_THAT(finish(), ElementsAre(reconnectedLine(kName, 2)));
    EXPECT_THAT(shim->callbacks(), SizeIs(1));
    EXPECT_EQ(reconnectionLookups(), 2);
    EXPECT_THAT(mShims.shim(kName)->callbacks(), SizeIs(1));
}

// A shim that its library has let go of by the time it is needed.
class LostShim : public ScriptedProvider {
  public:
    LostShim() { extendObjectLifetime(OBJECT_LIFETIME_WEAK); }
    bool onIncStrongAttempted(uint32_t /* flags */, const void* /* id */) override { return false; }
};

TEST_F(ReconnectionTest, AShimThatIsGoneAgainCostsAnAttemptSilently) {
    recordFault("shim creation", "the new shim is gone before it is used",
                "costs an attempt, without a line");
    restart();
    sp<LostShim> shim = new LostShim;
    const wp<LostShim> weak = shim;
    LostShim* const lost = shim.get();
    shim.clear();  // Its memory lasts as long as `weak`.
    mShims.makeWith(kName, [this, lost] {
        if (reconnectionLookups() < 3) return static_cast<ICameraProvider*>(lost);
        const sp<ScriptedProvider> kept = new ScriptedProvider;
        mServices["kept"] = kept;
        return static_cast<ICameraProvider*>(kept.get());
    });
    die(kName);
    EXPECT_THAT(finish(), ElementsAre(reconnectedLine(kName, 3)));
    EXPECT_THAT(lost->callbacks(), IsEmpty());
    EXPECT_THAT(mServices["kept"]->callbacks(), SizeIs(1));
}

TEST_F(ReconnectionTest, TheCamerasComeBackWhenTheProviderReportsThemAndNotBefore) {
    EXPECT_EQ(mObject->setCallback(mFramework), Status::OK);
    reportPresent({"device@3.2/external/1", "device@3.2/virtual/2"});
    restart();
    die(kName);
    finish();
    EXPECT_THAT(activeDevices(), SizeIs(1));
    EXPECT_EQ(mProperties.value("camera.external.ids"), "");
    const size_t heard = mFramework->notifications().size();

    const sp<ICameraProviderCallback> registered = mShims.shim(kName)->callbacks()[0];
    EXPECT_TRUE(
            registered
                    ->cameraDeviceStatusChange("device@3.2/external/1", CameraDeviceStatus::PRESENT)
                    .isOk());
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/1", "device@3.2/external/1"),
                                             Pair("device@3.2/legacy/2", "device@3.2/virtual/2")));
    EXPECT_EQ(mProperties.value("camera.external.ids"), "1");
    EXPECT_EQ(mProperties.value("camera.virtual.ids"), "2");
    EXPECT_THAT(mFramework->notifications(), SizeIs(heard + 1));
}

TEST_F(ReconnectionTest, TheAddedPropertyIsTouchedNeitherByADeathNorByAReconnection) {
    constexpr char kAdded[] = "service.cam_prvdr.external_0.added";
    ASSERT_THAT(mProperties.writes(), ElementsAre(PropertyWrite{kAdded, "1"}));
    restart();
    die(kName);
    EXPECT_EQ(mProperties.value(kAdded), "1");
    finish();
    EXPECT_THAT(mProperties.writes(), SizeIs(1));
}

TEST_F(ReconnectionTest, TheThreadHoldsNoReferenceToTheObject) {
    Gate inside;
    mProxy->onGetService = [&](const std::string&) { inside.pass(); };
    die(kName);
    mReconnection.open();
    ASSERT_TRUE(inside.waitForArrivals(1));
    EXPECT_EQ(mObject->getStrongCount(), 1);
    inside.open();
    finish();
}

TEST_F(ReconnectionTest, TheThreadHasACopyOfTheName) {
    restart();
    Descriptor renamed;
    renamed.mName = kName;
    mObject->serviceDied(reinterpret_cast<uintptr_t>(&renamed), nullptr);
    ASSERT_TRUE(mReconnection.waitForArrivals(1));
    renamed.mName = "virtual/0";
    EXPECT_THAT(finish(), ElementsAre(diedLine(kName), reconnectedLine(kName, 1)));
    EXPECT_EQ(renamed.mProvider, mNext);
}

TEST_F(ReconnectionTest, NoLockIsHeldDuringAnAttempt) {
    restart();
    mProxy->onGetService = [this](const std::string&) { EXPECT_TRUE(activeDevicesAreUnlocked()); };
    const sp<ScriptedProvider> shim = new ScriptedProvider;
    shim->onCall = [this](const std::string&) { EXPECT_TRUE(activeDevicesAreUnlocked()); };
    mShims.prepare(kName, shim);
    die(kName);
    EXPECT_THAT(finish(), ElementsAre(reconnectedLine(kName, 1)));
}

TEST_F(ReconnectionTest, TwoProvidersComeBackIndependently) {
    restart();
    die(kName);
    die("virtual/0");
    const std::vector<LogLine> lines = finish();
    EXPECT_THAT(lines, ::testing::UnorderedElementsAre(reconnectedLine(kName, 1),
                                                       reconnectedLine("virtual/0", 1)));
    EXPECT_NE(descriptor(kName)->mProvider, nullptr);
    EXPECT_NE(descriptor("virtual/0")->mProvider, nullptr);
}

TEST_F(ReconnectionTest, AProviderThatDiesAgainAfterwardsIsReconnectedAgain) {
    restart();
    die(kName);
    EXPECT_THAT(finish(), ElementsAre(reconnectedLine(kName, 1)));
    const sp<ScriptedProvider> second = mNext;
    restart();
    second->die();
    EXPECT_THAT(finish(), ElementsAre(diedLine(kName), reconnectedLine(kName, 1)));
    EXPECT_EQ(descriptor(kName)->mProvider, mNext);
}

// The provider is back, and dies again while the first thread is still registering the object with
// its shim: the second thread does its own work, and the first one then ends as if nothing had
// happened.
TEST_F(ReconnectionTest, ASecondDeathWhileTheFirstThreadStillRunsStartsASecondThread) {
    restart();
    Gate registering;
    const sp<ScriptedProvider> firstShim = new ScriptedProvider;
    firstShim->onCall = [&](const std::string&) { registering.pass(); };
    mShims.prepare(kName, firstShim);
    die(kName);
    mReconnection.open();
    ASSERT_TRUE(registering.waitForArrivals(1));

    const sp<ScriptedProvider> firstReturn = mNext;
    restart();
    firstReturn->die();
    EXPECT_TRUE(mLog.waitFor(reconnectedLine(kName, 1)));
    EXPECT_THAT(mLog.take(), ElementsAre(diedLine(kName), reconnectedLine(kName, 1)));
    EXPECT_EQ(descriptor(kName)->mProvider, mNext);

    registering.open();
    EXPECT_THAT(finish(), ElementsAre(reconnectedLine(kName, 1)));
    EXPECT_EQ(descriptor(kName)->mProvider, mNext) << "the first thread changes nothing any more";
    EXPECT_EQ(descriptor(kName)->mShim.promote(), mShims.shim(kName));
    EXPECT_THAT(mNext->links(), SizeIs(1));
}

// The object is registered with the shim that was made, whatever has become of its service.
TEST_F(ReconnectionTest, ASecondDeathDuringTheConnectionDoesNotEndTheAttempt) {
    restart();
    mNext->onLinked = [this] { descriptor(kName)->mProvider = nullptr; };
    die(kName);
    EXPECT_THAT(finish(), ElementsAre(reconnectedLine(kName, 1)));
    EXPECT_THAT(mShims.shim(kName)->callbacks(), SizeIs(1));
}

TEST_F(ReconnectionTest, GivingUpIsFinalForThatDeath) {
    mProxy->stop(kName);
    die(kName);
    EXPECT_EQ(finish().back(), gaveUpLine(kName));
    restart();
    EXPECT_EQ(reconnectionLookups(), 10) << "nobody looks any more";
    EXPECT_THAT(mNext->links(), IsEmpty()) << "so that no later death is heard of";
}

}  // namespace
}  // namespace orvo::test
