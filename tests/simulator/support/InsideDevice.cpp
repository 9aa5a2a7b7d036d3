// SPDX-License-Identifier: Apache-2.0
// InsideDevice: the outer process stages and cleans up, the inner one boots and tests.

#include "tests/simulator/support/InsideDevice.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>

#include "host/TransportEnd.h"
#include "simulator/camerasim/outside/Session.h"

namespace orvo::simulator::testing {

namespace {

/** Set for the inner process only: the root of the stage. */
constexpr char kStageVariable[] = "ORVO_TEST_STAGE";

std::unique_ptr<Programs> gDevice;

class BootedDevice : public ::testing::Environment {
  public:
    void SetUp() override {
        const auto description = HeadsetDescription::read(ORVO_HEADSET);
        const auto installation = Installation::ofThisProgram();
        ASSERT_TRUE(description) << description.error().message();
        ASSERT_TRUE(installation) << installation.error().message();
        android::hardware::configureRpcThreadpool(8, false);
        gDevice = std::make_unique<Programs>(*description, *installation,
                                             Stage(getenv(kStageVariable)));
        const auto booted = gDevice->boot();
        ASSERT_TRUE(booted) << booted.error().message();
    }

    void TearDown() override {
        gDevice.reset();
        endTransport();
    }
};

bool onlyLists(int argc, char** argv) {
    for (int i = 1; i < argc; i++) {
        if (strncmp(argv[i], "--gtest_list_tests", strlen("--gtest_list_tests")) == 0) return true;
    }
    return false;
}

int runOutside(int argc, char** argv) {
    const auto description = HeadsetDescription::read(ORVO_HEADSET);
    const auto installation = Installation::ofThisProgram();
    if (!description || !installation) {
        std::cerr << "the default device or the build is not complete\n";
        return 1;
    }
    auto host = Session::prepare(*description, *installation, false);
    if (!host) {
        std::cerr << host.error().message() << "\n";
        return 1;
    }
    const auto status = host->run([&](int) {
        setenv(kStageVariable, host->stage().root().c_str(), 1);
        std::vector<std::string> command = {"/proc/self/exe"};
        char self[4096] = {};
        if (readlink("/proc/self/exe", self, sizeof(self) - 1) > 0) command[0] = self;
        command.insert(command.end(), argv + 1, argv + argc);
        return command;
    });
    return status ? *status : 1;
}

}  // namespace

Programs& device() {
    return *gDevice;
}

}  // namespace orvo::simulator::testing

int main(int argc, char** argv) {
    using namespace orvo::simulator::testing;
    if (getenv(kStageVariable) == nullptr && !onlyLists(argc, argv)) {
        return runOutside(argc, argv);
    }
    ::testing::InitGoogleMock(&argc, argv);
    if (getenv(kStageVariable) != nullptr) {
        ::testing::AddGlobalTestEnvironment(new BootedDevice);
    }
    return RUN_ALL_TESTS();
}
