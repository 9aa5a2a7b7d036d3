// SPDX-License-Identifier: Apache-2.0
// Tests of a framework and of the camera provider service that end, alone or with a provider.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/RecoveryFixture.h"

namespace orvo::simulator::testing {

namespace {

using ::testing::HasSubstr;

constexpr char kAborted[] = "ended by signal 6 (Aborted)";

std::string notToldLine(const std::string& camera) {
    return "Failed to notify camera service about " + camera + ": ";
}

}  // namespace

/**
 * What a provider reports is forwarded, and the answer to the provider is the framework's own. When
 * there is no framework any more that is a failure, and the platform ends a process that serves a
 * failure.
 */
TEST_P(DeviceRecoveryTest, TheServiceEndsAtTheNextReportAfterItsFrameworkDied) {
    ASSERT_NO_FATAL_FAILURE(loseAFramework());
    EXPECT_TRUE(mService->isRunning());
    const auto control = device().control(kExternal);
    ASSERT_TRUE(control->setTorchStatus("device@3.2/external/100", Torch::AVAILABLE_ON,
                                        [](auto, const auto&) {})
                        .isOk());
    ASSERT_TRUE(mService->awaitEnd(kPatience));
    EXPECT_EQ(kAborted, mService->end());
    EXPECT_TRUE(device().supervisor().isRunning(Programs::programOf(kExternal)));
    EXPECT_TRUE(device().supervisor().isRunning(Programs::programOf(kVirtual)));

    ASSERT_NO_FATAL_FAILURE(restartService());
    EXPECT_EQ(1u, mService->restarts());
    ASSERT_NO_FATAL_FAILURE(registerFramework());
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::PRESENT, 0));
    EXPECT_TRUE(hearsAll(kVirtualCameras, Device::PRESENT, 0));
    expectReadable(kExternalCameras);
    expectReadable(kVirtualCameras);
}

/** The library looks at what becomes of each of its own notifications, and goes on. */
TEST_P(DeviceRecoveryTest, TheServiceSurvivesTheDeathOfAProviderAfterItsFrameworkDied) {
    ASSERT_NO_FATAL_FAILURE(loseAFramework());
    const pid_t process = mService->pid();
    endProvider(kExternal);
    EXPECT_TRUE(logs("Notified framework about 0/2 devices from dead provider external\n"));
    for (const std::string& name : kExternalCameras) expectLogged(1, notToldLine(name));
    for (const std::string& name : kVirtualCameras) expectLogged(0, notToldLine(name));
    EXPECT_EQ("100, 101", listedIds("external"));  // were reported to two frameworks, leave once
    EXPECT_EQ(process, mService->pid());

    // A new framework cannot be passed on to the dead provider, but it is kept.
    ASSERT_NO_FATAL_FAILURE(connectFramework());
    const auto registered = mFramework->registerCallback();
    EXPECT_TRUE(registered.arrived()) << registered.failure;
    EXPECT_EQ(Status::INTERNAL_ERROR, registered.status);
    expectReadable(kVirtualCameras);
    startProvider(kExternal);
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::PRESENT, 0));
    EXPECT_TRUE(reconnects(kExternal));
    expectReadable(kExternalCameras);
    ASSERT_NO_FATAL_FAILURE(registerFramework());
    EXPECT_TRUE(hearsAll(kVirtualCameras, Device::PRESENT, 0));
    EXPECT_EQ(process, mService->pid());
    EXPECT_EQ(0u, mService->restarts());
}

TEST_P(DeviceRecoveryTest, TheServiceEndsWhenAProviderComesBackToADeadFramework) {
    ASSERT_NO_FATAL_FAILURE(loseAFramework());
    endProvider(kExternal);
    ASSERT_TRUE(logs("Notified framework about 0/2 devices from dead provider external\n"));
    startProvider(kExternal);
    ASSERT_TRUE(mService->awaitEnd(kPatience));
    EXPECT_EQ(kAborted, mService->end());
    EXPECT_EQ("8, 7, 8, 7", listedIds("virtual"));  // reported to each of the two frameworks

    ASSERT_NO_FATAL_FAILURE(restartService());
    ASSERT_NO_FATAL_FAILURE(registerFramework());
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::PRESENT, 0));
    EXPECT_TRUE(hearsAll(kVirtualCameras, Device::PRESENT, 0));
    expectReadable(kExternalCameras);
    expectReadable(kVirtualCameras);
}

/** The shim of a dead provider stays until it is connected again, and its failure is not looked at.
 */
