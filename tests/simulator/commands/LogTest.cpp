// SPDX-License-Identifier: Apache-2.0
// Tests of `camerasim log`: the logs of all programs as one.

#include <algorithm>
#include <filesystem>
#include <string>

#include "tests/simulator/commands/CommandsFixture.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;

class LogTest : public CommandsFixture {
  protected:
    LogTest() {
        mDevice.write("run/log/camera_provider_service.log",
                      "Orvo E 11-21 09:58:49.100000 10 11 fetched\n"
                      "Orvo I 11-21 09:58:49.300000 10 12 loaded\n"
                      "and its second line\n");
        mDevice.write("run/log/provider-external-0.log",
                      "Simulated W 11-21 09:58:49.200000  20  21 plugged\n");
        mDevice.write("run/log/notes.txt", "no log\n");
    }

    FakeDevice mDevice{mTemporary.path()};
};

TEST_F(LogTest, LinesOfAllProgramsAreInTheOrderOfTime) {
    expectPrints({"log"},
                 "09:58:49.100000  camera_provider_service  E Orvo: fetched\n"
                 "09:58:49.200000  provider-external-0  W Simulated: plugged\n"
                 "09:58:49.300000  camera_provider_service  I Orvo: loaded\n"
                 "09:58:49.300000  camera_provider_service  I Orvo: and its second line\n");
}

TEST_F(LogTest, LinesAreChosenByTagPriorityAndProgram) {
    const std::string plugged = "09:58:49.200000  provider-external-0  W Simulated: plugged\n";
    const std::string fetched = "09:58:49.100000  camera_provider_service  E Orvo: fetched\n";
    expectPrints({"log", "--tag", "Simulated"}, plugged);
    expectPrints({"log", "--priority", "W"}, fetched + plugged);
    expectPrints({"log", "--program", "provider-external-0"}, plugged);
    expectPrints({"log", "--program", "external/0"}, plugged);
    expectPrints({"log", "--tag", "Orvo", "--priority", "E"}, fetched);
}

TEST_F(LogTest, LinesAsJsonHaveTheirPartsApart) {
    expectDocument({"log", "--tag", "Simulated", "--format=json"},
                   {{"program", "provider-external-0"},
                    {"date", "11-21"},
                    {"time", "09:58:49.200000"},
                    {"priority", "W"},
                    {"tag", "Simulated"},
                    {"pid", 20},
                    {"tid", 21},
                    {"message", "plugged"}});
}

TEST_F(LogTest, NothingIsExplained) {
    expectPrints(
            {"log", "--tag", "Orvo", "--priority", "F"},
            "nothing to list: 4 lines in all logs, none with tag Orvo, priority F and above\n");
    std::filesystem::remove_all(mDevice.root() + "/run/log");
    std::filesystem::create_directory(mDevice.root() + "/run/log");
    expectPrints({"log"}, "nothing to list: no program has written to its log\n");
}

TEST_F(LogTest, AProgramWithoutALogIsRefused) {
    expectComplaint({"log", "--program", "toaster"}, 2,
                    "there is no log of a program 'toaster'; there is camera_provider_service,"
                    " provider-external-0");
}

TEST_F(LogTest, ALineThatIsNotFinishedIsListed) {
    mDevice.write("run/log/hwservicemanager.log", "terminate called");
    expectPrints({"log", "--program", "hwservicemanager"},
                 "  hwservicemanager  terminate called\n");
}

TEST_F(LogTest, TheLogOfADeviceThatHasEndedCanBeRead) {
    mDevice.end();
    const ProgramEnd end = camerasim({"log", "--device", mDevice.root(), "--tag", "Simulated"});
    EXPECT_EQ(0, end.status) << end.err;
    EXPECT_THAT(end.out, HasSubstr("plugged\n"));
}

TEST_F(LogTest, TheDeviceMayBeNamed) {
    expectPrints({"log", "--device", "headset", "--tag", "Simulated"},
                 "09:58:49.200000  provider-external-0  W Simulated: plugged\n");
    expectComplaint({"log", "--device", "glasses"}, 2,
                    "no device 'glasses' is running; there is headset (" + mDevice.root() + ")");
}

