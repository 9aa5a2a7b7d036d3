// SPDX-License-Identifier: Apache-2.0
// Looking up and registering services where no service manager can be reached.

#include <android/hidl/manager/1.2/IServiceManager.h>
#include <gtest/gtest.h>
#include <hidl/ServiceManagement.h>

#include "tests/host/device/TemporaryDevice.h"
#include "tests/host/servicemanager/Greeter.h"

namespace {

using android::sp;
using IGreeter = orvo::test::greeter::V1_0::IGreeter;
using orvo::testing::Greeter;

class NoServiceManagerTest : public ::testing::Test {
  protected:
    const orvo::testing::TemporaryDevice mDevice;
};

TEST_F(NoServiceManagerTest, ThereIsNoServiceManagersObject) {
    EXPECT_EQ(nullptr, android::hardware::defaultServiceManager());
    EXPECT_EQ(nullptr, android::hardware::defaultServiceManager1_1());
    EXPECT_EQ(nullptr, android::hardware::defaultServiceManager1_2());
}

TEST_F(NoServiceManagerTest, ALookUpYieldsNullAtOnce) {
    EXPECT_EQ(nullptr, IGreeter::getService("x"));
    EXPECT_EQ(nullptr, IGreeter::tryGetService("x"));
}

TEST_F(NoServiceManagerTest, EvenAnImplementationIsNotLookedFor) {
    EXPECT_EQ(nullptr, IGreeter::getService("x", true /* getStub */));
}

TEST_F(NoServiceManagerTest, RegistrationFails) {
    const sp<IGreeter> greeter = new Greeter("x");
    EXPECT_EQ(android::INVALID_OPERATION, greeter->registerAsService("x"));
    EXPECT_EQ(android::UNEXPECTED_NULL,
              android::hardware::details::registerAsServiceInternal(nullptr, "x"));
}

TEST_F(NoServiceManagerTest, NobodyTellsOfRegistrations) {
    EXPECT_FALSE(IGreeter::registerForNotifications("x", nullptr));
}

TEST_F(NoServiceManagerTest, WaitingForAServiceEndsAtOnce) {
    android::hardware::details::waitForHwService(IGreeter::descriptor, "x");
}

}  // namespace
