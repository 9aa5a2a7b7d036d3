// SPDX-License-Identifier: Apache-2.0
// The service manager program: how it starts, what it refuses, how it ends.

#include <signal.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <cutils/properties.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/device/ChildProcess.h"
#include "tests/host/device/TemporaryDevice.h"

namespace {

using orvo::testing::ChildProcess;
using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string ready() {
    char value[PROPERTY_VALUE_MAX];
    property_get("hwservicemanager.ready", value, "unset");
    return value;
}

class ServiceManagerProgramTest : public ::testing::Test {
  protected:
    /** Runs it to its end and answers what it wrote on standard error, which is one line. */
    std::string errorOf(const std::vector<std::string>& arguments) {
        ChildProcess program(SERVICE_MANAGER, arguments, ChildProcess::StandardError::CAPTURED);
        EXPECT_EQ(std::nullopt, program.readLine());
        const std::string error = program.readStandardError();
        EXPECT_NE(0, program.wait());
        EXPECT_EQ(error.find('\n'), error.size() - 1) << error;
        return error;
    }
    std::string fileWith(const std::string& text) {
        const std::filesystem::path file = mDevice.path() / "manifest.xml";
        std::ofstream(file) << text;
        return file;
    }

    const orvo::testing::TemporaryDevice mDevice;
};

TEST_F(ServiceManagerProgramTest, ItIsReadyWhenItSaysSoAndEndsOnRequest) {
    const std::string manifest = fileWith("<manifest version=\"1.0\"/>");
    for (int signal : {SIGTERM, SIGINT}) {
        ChildProcess program(SERVICE_MANAGER, {"--manifest", manifest});
        EXPECT_EQ("ready", program.readLine());
        EXPECT_EQ("true", ready());
        program.signal(signal);
        EXPECT_EQ(0, program.wait());
        EXPECT_EQ("false", ready());
    }
}

TEST_F(ServiceManagerProgramTest, ItStartsAgainAfterItWasKilled) {
    const std::string manifest = fileWith("<manifest version=\"1.0\"/>");
    for (int round = 0; round < 3; ++round) {
        ChildProcess program(SERVICE_MANAGER, {"--manifest", manifest});
        EXPECT_EQ("ready", program.readLine());
        program.kill();
    }
}

TEST_F(ServiceManagerProgramTest, ThereIsOneOfADevice) {
    const std::string manifest = fileWith("<manifest version=\"1.0\"/>");
    ChildProcess first(SERVICE_MANAGER, {"--manifest", manifest});
    EXPECT_EQ("ready", first.readLine());
    ChildProcess second(SERVICE_MANAGER, {"--manifest", manifest},
                        ChildProcess::StandardError::CAPTURED);
    EXPECT_EQ(std::nullopt, second.readLine());
    EXPECT_THAT(second.readStandardError(),
                HasSubstr("hwservicemanager: cannot serve; set ORVO_DEVICE_DIR to the directory of "
                          "a device that has no service manager yet\n"));
    EXPECT_EQ(1, second.wait());
    EXPECT_EQ("true", ready());
}

TEST_F(ServiceManagerProgramTest, AMalformedManifestIsNamedWithItsPosition) {
    const std::string manifest = fileWith("<manifest version=\"1.0\">\n<hal>\n</manifest>\n");
    EXPECT_THAT(errorOf({"--manifest", manifest}),
                StartsWith("hwservicemanager: " + manifest + ":3:"));
}

TEST_F(ServiceManagerProgramTest, AMissingManifestIsNamed) {
    const std::string missing = mDevice.path() / "missing.xml";
    EXPECT_EQ("hwservicemanager: " + missing +
                      ": cannot be opened (No such file or directory); name a manifest file\n",
              errorOf({"--manifest", missing}));
}

TEST_F(ServiceManagerProgramTest, EveryNamedManifestIsRead) {
    const std::string good = fileWith("<manifest version=\"1.0\"/>");
    const std::string missing = mDevice.path() / "missing.xml";
    EXPECT_THAT(errorOf({"--manifest", good, "--manifest", missing}), HasSubstr(missing));
}

TEST_F(ServiceManagerProgramTest, UnknownOptionsAreRefused) {
    ChildProcess program(SERVICE_MANAGER, {"--manifold", "x"},
                         ChildProcess::StandardError::CAPTURED);
    EXPECT_THAT(program.readStandardError(), HasSubstr("--manifold"));
    EXPECT_NE(0, program.wait());
}

TEST_F(ServiceManagerProgramTest, HelpTellsItsOptions) {
    ChildProcess program(SERVICE_MANAGER, {"--help"});
    std::string help;
    while (const auto line = program.readLine()) help += *line + "\n";
    EXPECT_THAT(help, HasSubstr("--manifest"));
    EXPECT_THAT(help, HasSubstr("ORVO_DEVICE_DIR"));
    EXPECT_EQ(0, program.wait());
}

TEST_F(ServiceManagerProgramTest, WithoutADeviceItSaysWhatIsMissing) {
    const std::string manifest = fileWith("<manifest version=\"1.0\"/>");
    unsetenv("ORVO_DEVICE_DIR");
    ChildProcess program(SERVICE_MANAGER, {"--manifest", manifest},
                         ChildProcess::StandardError::CAPTURED);
    EXPECT_EQ(std::nullopt, program.readLine());
    EXPECT_THAT(program.readStandardError(), HasSubstr("set ORVO_DEVICE_DIR"));
    EXPECT_EQ(1, program.wait());
}

}  // namespace
