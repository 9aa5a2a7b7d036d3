// SPDX-License-Identifier: Apache-2.0
// InsideDevice: the outer process stages and cleans up, the inner one boots and tests.

#include "tests/simulator/support/InsideDevice.h"

#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>

#include "host/TransportEnd.h"
#include "simulator/camerasim/outside/Session.h"

namespace orvo::simulator::testing {

namespace {

/** The directory that is set for the inner process only, below the root of the stage. */
const char* runDirectory() {
    return getenv("ORVO_DEVICE_DIR");
}

std::unique_ptr<Programs> gDevice;

class BootedDevice : public ::testing::Environment {
  public:
    void SetUp() override {
        const auto description = HeadsetDescription::read(ORVO_HEADSET);
        const auto installation = Installation::ofThisProgram();
        ASSERT_TRUE(description) << description.error().message();
        ASSERT_TRUE(installation) << installation.error().message();
        android::hardware::configureRpcThreadpool(8, false);
        const Stage stage(std::filesystem::path(runDirectory()).parent_path());
        gDevice = std::make_unique<Programs>(*description, *installation, stage);
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
    SessionOptions options;
    options.directory = ORVO_HEADSET;
    options.command = {std::filesystem::read_symlink("/proc/self/exe")};
    options.command.insert(options.command.end(), argv + 1, argv + argc);
    auto session = Session::start(options);
    if (!session) {
        std::cerr << session.error().message() << "\n";
        return 1;
    }
    const int status = session->awaitEnd();
    session->finish();
    return status;
}

}  // namespace

Programs& device() {
    return *gDevice;
}

}  // namespace orvo::simulator::testing

int main(int argc, char** argv) {
    using namespace orvo::simulator::testing;
    if (runDirectory() == nullptr && !onlyLists(argc, argv)) {
        return runOutside(argc, argv);
    }
    ::testing::InitGoogleMock(&argc, argv);
    if (runDirectory() != nullptr) ::testing::AddGlobalTestEnvironment(new BootedDevice);
    return RUN_ALL_TESTS();
}