TEST_F(LogTest, ALineMayBeLong) {
    const std::string text(1000 * 1000, 'x');
    mDevice.write("run/log/long.log", text + "\nLong I 11-21 10:00:00.000000 1 1 " + text + "\n");
    expectPrints({"log", "--program", "long"},
                 "  long  " + text + "\n10:00:00.000000  long  I Long: " + text + "\n");
}

TEST_F(LogTest, FollowingMissesNothing) {
    ProgramRun run(commandLine({"log", "-f"}), environment());
    ASSERT_TRUE(run.awaitOutput("its second line"));
    for (int i = 0; i < 200; i++) {
        const std::string number = std::to_string(i);
        mDevice.write("run/log/provider-external-0.log",
                      "Simulated I 11-21 10:00:00 20 21 line " + number + "\n");
        mDevice.write("run/log/started-later.log",
                      "Later I 11-21 10:00:00 30 31 line " + number + "\n");
    }
    ASSERT_TRUE(run.awaitOutput("Simulated: line 199\n"));
    ASSERT_TRUE(run.awaitOutput("Later: line 199\n"));
    std::filesystem::remove_all(mDevice.root() + "/run/log");
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_EQ("the device has ended\n", end.err);
    size_t simulated = 0, later = 0;
    for (size_t at = 0; (at = end.out.find("Simulated: line ", at)) != std::string::npos; at++) {
        EXPECT_EQ(std::to_string(simulated++) + "\n",
                  end.out.substr(at + 16, end.out.find('\n', at) - at - 15));
    }
    for (size_t at = 0; (at = end.out.find("Later: line ", at)) != std::string::npos; at++) later++;
    EXPECT_EQ(200u, simulated);
    EXPECT_EQ(200u, later);
}

TEST_F(LogTest, TheDayIsOlderThanTheHour) {
    mDevice.write("run/log/hwservicemanager.log", "Night I 11-20 23:59:59.000000 1 1 before\n");
    expectPrints({"log", "--priority", "I", "--program", "hwservicemanager"},
                 "23:59:59.000000  hwservicemanager  I Night: before\n");
    const ProgramEnd end = camerasim({"log"});
    EXPECT_EQ(0u, end.out.find("23:59:59.000000  hwservicemanager")) << end.out;
}

TEST_F(LogTest, FollowingGoesFromAFullLogToTheNextOne) {
    const std::string log = mDevice.root() + "/run/log/full.log";
    mDevice.write("run/log/full.log.1", "Full I 11-21 10:00:00 1 1 line 0\n");
    mDevice.write("run/log/full.log", "Full I 11-21 10:00:00 1 1 line 1\n");
    ProgramRun run(commandLine({"log", "-f", "--tag", "Full"}), environment());
    ASSERT_TRUE(run.awaitOutput("Full: line 1\n"));
    for (int i = 2; i < 50; i++) {
        const std::string number = std::to_string(i);
        mDevice.write("run/log/full.log", "Full I 11-21 10:00:00 1 1 last " + number + "\n");
        mDevice.write("run/log/full.log.new", "Full I 11-21 10:00:00 1 1 line " + number + "\n");
        std::filesystem::rename(log, log + ".1");
        std::filesystem::rename(log + ".new", log);
        ASSERT_TRUE(run.awaitOutput("Full: last " + number + "\n"));
        ASSERT_TRUE(run.awaitOutput("Full: line " + number + "\n"));
    }
    std::filesystem::remove_all(mDevice.root() + "/run/log");
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_EQ(98, std::count(end.out.begin(), end.out.end(), '\n')) << end.out;
}

TEST_F(LogTest, FollowingWaitsForTheEndOfALine) {
    ProgramRun run(commandLine({"log", "-f", "--tag", "Split"}), environment());
    mDevice.write("run/log/split.log", "Split I 11-21 10:00:00 2");
    mDevice.write("run/log/other.log", "Split I 11-21 10:00:00 1 1 whole\n");
    ASSERT_TRUE(run.awaitOutput("Split: whole\n"));
    mDevice.write("run/log/split.log", "0 21 in two\n");
    ASSERT_TRUE(run.awaitOutput("10:00:00  split  I Split: in two\n"));
}

}  // namespace
}  // namespace orvo::simulator::testing
