// SPDX-License-Identifier: Apache-2.0
// The death of an underlying provider: the dropped connection and the withdrawn cameras.

#include <system_error>
#include <thread>

#include "tests/support/FailingThreads.h"
#include "tests/support/Fault.h"
#include "tests/support/RecoveryTest.h"

namespace orvo::test {
namespace {

using android::sp;
using android::wp;
using android::hardware::hidl_death_recipient;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

class ServiceDiedTest : public RecoveryTest {
  protected:
    static Notification gone(const std::string& name) {
        return deviceNotification(name, CameraDeviceStatus::NOT_PRESENT);
    }

    // The lines of dead object failures of notifications about `name`.
    static LogLine rejectedLine(const std::string& name) {
        const auto failure = android::hardware::Status::fromStatusT(android::DEAD_OBJECT);
        return errorLine("Failed to notify camera service about " + name + ": " +
                         failure.description());
    }

    void setCallback() {
        EXPECT_EQ(mObject->setCallback(mFramework), Status::OK);
        mLog.take();
    }
};

TEST_F(ServiceDiedTest, ANullCookieIsLoggedAndChangesNothing) {
    connect({"external/0"});
    setCallback();
    reportPresent({"device@3.2/external/1"});
    const auto writes = mProperties.writes();
    mObject->serviceDied(0, nullptr);
    EXPECT_THAT(mLog.lines(), ElementsAre(errorLine("serviceDied: serviceDied with null cookie")));
    EXPECT_NE(descriptor("external/0")->mProvider, nullptr);
    EXPECT_EQ(service("external/0").unlinkCalls(), 0);
    EXPECT_THAT(activeDevices(), SizeIs(1));
    EXPECT_EQ(mProperties.writes(), writes);
    EXPECT_THAT(mFramework->notifications(), SizeIs(1));
    finishReconnections();
    EXPECT_EQ(mProxy->lookups("external/0"), 1) << "no thread was started";
}

TEST_F(ServiceDiedTest, ADeathWithoutActiveDevicesIsLoggedAndStartsAReconnection) {
    connect({"external/0"});
    setCallback();
    EXPECT_THAT(die("external/0"), ElementsAre(diedLine("external/0")));
    EXPECT_THAT(mFramework->notifications(), IsEmpty());
    EXPECT_TRUE(mReconnection.waitForArrivals(1));
}

TEST_F(ServiceDiedTest, TheConnectionIsUnlinkedAndDroppedButTheShimStays) {
    connect({"external/0", "virtual/0"});
    const sp<ScriptedProvider> shim = mShims.shim("external/0");
    die("external/0");
    EXPECT_EQ(service("external/0").unlinkCalls(), 1);
    EXPECT_EQ(descriptor("external/0")->mProvider, nullptr);
    EXPECT_EQ(descriptor("external/0")->mShim.promote(), shim);
    EXPECT_THAT(mObject->mHalDescriptors, SizeIs(2)) << "descriptors are never removed";
    EXPECT_NE(descriptor("virtual/0")->mProvider, nullptr);
    EXPECT_EQ(service("virtual/0").unlinkCalls(), 0);
}

TEST_F(ServiceDiedTest, TheDeadServiceIsReleased) {
    connect({"external/0"});
    mProxy->start("external/0", new ScriptedProvider);
    const wp<ScriptedProvider> dead = mServices["external/0"];
    const uint64_t deathCookie = cookie("external/0");
    mServices.clear();
    mObject->serviceDied(deathCookie, nullptr);
    EXPECT_EQ(dead.promote(), nullptr);
}

TEST_F(ServiceDiedTest, AProviderThatIsAlreadyDisconnectedIsNotUnlinked) {
    connect({"external/0"});
    descriptor("external/0")->mProvider = nullptr;
    EXPECT_THAT(die("external/0"), ElementsAre(diedLine("external/0")));
    EXPECT_EQ(service("external/0").unlinkCalls(), 0);
    EXPECT_TRUE(mReconnection.waitForArrivals(1));
}

TEST_F(ServiceDiedTest, AFailedUnlinkIsIgnored) {
    recordFault("death link", "the dead service cannot be unlinked",
                "ignored: it is dropped and reconnected as ever");
    connect({"external/0"});
    service("external/0").unlinkFails = true;
    EXPECT_THAT(die("external/0"), ElementsAre(diedLine("external/0")));
    EXPECT_EQ(descriptor("external/0")->mProvider, nullptr);
    EXPECT_TRUE(mReconnection.waitForArrivals(1));
}

TEST_F(ServiceDiedTest, TheDevicesOfTheTypeAreWithdrawnInKeyOrder) {
    connect({"external/0", "virtual/0"});
    setCallback();
    reportPresent({"device@3.2/external/2", "device@3.2/external/1", "device@3.2/virtual/7"});
    const size_t earlierWrites = mProperties.writes().size();
    const size_t earlierNotifications = mFramework->notifications().size();

    EXPECT_THAT(die("external/0"),
                ElementsAre(diedLine("external/0"), withdrawnLine(2, 2, "external")));
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/7", "device@3.2/virtual/7")));
    EXPECT_EQ(mProperties.value("camera.external.ids"), "");
    EXPECT_EQ(mProperties.value("camera.virtual.ids"), "7") << "other types are untouched";
    std::vector<PropertyWrite> writes = mProperties.writes();
    writes.erase(writes.begin(), writes.begin() + earlierWrites);
    EXPECT_THAT(writes, ElementsAre(PropertyWrite{"camera.external.ids", "2"},
                                    PropertyWrite{"camera.external.ids", ""}));
    std::vector<Notification> told = mFramework->notifications();
    told.erase(told.begin(), told.begin() + earlierNotifications);
    EXPECT_THAT(told, ElementsAre(gone("device@3.2/legacy/1"), gone("device@3.2/legacy/2")));
}

TEST_F(ServiceDiedTest, TheConnectionIsDroppedBeforeTheDevicesAreWithdrawn) {
    connect({"external/0"});
    setCallback();
    reportPresent({"device@3.2/external/1"});
    int checks = 0;
    const auto check = [&] {
        ++checks;
        EXPECT_EQ(service("external/0").unlinkCalls(), 1);
        EXPECT_EQ(mObject->mHalDescriptors.begin()->mProvider, nullptr);
    };
    mProperties.onWrite = check;
    mFramework->onNotification = [&](const Notification&) { check(); };
    die("external/0");
    EXPECT_EQ(checks, 2);
}

TEST_F(ServiceDiedTest, TheFrameworkIsToldWithoutTheLockAndAfterAllDevicesAreForgotten) {
    connect({"external/0"});
    setCallback();
    reportPresent({"device@3.2/external/1", "device@3.2/external/2"});
    mProperties.onWrite = [this] { EXPECT_FALSE(activeDevicesAreUnlocked()); };
    mFramework->onNotification = [this](const Notification&) {
        EXPECT_TRUE(activeDevicesAreUnlocked());
        EXPECT_THAT(activeDevices(), IsEmpty());
        EXPECT_EQ(mProperties.value("camera.external.ids"), "");
    };
    die("external/0");
    EXPECT_THAT(mFramework->notifications(), SizeIs(4));
}

TEST_F(ServiceDiedTest, EachDeviceIsUnlistedBeforeItIsForgotten) {
    connect({"external/0"});
    reportPresent({"device@3.2/external/1", "device@3.2/external/2"});
    std::vector<std::map<std::string, std::string>> seen;
    mProperties.onWrite = [&] { seen.push_back(lockedActiveDevices()); };
    die("external/0");
    const auto first = Pair("device@3.2/legacy/1", "device@3.2/external/1");
    const auto second = Pair("device@3.2/legacy/2", "device@3.2/external/2");
    EXPECT_THAT(seen, ElementsAre(ElementsAre(first, second), ElementsAre(second)));
}

TEST_F(ServiceDiedTest, TheServiceIsUnlinkedBeforeItIsDropped) {
    connect({"external/0"});
    int unlinks = 0;
    service("external/0").onCall = [&](const std::string& operation) {
        if (operation != "unlinkToDeath") return;
        ++unlinks;
        EXPECT_EQ(mObject->mHalDescriptors.begin()->mProvider, mServices["external/0"]);
        EXPECT_TRUE(activeDevicesAreUnlocked());
    };
    die("external/0");
    EXPECT_EQ(unlinks, 1);
    finishReconnections();
}

TEST_F(ServiceDiedTest, TheDeathIsLoggedBeforeTheConnectionIsDropped) {
    connect({"external/0"});
    int lines = 0;
    mLog.onLine = [&](const LogLine& line) {
        if (!(line == diedLine("external/0"))) return;
        ++lines;
        EXPECT_EQ(service("external/0").unlinkCalls(), 0);
        EXPECT_EQ(mObject->mHalDescriptors.begin()->mProvider, mServices["external/0"]);
    };
    die("external/0");
    EXPECT_EQ(lines, 1);
    mLog.onLine = nullptr;
}

TEST_F(ServiceDiedTest, NothingIsLoggedUnderTheLock) {
    connect({"external/0"});
    setCallback();
    reportPresent({"device@3.2/external/1", "device@3.2/external/2"});
    mFramework->rejected = {"device@3.2/legacy/1"};
    mLog.onLine = [this](const LogLine& line) {
        EXPECT_TRUE(activeDevicesAreUnlocked()) << line.text;
    };
    EXPECT_THAT(die("external/0"), SizeIs(3));
}

TEST_F(ServiceDiedTest, WithoutACallbackTheDevicesAreForgottenSilently) {
    connect({"external/0"});
    reportPresent({"device@3.2/external/1", "device@3.2/external/2"});
    EXPECT_THAT(die("external/0"), ElementsAre(diedLine("external/0")));
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_EQ(mProperties.value("camera.external.ids"), "");
    EXPECT_TRUE(mReconnection.waitForArrivals(1));
}

TEST_F(ServiceDiedTest, TwoProvidersOfOneTypeLoseTheirDevicesTogether) {
    connect({"legacy/0", "legacy/1", "external/0"});
    setCallback();
    reportPresent({"device@3.2/legacy/0", "device@3.2/legacy/1", "device@3.2/external/5"});
    EXPECT_THAT(die("legacy/1"), ElementsAre(diedLine("legacy/1"), withdrawnLine(2, 2, "legacy")));
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/5", "device@3.2/external/5")));
    EXPECT_NE(descriptor("legacy/0")->mProvider, nullptr) << "the other one stays connected";
}

TEST_F(ServiceDiedTest, ARejectedNotificationIsLoggedAndTheOthersAreStillSent) {
    recordFault("framework's callback", "a withdrawal fails in transport",
                "an error line; the others are sent, the device stays withdrawn");
    connect({"legacy/0"});
    setCallback();
    reportPresent({"device@3.2/legacy/0", "device@3.2/legacy/1", "device@3.2/legacy/2"});
    mFramework->rejected = {"device@3.2/legacy/1"};
    EXPECT_THAT(die("legacy/0"),
                ElementsAre(diedLine("legacy/0"), rejectedLine("device@3.2/legacy/1"),
                            withdrawnLine(2, 3, "legacy")));
    EXPECT_EQ(mFramework->notifications().back(), gone("device@3.2/legacy/2"));
    EXPECT_THAT(activeDevices(), IsEmpty()) << "the rejected one stays forgotten";
}

TEST_F(ServiceDiedTest, AFrameworkThatIsGoneRejectsEverything) {
    connect({"legacy/0"});
    setCallback();
    reportPresent({"device@3.2/legacy/0", "device@3.2/legacy/1"});
    mFramework->rejected = {"device@3.2/legacy/0", "device@3.2/legacy/1"};
    EXPECT_THAT(die("legacy/0"),
                ElementsAre(diedLine("legacy/0"), rejectedLine("device@3.2/legacy/0"),
                            rejectedLine("device@3.2/legacy/1"), withdrawnLine(0, 2, "legacy")));
}

TEST_F(ServiceDiedTest, TheDeadProviderIsKnownByTheCookieAlone) {
    connect({"external/0", "virtual/0"});
    const wp<android::hidl::base::V1_0::IBase> other = mServices["external/0"];
    mObject->serviceDied(cookie("virtual/0"), other);
    EXPECT_THAT(mLog.take(), ElementsAre(diedLine("virtual/0")));
    EXPECT_NE(descriptor("external/0")->mProvider, nullptr);
    EXPECT_EQ(descriptor("virtual/0")->mProvider, nullptr);
}

TEST_F(ServiceDiedTest, AProviderNameWithoutASlashStillLosesItsConnectionAndIsReconnected) {
    connect({"external/0"});
    reportPresent({"device@3.2/external/1"});
    const sp<ScriptedProvider> lone = new ScriptedProvider;
    mServices["external"] = lone;
    mProxy->start("external", lone);
    Descriptor odd;
    odd.mName = "external";
    odd.mProvider = lone;
    mObject->serviceDied(reinterpret_cast<uintptr_t>(&odd), nullptr);
    EXPECT_EQ(lone->unlinkCalls(), 1);
    EXPECT_EQ(odd.mProvider, nullptr);
    EXPECT_THAT(activeDevices(), SizeIs(1));
    EXPECT_THAT(mLog.take(),
                ElementsAre(diedLine("external"),
                            errorLine("Invalid provider name format (missing '/'): external")));
    finishReconnections();
    EXPECT_THAT(mLog.lines(), ElementsAre(reconnectedLine("external", 1)));
}

TEST_F(ServiceDiedTest, DeathsMayComeOnSeveralThreadsAtOnce) {
    connect({"external/0", "virtual/0"});
    setCallback();
    reportPresent({"device@3.2/external/1", "device@3.2/virtual/2"});
    std::thread first([this] { service("external/0").die(); });
    std::thread second([this] { service("virtual/0").die(); });
    first.join();
    second.join();
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_EQ(mLog.count(withdrawnLine(1, 1, "external")), 1u);
    EXPECT_EQ(mLog.count(withdrawnLine(1, 1, "virtual")), 1u);
    EXPECT_TRUE(mReconnection.waitForArrivals(2)) << "each starts a thread of its own";
}

// A report of another provider comes in while the framework hears of the death.
TEST_F(ServiceDiedTest, OtherProvidersMayReportDuringTheNotifications) {
    connect({"external/0", "virtual/0"});
    setCallback();
    reportPresent({"device@3.2/external/1"});
    mFramework->onNotification = [this](const Notification& notification) {
        if (!(notification == gone("device@3.2/legacy/1"))) return;
        std::thread([this] { reportPresent({"device@3.2/virtual/2"}); }).join();
    };
    service("external/0").die();
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/2", "device@3.2/virtual/2")));
}

class WithdrawalTest : public ServiceDiedTest {
  protected:
    WithdrawalTest() { connect({"external/0"}); }

