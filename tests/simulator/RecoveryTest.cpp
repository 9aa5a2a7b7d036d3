// SPDX-License-Identifier: Apache-2.0
// Tests of provider processes that end: their cameras leave, and come back with them.

#include <signal.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/RecoveryFixture.h"
#include "tests/simulator/support/GatedListener.h"

namespace orvo::simulator::testing {
namespace {

using android::sp;

/** Descriptors that a connection between two processes takes at each of its ends. */
constexpr size_t kPerConnection = 2;

TEST_P(DeviceRecoveryTest, ADeadProvidersCamerasLeaveAndTheOthersStay) {
    const size_t mark = mFramework->log().size();
    endProvider(kExternal);
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::NOT_PRESENT, mark));
    EXPECT_EQ("", listedIds("external"));
    EXPECT_EQ("8, 7", listedIds("virtual"));
    for (const std::string& name : kVirtualCameras) EXPECT_FALSE(heard(name, mark)) << name;
    expectReadable(kVirtualCameras);
    EXPECT_TRUE(logs("Notified framework about 2/2 devices from dead provider external\n"));
    expectLogged(1, providerDiedLine(kExternal));
    expectLogged(0, providerDiedLine(kVirtual));
    EXPECT_EQ("1", externalAdded());
}

TEST_P(DeviceRecoveryTest, ADeadProvidersCamerasComeBackWithItAndCanBeOpened) {
    ASSERT_TRUE(mService->fillThreadPool(*mFramework));
    const ProcessUse before = mService->use();
    size_t mark = mFramework->log().size();
    endProvider(kExternal);
    ASSERT_TRUE(hearsAll(kExternalCameras, Device::NOT_PRESENT, mark));

    mark = mFramework->log().size();
    startProvider(kExternal);
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::PRESENT, mark));
    EXPECT_TRUE(reconnects(kExternal));
    awaitAnswers(kExternal);
    EXPECT_EQ("100, 101", listedIds("external"));
    EXPECT_EQ("8, 7", listedIds("virtual"));
    expectReadable(kExternalCameras);
    expectReadable(kVirtualCameras);
    for (const std::string& name : kExternalCameras) expectOpens(name);
    expectLogged(1, providerBackLine(kExternal));
    const auto names = mFramework->cameraIdList();
    EXPECT_TRUE(names.ok());
    EXPECT_EQ(4u, names.value.size());
    EXPECT_EQ(before, awaitUse(mService->pid(), before));
}

TEST_P(DeviceRecoveryTest, WhatWasPluggedInBeforeTheDeathIsWithdrawnAndDoesNotComeBack) {
    ASSERT_NO_FATAL_FAILURE(plugIn());
    EXPECT_EQ("100, 101, usb-7C21", listedIds("external"));
    size_t mark = mFramework->log().size();
    endProvider(kExternal);
    EXPECT_TRUE(hears(kUsb, Device::NOT_PRESENT, mark));
    EXPECT_EQ("", listedIds("external"));

    mark = mFramework->log().size();
    startProvider(kExternal);
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::PRESENT, mark));
    awaitAnswers(kExternal);
    EXPECT_FALSE(heard(kUsb, mark));
    EXPECT_EQ("100, 101", listedIds("external"));
}

TEST_P(DeviceRecoveryTest, AProviderThatStaysAwayIsGivenUpOnceAndLeavesNothingBehind) {
    ASSERT_TRUE(mService->fillThreadPool(*mFramework));
    const ProcessUse before = mService->use();
    const pid_t process = mService->pid();
    endProvider(kExternal);
    ASSERT_TRUE(logs(notFoundLine(kExternal)));
    EXPECT_EQ(before.threads + 1, mService->use().threads);

    ASSERT_TRUE(logs(providerGivenUpLine(kExternal)));
    EXPECT_EQ(before, awaitUse(process, before));
    expectLogged(10, notFoundLine(kExternal));
    expectLogged(1, providerGivenUpLine(kExternal));
    expectLogged(1, providerDiedLine(kExternal));

    EXPECT_EQ(process, mService->pid());
    expectReadable(kVirtualCameras);
    expectOpens(kVirtualCameras[1]);
    const auto tags = mFramework->vendorTags();
    ASSERT_TRUE(tags.ok()) << tags.failure;
    ASSERT_EQ(3u, tags.value.size());
    EXPECT_EQ("external/0", tags.value[0].sectionName);
    EXPECT_EQ("virtual/0", tags.value[1].sectionName);
    EXPECT_EQ("com.orvo.avatar", tags.value[2].sectionName);
    EXPECT_EQ("", listedIds("external"));
    EXPECT_EQ("8, 7", listedIds("virtual"));
    EXPECT_EQ("1", externalAdded());
}

