// SPDX-License-Identifier: Apache-2.0
// The device's service program, run here: how it ends when it cannot serve.

#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>
#include <string>

#include <android-base/file.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::test {
namespace {

using ::testing::HasSubstr;

struct Ending {
    int status = -1;
    std::string log;
};

// Runs the program on a device of its own, where nothing runs and no library is to be found.
Ending runService(const std::string& arguments) {
    const TemporaryDir device;
    const std::string log = std::string(device.path) + "/log";
    const std::string command = "ORVO_DEVICE_DIR=" + std::string(device.path) +
                                " timeout -k 5 20 " ORVO_DEVICE_SERVICE " " + arguments + " 2>" +
                                log;
    const int status = system(command.c_str());
    Ending ending;
    if (WIFEXITED(status)) ending.status = WEXITSTATUS(status);
    EXPECT_TRUE(android::base::ReadFileToString(log, &ending.log));
    std::filesystem::remove_all(device.path);
    return ending;
}

TEST(DeviceServiceTest, EndsWhenItIsGivenNoInstance) {
    const Ending ending = runService("");
    EXPECT_EQ(ending.status, 1);
    EXPECT_THAT(ending.log,
                HasSubstr("No instance to serve: name them after the program in the .rc file"));
}

TEST(DeviceServiceTest, TriesEveryInstanceAndEndsWhenNoneCanBeServed) {
    const Ending ending = runService("legacy/0 default/0");
    EXPECT_EQ(ending.status, 1);
    EXPECT_THAT(ending.log, HasSubstr("Not serving legacy/0: status 1"));
    EXPECT_THAT(ending.log, HasSubstr("Not serving default/0: status 1"));
    EXPECT_THAT(ending.log, HasSubstr("None of 2 instances can be served"));
}

}  // namespace
}  // namespace orvo::test
