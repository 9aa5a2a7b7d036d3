// SPDX-License-Identifier: Apache-2.0
// Every program of a device ends in order when it is told to, whatever it waits for then.

#include <signal.h>

#include <chrono>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/framework/FrameworkClient.h"
#include "tests/simulator/support/InsideDevice.h"
#include "tests/simulator/support/ProgramRun.h"

namespace orvo::simulator::testing {
namespace {

using android::sp;
using ::testing::HasSubstr;
using ::testing::Not;
using vendor::orvo::simulator::V1_0::ISimulatedProvider;

constexpr std::chrono::seconds kPatience{20};
constexpr char kExternal[] = "provider-external-0";

class DeviceEndTest : public ::testing::Test {
  protected:
    void SetUp() override {
        auto client = FrameworkClient::connect("legacy/0");
        ASSERT_TRUE(client) << client.error().message();
        mFramework = std::move(*client);
        ASSERT_TRUE(mFramework->registerCallback().ok());
        ASSERT_TRUE(awaitStatus(StatusEvent::Device::PRESENT));
    }
    // A program that hangs would be killed at the end.
    void TearDown() override { device().supervisor().signal(kExternal, SIGCONT); }

    bool awaitStatus(StatusEvent::Device status) {
        const auto isIt = [status](const StatusEvent& event) {
            return event.is("device@3.2/legacy/100", status);
        };
        return mFramework->log().waitFor(isIt, kPatience).has_value();
    }

    static void hang(const std::string& program) {
        Supervisor& supervisor = device().supervisor();
        ASSERT_TRUE(supervisor.signal(program, SIGSTOP));
        while (!supervisor.isHung(program)) std::this_thread::yield();
    }

    static void expectEnd(const std::string& program) {
        Supervisor& supervisor = device().supervisor();
        EXPECT_TRUE(supervisor.signal(program, SIGTERM));
        EXPECT_TRUE(supervisor.awaitEnd(program, std::chrono::seconds(3)));
        EXPECT_EQ("ended with status 0", supervisor.endOf(program));
    }

    std::unique_ptr<FrameworkClient> mFramework;
};

TEST_F(DeviceEndTest, OfAServiceThatLooksForADeadProvider) {
    EXPECT_TRUE(device().supervisor().signal(kExternal, SIGKILL));
    EXPECT_TRUE(awaitStatus(StatusEvent::Device::NOT_PRESENT));
    expectEnd(Programs::kService);
}

TEST_F(DeviceEndTest, OfAServiceThatHandsACallOnToAHungProvider) {
    hang(kExternal);
    std::thread waits([this] { EXPECT_FALSE(mFramework->cameraIdList().arrived()); });
    // So that it waits in there; if it comes later, it fails as well.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    expectEnd(Programs::kService);
    waits.join();
}

TEST_F(DeviceEndTest, OfAProviderThatLetsSomebodyWait) {
    const sp<ISimulatedProvider> control = ISimulatedProvider::tryGetService("external/0");
    ASSERT_NE(nullptr, control);
    std::thread waits([&control] {
        // Answered before the end or failed by it.
        (void)control->awaitListener(1000, 60000, [](const auto&) {}).isOk();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    expectEnd(kExternal);
    waits.join();
}

TEST_F(DeviceEndTest, OfAFrameworkThatWaitsForAHungService) {
    hang(Programs::kService);
    ProgramRun run({programPath("camera_framework"), "legacy/0"});
    // The main thread, which waits for the service, that of the signals, and the transport's.
    const std::string threads = "/proc/" + std::to_string(run.pid()) + "/task";
    while (std::distance(std::filesystem::directory_iterator(threads), {}) < 3) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    run.signal(SIGINT);
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_THAT(end.err, Not(HasSubstr("camera_framework:"))) << "it has nothing to complain of";
    EXPECT_TRUE(device().supervisor().signal(Programs::kService, SIGCONT));
}

TEST_F(DeviceEndTest, OfAFrameworkThatListens) {
    ProgramRun run({programPath("camera_framework"), "legacy/0"});
    EXPECT_TRUE(run.awaitOutput("camera device@3.2/legacy/100: OK"));
    run.signal(SIGTERM);
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_EQ("", end.err);
}

}  // namespace
}  // namespace orvo::simulator::testing