TEST_P(DeviceRecoveryTest, BothProvidersDieAtTheSameMomentAndComeBack) {
    ASSERT_TRUE(mService->fillThreadPool(*mFramework));
    const ProcessUse before = mService->use();
    size_t mark = mFramework->log().size();
    tellToEnd(Programs::programOf(kExternal));
    tellToEnd(Programs::programOf(kVirtual));
    awaitEnd(Programs::programOf(kExternal));
    awaitEnd(Programs::programOf(kVirtual));
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::NOT_PRESENT, mark));
    EXPECT_TRUE(hearsAll(kVirtualCameras, Device::NOT_PRESENT, mark));
    EXPECT_EQ("", listedIds("external"));
    EXPECT_EQ("", listedIds("virtual"));

    mark = mFramework->log().size();
    startProvider(kVirtual);
    startProvider(kExternal);
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::PRESENT, mark));
    EXPECT_TRUE(hearsAll(kVirtualCameras, Device::PRESENT, mark));
    for (const char* provider : {kExternal, kVirtual}) {
        EXPECT_TRUE(reconnects(provider));
        awaitAnswers(provider);
        expectLogged(1, providerBackLine(provider));
        expectLogged(1, providerDiedLine(provider));
    }
    EXPECT_EQ("100, 101", listedIds("external"));
    EXPECT_EQ("8, 7", listedIds("virtual"));
    expectReadable(kExternalCameras);
    expectReadable(kVirtualCameras);
    EXPECT_EQ(before, awaitUse(mService->pid(), before));
}

/** The second process hangs, so that the attempt that has found it is under way when it dies. */
TEST_P(DeviceRecoveryTest, AProviderThatDiesWhileItIsBeingLookedUpComesBackAtALaterAttempt) {
    ASSERT_TRUE(mService->fillThreadPool(*mFramework));
    const ProcessUse before = mService->use();
    const std::string program = Programs::programOf(kExternal);
    endProvider(kExternal);
    ASSERT_TRUE(logs(notFoundLine(kExternal)));
    const ProcessUse waiting = mService->use();
    startProvider(kExternal);
    ASSERT_TRUE(device().supervisor().signal(program, SIGSTOP));
    // The service has connected to it, and waits for an answer that will never come. The shim keeps
    // the connection to the first process, which is broken, until there is a new shim.
    const ProcessUse asking{waiting.threads, waiting.descriptors + kPerConnection};
    ASSERT_EQ(asking, awaitUse(mService->pid(), asking));
    tellToEnd(program);
    // A stopped process hears SIGTERM only when it goes on; then it may answer before it ends.
    device().supervisor().signal(program, SIGCONT);
    awaitEnd(program);

    const size_t mark = mFramework->log().size();
    startProvider(kExternal);
    EXPECT_TRUE(reconnects(kExternal));
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::PRESENT, mark));
    awaitAnswers(kExternal);
    expectReadable(kExternalCameras);
    if (GetParam() == Ending::KILLED) {
        expectLogged(1, providerDiedLine(kExternal));
        expectLogged(1, providerBackLine(kExternal));
        expectLogged(0, providerBackLine(kExternal) + "1)");
        EXPECT_EQ("100, 101", listedIds("external"));
    }
    EXPECT_EQ(before, awaitUse(mService->pid(), before));
}

/** The framework holds the second process's first report up, so that it dies in the middle. */
TEST_P(DeviceRecoveryTest, AProviderThatDiesWhileItReportsItsCamerasIsWithdrawnAgain) {
    const sp<GatedListener> framework = new GatedListener();
    const auto registered = mFramework->provider()->setCallback(framework);
    ASSERT_TRUE(registered.isOk());
    awaitAnswers(kExternal);
    awaitAnswers(kVirtual);
    const auto hearsNow = [&](const std::string& name, Device status, size_t mark) {
        const auto wanted = [&](const StatusEvent& event) { return event.is(name, status); };
        return framework->waitFor(wanted, kPatience, mark).has_value();
    };
    size_t mark = framework->size();
    endProvider(kExternal);
    ASSERT_TRUE(hearsNow(kExternalCameras[1], Device::NOT_PRESENT, mark));
    framework->closeGate();
    startProvider(kExternal);
    framework->awaitSomebodyAtTheGate();  // the report that camera 100 is present
    EXPECT_TRUE(reconnects(kExternal));
    endProvider(kExternal);
    ASSERT_TRUE(logs(providerDiedLine(kExternal), 2));
    mark = framework->size();
    framework->openGate();
    EXPECT_TRUE(hearsNow(kExternalCameras[0], Device::NOT_PRESENT, mark));

    mark = framework->size();
    startProvider(kExternal);
    for (const std::string& name : kExternalCameras) {
        EXPECT_TRUE(hearsNow(name, Device::PRESENT, mark));
    }
    EXPECT_TRUE(reconnects(kExternal));
    awaitAnswers(kExternal);
    expectReadable(kExternalCameras);
    expectLogged(2, providerDiedLine(kExternal));
    expectLogged(2, providerBackLine(kExternal));
    // Each was reported to two frameworks; 100 left twice, 101 once, and both came back.
    EXPECT_EQ("101, 100, 100, 101", listedIds("external"));
}

INSTANTIATE_TEST_SUITE_P(, DeviceRecoveryTest, ::testing::Values(Ending::KILLED, Ending::CLEAN),
                         [](const auto& ending) {
                             return ending.param == Ending::KILLED ? "Killed" : "Clean";
                         });

}  // namespace
}  // namespace orvo::simulator::testing