    size_t withdraw(const std::string& name) {
        return mObject->removeAndNotifyDevicesByProviderName(name);
    }
};

TEST_F(WithdrawalTest, AnswersHowManyNotificationsWereAccepted) {
    setCallback();
    reportPresent({"device@3.2/external/1", "device@3.2/external/2", "device@3.2/external/3"});
    mFramework->rejected = {"device@3.2/legacy/3"};
    EXPECT_EQ(withdraw("external/0"), 2u);
    EXPECT_EQ(withdraw("external/0"), 0u) << "nothing is left";
    EXPECT_THAT(mLog.take(),
                ElementsAre(rejectedLine("device@3.2/legacy/3"), withdrawnLine(2, 3, "external")));
}

TEST_F(WithdrawalTest, AnswersZeroWithoutACallback) {
    reportPresent({"device@3.2/external/1"});
    EXPECT_EQ(withdraw("external/0"), 0u);
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(WithdrawalTest, ANameWithoutASlashWithdrawsNothing) {
    setCallback();
    reportPresent({"device@3.2/external/1"});
    EXPECT_EQ(withdraw("external"), 0u);
    EXPECT_EQ(withdraw(""), 0u);
    EXPECT_THAT(activeDevices(), SizeIs(1));
    EXPECT_THAT(mFramework->notifications(), SizeIs(1));
    EXPECT_THAT(mLog.lines(),
                ElementsAre(errorLine("Invalid provider name format (missing '/'): external"),
                            errorLine("Invalid provider name format (missing '/'): ")));
}

TEST_F(WithdrawalTest, ADeviceWithoutAnIdIsWithdrawnToo) {
    setCallback();
    reportPresent({"device@3.2/external", "device@3.2/virtual"});
    EXPECT_EQ(withdraw("virtual/0"), 1u) << "both have the same name to the framework";
    reportPresent({"device@3.2/external"});
    EXPECT_EQ(withdraw("external/0"), 1u);
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_EQ(mFramework->notifications().back(), gone("device@3.2/legacy/"));
}

TEST_F(WithdrawalTest, TheInstanceBehindTheTypeDoesNotMatter) {
    setCallback();
    reportPresent({"device@3.2/external/1"});
    EXPECT_EQ(withdraw("external/never heard of/x"), 1u);
    EXPECT_THAT(mLog.lines(), ElementsAre(withdrawnLine(1, 1, "external")));
}

TEST_F(WithdrawalTest, TypesAreComparedWhole) {
    setCallback();
    reportPresent({"device@3.2/extern/1", "device@3.2/externals/2", "device@3.2/External/3"});
    EXPECT_EQ(withdraw("external/0"), 0u);
    EXPECT_THAT(activeDevices(), SizeIs(3));
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(WithdrawalTest, TheTypeOfTheProvidersNameCountsAndNotThatOfTheFrameworks) {
    setCallback();
    reportPresent({"device@3.2/external/1"});
    EXPECT_EQ(withdraw("legacy/0"), 0u);
    EXPECT_THAT(activeDevices(), SizeIs(1));
}

TEST_F(WithdrawalTest, EntriesWhoseProviderNameDoesNotParseAreKept) {
    setCallback();
    reportPresent({"camera0", "device@3.2/external/1"});
    mObject->androidDeviceNameToProviderDeviceName("device@3.2/legacy/9");
    EXPECT_EQ(withdraw("external/0"), 1u);
    EXPECT_EQ(withdraw("/0"), 0u) << "no type is not the empty type";
    EXPECT_THAT(activeDevices(),
                ElementsAre(Pair("@/legacy/", "camera0"), Pair("device@3.2/legacy/9", "")));
}

TEST_F(WithdrawalTest, TheEmptyTypeIsATypeLikeAnyOther) {
    setCallback();
    reportPresent({"device@3.2//1", "device@3.2/external/2"});
    EXPECT_EQ(withdraw("/0"), 1u);
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/2", "device@3.2/external/2")));
    EXPECT_THAT(mLog.lines(), ElementsAre(withdrawnLine(1, 1, "")));
}

TEST_F(ServiceDiedTest, AThreadThatCannotBeStartedLeavesTheStandardLibrarysError) {
    recordFault("thread creation", "`pthread_create` fails when a provider has died",
                "its cameras are withdrawn; the standard library's error leaves the death "
                "notification");
    connect({"external/0"});
    setCallback();
    reportPresent({"device@3.2/external/1"});
    const uint64_t deathCookie = cookie("external/0");
    std::error_code code;
    {
        const FailingThreads failing;
        try {
            mObject->serviceDied(deathCookie, nullptr);
        } catch (const std::system_error& error) {
            code = error.code();
        }
    }
    EXPECT_EQ(code, std::errc::resource_unavailable_try_again);
    EXPECT_THAT(mLog.take(), ElementsAre(diedLine("external/0"), withdrawnLine(1, 1, "external")))
            << "the cameras are withdrawn before the thread is started";
    EXPECT_EQ(descriptor("external/0")->mProvider, nullptr);
    finishReconnections();
    EXPECT_EQ(mProxy->lookups("external/0"), 1) << "nobody reconnects";
}

}  // namespace
}  // namespace orvo::test
