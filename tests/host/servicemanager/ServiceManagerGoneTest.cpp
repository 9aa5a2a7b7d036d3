// SPDX-License-Identifier: Apache-2.0
// What becomes of services and look-ups when the service manager is killed.

#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/host/device/ChildProcess.h"
#include "tests/host/device/TemporaryDevice.h"
#include "tests/host/servicemanager/Greeter.h"

namespace {

using android::sp;
using orvo::testing::ChildProcess;
using orvo::testing::Greeter;
using orvo::testing::greetingOf;
using IGreeter = orvo::test::greeter::V1_0::IGreeter;

// One test: a process knows one service manager in its life.
TEST(ServiceManagerGoneTest, ServicesThatWereFoundAnswerAndOthersAreNullAtOnce) {
    const orvo::testing::TemporaryDevice device;
    const std::string manifest = device.path() / "manifest.xml";
    std::ofstream(manifest) << "<manifest version=\"1.0\"/>";
    ChildProcess serviceManager(SERVICE_MANAGER, {"--manifest", manifest});
    ASSERT_EQ("ready", serviceManager.readLine());
    ChildProcess program(GREETER_PROGRAM, {});
    program.writeLine("register found/0");
    ASSERT_EQ("registered", program.readLine());
    const sp<IGreeter> greeter = IGreeter::getService("found/0");
    ASSERT_NE(nullptr, greeter);

    serviceManager.kill();
    EXPECT_EQ("found/0 greets you", greetingOf(greeter));
    EXPECT_EQ(nullptr, IGreeter::getService("found/0"));
    EXPECT_EQ(nullptr, IGreeter::getService("found/0", true /* getStub */));
    EXPECT_EQ(android::UNKNOWN_ERROR, (new Greeter("late/0"))->registerAsService("late/0"));
    EXPECT_FALSE(IGreeter::registerForNotifications("found/0", nullptr));

    program.writeLine("register late/0");
    EXPECT_EQ("status " + std::to_string(android::UNKNOWN_ERROR), program.readLine());
}

}  // namespace