TEST_P(DeviceRecoveryTest, TheServiceEndsWhenCamerasAreListedWhileAProviderIsDead) {
    endProvider(kExternal);
    ASSERT_TRUE(logs("Notified framework about 2/2 devices from dead provider external\n"));
    EXPECT_FALSE(mFramework->cameraIdList().arrived());
    ASSERT_TRUE(mService->awaitEnd(kPatience));
    EXPECT_EQ(kAborted, mService->end());

    ASSERT_NO_FATAL_FAILURE(restartService());
    ASSERT_NO_FATAL_FAILURE(registerFramework());
    EXPECT_TRUE(hearsAll(kVirtualCameras, Device::PRESENT, 0));
    expectReadable(kVirtualCameras);
}

/** The provider object hands a failure back, and the stub that would send it ends the process. */
TEST_P(DeviceRecoveryTest, TheServiceEndsWhenACallIsHandedOnToADeadProvider) {
    endProvider(kExternal);
    ASSERT_TRUE(logs("Notified framework about 2/2 devices from dead provider external\n"));
    EXPECT_FALSE(mFramework->isTorchSupported().arrived());
    ASSERT_TRUE(mService->awaitEnd(kPatience));
    EXPECT_EQ(kAborted, mService->end());
}

/** A dead provider has no service to ask for tags, so it is left out. */
TEST_P(DeviceRecoveryTest, TheServiceAnswersForVendorTagsWhileAProviderIsDead) {
    endProvider(kExternal);
    ASSERT_TRUE(logs("Notified framework about 2/2 devices from dead provider external\n"));
    const auto tags = mFramework->vendorTags();
    EXPECT_TRUE(tags.arrived()) << tags.failure;
    EXPECT_TRUE(mService->isRunning());
}

/** Nothing clears the id properties: neither the end of the service nor its start. */
TEST_P(DeviceRecoveryTest, TheIdPropertiesOutliveTheServiceAndGrowBehindWhatTheyHeld) {
    tellToEnd(Programs::kService);
    awaitEnd(Programs::kService);
    EXPECT_EQ("100, 101", listedIds("external"));
    EXPECT_EQ("8, 7", listedIds("virtual"));
    EXPECT_EQ("1", externalAdded());

    ASSERT_NO_FATAL_FAILURE(restartService());
    EXPECT_EQ("100, 101", listedIds("external"));
    EXPECT_EQ("1", externalAdded());
    ASSERT_NO_FATAL_FAILURE(registerFramework());
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::PRESENT, 0));
    EXPECT_TRUE(hearsAll(kVirtualCameras, Device::PRESENT, 0));
    awaitAnswers(kExternal);
    awaitAnswers(kVirtual);
    EXPECT_EQ("100, 101, 100, 101", listedIds("external"));
    EXPECT_EQ("8, 7, 8, 7", listedIds("virtual"));

    // One id leaves for each camera that the new service knows.
    const size_t mark = mFramework->log().size();
    endProvider(kExternal);
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::NOT_PRESENT, mark));
    EXPECT_EQ("100, 101", listedIds("external"));
    EXPECT_EQ("8, 7, 8, 7", listedIds("virtual"));
    EXPECT_EQ("1", externalAdded());
}

TEST_P(DeviceRecoveryTest, IdsOfCamerasThatWentWhileThereWasNoServiceStayListed) {
    ASSERT_NO_FATAL_FAILURE(plugIn());
    EXPECT_EQ("100, 101, usb-7C21", listedIds("external"));
    tellToEnd(Programs::kService);
    awaitEnd(Programs::kService);
    endProvider(kExternal);
    startProvider(kExternal);
    ASSERT_NO_FATAL_FAILURE(restartService());
    ASSERT_NO_FATAL_FAILURE(registerFramework());
    EXPECT_TRUE(hearsAll(kExternalCameras, Device::PRESENT, 0));
    awaitAnswers(kExternal);
    EXPECT_FALSE(heard(kUsb, 0));
    EXPECT_EQ("100, 101, usb-7C21, 100, 101", listedIds("external"));
}

/** Whoever is missing when the service starts is not waited for, and nothing is taken back. */
TEST_P(DeviceRecoveryTest, AServiceThatStartsWithoutAProviderServesTheOthersAndKeepsItsProperties) {
    tellToEnd(Programs::kService);
    awaitEnd(Programs::kService);
    endProvider(kExternal);
    ASSERT_NO_FATAL_FAILURE(restartService());
    expectLogged(1, notFoundLine(kExternal));
    ASSERT_NO_FATAL_FAILURE(registerFramework());
    EXPECT_TRUE(hearsAll(kVirtualCameras, Device::PRESENT, 0));
    const auto names = mFramework->cameraIdList();
    EXPECT_TRUE(names.ok()) << names.failure;
    EXPECT_EQ(2u, names.value.size());
    EXPECT_EQ("100, 101", listedIds("external"));
    EXPECT_EQ("1", externalAdded());
}

}  // namespace orvo::simulator::testing
