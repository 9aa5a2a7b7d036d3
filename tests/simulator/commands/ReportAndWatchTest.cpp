// SPDX-License-Identifier: Apache-2.0
// Tests of `camerasim bugreport` and `camerasim watch`.

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>

#include <android-base/file.h>

#include "tests/simulator/commands/CommandsFixture.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string contentOf(const std::string& file) {
    std::ostringstream content;
    content << std::ifstream(file).rdbuf();
    return content.str();
}

class BugreportTest : public CommandsFixture {
  protected:
    BugreportTest() {
        mDevice.answer("props", kProperties);
        mDevice.answer("dump",
                       Json::array({{{"service", "legacy/0"}, {"text", "Camera provider\n"}}}));
        mDevice.haveEvents(sampleEvents());
        mDevice.write("run/log/provider-external-0.log", "Tag I 11-21 09:58:49 1 2 message\n");
        mDevice.write("run/properties", "the store");
        mDevice.write("vendor/etc/orvo_vendor_manifest.xml", "<providers/>");
        mDevice.write("vendor/etc/vintf/manifest.xml", "<manifest/>");
        std::filesystem::create_symlink("vintf/manifest.xml",
                                        mDevice.root() + "/vendor/etc/link.xml");
    }

    /** Unpacks it beside. @return the directory that was in it. */
    std::string unpack() const {
        const ProgramEnd end = runProgram({"/usr/bin/tar", "-xzf", mFile, "-C", mPlace.path()});
        EXPECT_EQ(0, end.status) << end.err;
        return mPlace.path() + "/report";
    }

    const Json kProperties = Json::array({{{"name", "camera.legacy.ids"}, {"value", "100"}}});
    FakeDevice mDevice{mTemporary.path()};
    FreshDirectory mPlace;
    const std::string mFile = mPlace.path() + "/report.tar.gz";
};

TEST_F(BugreportTest, TheArchiveHasEverything) {
    expectPrints({"bugreport", "-o", mFile}, "written: " + mFile + "\n");
    const std::string report = unpack();
    EXPECT_EQ(Json(mDevice.state()), Json::parse(contentOf(report + "/state.json")));
    EXPECT_EQ("Camera provider\n", contentOf(report + "/dump.txt"));
    EXPECT_EQ(kProperties, Json::parse(contentOf(report + "/properties.json")));
    std::string events;
    for (const TimelineEvent& event : sampleEvents()) events += Json(event).dump() + "\n";
    EXPECT_EQ(events, contentOf(report + "/events.ndjson"));
    EXPECT_EQ("Tag I 11-21 09:58:49 1 2 message\n",
              contentOf(report + "/log/provider-external-0.log"));
    EXPECT_EQ("<providers/>", contentOf(report + "/vendor/etc/orvo_vendor_manifest.xml"));
    EXPECT_EQ("<manifest/>", contentOf(report + "/vendor/etc/vintf/manifest.xml"));
    EXPECT_EQ("<manifest/>", contentOf(report + "/vendor/etc/link.xml"));
    EXPECT_THAT(contentOf(report + "/REPORT.txt"), HasSubstr("Nothing is missing.\n"));
    EXPECT_THAT(contentOf(report + "/REPORT.txt"), HasSubstr(mDevice.root()));
    EXPECT_FALSE(std::filesystem::exists(mFile + ".part"));
}

TEST_F(BugreportTest, ADeviceThatDoesNotAnswerGivesWhatLiesOnTheDisk) {
    mDevice.beSilent();
    expectPrints(
            {"bugreport", "-o", mFile, "--timeout", "0.1"},
            "missing: state, dump, events and the list of properties: the device does not answer\n"
            "written: " +
                    mFile + "\n");
    const std::string report = unpack();
    EXPECT_FALSE(std::filesystem::exists(report + "/state.json"));
    EXPECT_EQ("the store", contentOf(report + "/properties.lmdb"));
    EXPECT_TRUE(std::filesystem::exists(report + "/log/provider-external-0.log"));
    EXPECT_TRUE(std::filesystem::exists(report + "/vendor/etc/vintf/manifest.xml"));
    EXPECT_THAT(contentOf(report + "/REPORT.txt"),
                HasSubstr("Missing:\n  state, dump, events and the list of properties"));
}

TEST_F(BugreportTest, ADeviceThatHasEndedIsReportedByItsDirectory) {
    mDevice.end();
    const ProgramEnd end = camerasim({"bugreport", "-o", mFile, "--device", mDevice.root()});
    EXPECT_EQ(0, end.status) << end.err;
    EXPECT_THAT(end.out,
                HasSubstr("missing: state, dump, events and the list of properties: the device"
                          " in '" +
                          mDevice.root() + "' cannot be reached"));
    EXPECT_TRUE(std::filesystem::exists(unpack() + "/log/provider-external-0.log"));
}

TEST_F(BugreportTest, WhatTheDeviceRefusesIsMissing) {
    mDevice.refuse("props", "the store is locked");
    expectPrints({"bugreport", "-o", mFile},
                 "missing: the list of properties: the store is locked\nwritten: " + mFile + "\n");
    EXPECT_TRUE(std::filesystem::exists(unpack() + "/state.json"));
}

TEST_F(BugreportTest, AServiceThatIsHungHasNoDump) {
    mDevice.refuse("dump", "no answer within 10 s");
    expectPrints({"bugreport", "-o", mFile},
                 "missing: dump: no answer within 10 s\nwritten: " + mFile + "\n");
    EXPECT_TRUE(std::filesystem::exists(unpack() + "/properties.json"));
}

TEST_F(BugreportTest, WithoutANameItIsCalledAfterTheDevice) {
    const Words command = {"/usr/bin/env", "-C", mPlace.path(), programPath("camerasim"),
                           "bugreport"};
    const ProgramEnd end = runProgram(command, environment());
    EXPECT_EQ(0, end.status) << end.err;
    EXPECT_THAT(end.out, HasSubstr("written: " + mPlace.path() + "/camerasim-headset-"));
}

TEST_F(BugreportTest, APlaceThatCannotBeWrittenIsRefused) {
    const ProgramEnd end = camerasim({"bugreport", "-o", "/no/such/place/report.tar.gz"});
    EXPECT_EQ(1, end.status);
    EXPECT_EQ(0u, end.err.find("camerasim: cannot write '/no/such/place/report.tar.gz' ("));
    EXPECT_THAT(end.err, HasSubstr("); say where with -o FILE\n"));
}

TEST_F(BugreportTest, WhatIsNoRegularFileStaysWhatItIs) {
    const std::string pipe = mPlace.path() + "/pipe";
    const std::string link = mPlace.path() + "/link";
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    ASSERT_EQ(0, symlink(pipe.c_str(), link.c_str()));
    for (const std::string& name : {pipe, link, mPlace.path(), std::string("/dev/null")}) {
        const ProgramEnd end = camerasim({"bugreport", "-o", name});
        EXPECT_EQ(1, end.status);
        EXPECT_EQ("camerasim: '" + name +
                          "' is there and is no regular file; say where with -o FILE\n",
                  end.err);
    }
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST_F(BugreportTest, TheFileThatALinkLeadsToIsReplaced) {
    const std::string target = mPlace.path() + "/target";
    ASSERT_TRUE(android::base::WriteStringToFile("before", target));
    ASSERT_EQ(0, symlink(target.c_str(), mFile.c_str()));
    expectPrints({"bugreport", "-o", mFile}, "written: " + mFile + "\n");
    EXPECT_TRUE(std::filesystem::is_symlink(mFile));
    EXPECT_TRUE(std::filesystem::exists(unpack() + "/state.json"));
}

class WatchTest : public CommandsFixture {
  protected:
    WatchTest() { mDevice.haveEvents(sampleEvents()); }

    const TimelineEvent kTorch = {4,       "14:03:10.000000",       3.5,
                                  "torch", "device@3.2/legacy/100", "AVAILABLE_ON"};
    FakeDevice mDevice{mTemporary.path()};
};

TEST_F(WatchTest, OnNoTerminalThereIsOnePictureAndThenALineForEachEvent) {
    ProgramRun run(commandLine({"watch"}), environment());
    ASSERT_TRUE(run.awaitOutput("ghost/0: named in the map"));
    ASSERT_EQ(2u, mDevice.requests("events", 2).size());
    EXPECT_EQ(4, mDevice.requests("events", 2)[1]["from"]);
    mDevice.happen(kTorch);
    ASSERT_TRUE(run.awaitOutput("  AVAILABLE_ON\n"));
    mDevice.end();
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_EQ("the device has ended\n", end.err);
    EXPECT_EQ(end.out.find("PROVIDER"), end.out.rfind("PROVIDER")) << "one picture";
    EXPECT_THAT(end.out, Not(HasSubstr("\033")));
}

TEST_F(WatchTest, OnATerminalEachEventIsANewPictureAndTheTerminalIsGivenBack) {
    ProgramRun run({"/usr/bin/script", "-qec", programPath("camerasim") + " watch", "/dev/null"},
                   environment());
    ASSERT_TRUE(run.awaitOutput("Ctrl-C or q ends this"));
    EXPECT_THAT(run.output(), HasSubstr("\033[?1049h"));
    EXPECT_THAT(run.output(), HasSubstr("legacy/0   \033[1;31mNOT_PRESENT\033[0m"));
    ASSERT_EQ(2u, mDevice.requests("events", 2).size());
    mDevice.happen(kTorch);
    ASSERT_TRUE(run.awaitOutput("3.500"));
    EXPECT_GE(mDevice.requests("state", 2).size(), 2u);
    mDevice.end();
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_THAT(end.out, HasSubstr("\033[?25h\033[?1049l"));
}

TEST_F(WatchTest, OnALowTerminalTheNewestEventsStayAndTheRestIsCounted) {
    const std::string command = "stty rows 8; exec " + programPath("camerasim") + " watch";
    ProgramRun run({"/usr/bin/script", "-qec", command, "/dev/null"}, environment());
    ASSERT_TRUE(run.awaitOutput("Ctrl-C or q ends this"));
    EXPECT_THAT(run.output(), HasSubstr("device@3.2/legacy/7  "));
    EXPECT_THAT(run.output(), Not(HasSubstr("started, process 4001"))) << "an older event";
    EXPECT_THAT(run.output(), HasSubstr(" more; the arrow keys move"));
    EXPECT_THAT(run.output(), Not(HasSubstr("device@3.2/default/0"))) << "the last camera";
    mDevice.end();
    EXPECT_EQ(0, run.awaitEnd().status);
}

TEST_F(WatchTest, EventsThatNeverPauseAreDrawnMeanwhile) {
    ProgramRun run({"/usr/bin/script", "-qec", programPath("camerasim") + " watch", "/dev/null"},
                   environment());
    ASSERT_TRUE(run.awaitOutput("Ctrl-C or q ends this"));
    ASSERT_EQ(2u, mDevice.requests("events", 2).size());
    std::atomic<bool> isOver{false};
    std::thread storm([&] {
        while (!isOver) {
            mDevice.happen(kTorch);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    EXPECT_TRUE(run.awaitOutput("3.500"));
    isOver = true;
    storm.join();
    mDevice.end();
    EXPECT_EQ(0, run.awaitEnd().status);
}

TEST_F(WatchTest, AnInterruptGivesTheTerminalBack) {
    const std::string program = programPath("camerasim");
    ProgramRun run({"/usr/bin/script", "-qec", program + " watch", "/dev/null"}, environment());
    ASSERT_TRUE(run.awaitOutput("Ctrl-C or q ends this"));
    for (const pid_t pid : processesWithEnvironment("TMPDIR=" + mTemporary.path())) {
        std::error_code gone;
        const auto file = "/proc/" + std::to_string(pid) + "/exe";
        if (std::filesystem::read_symlink(file, gone) == program) kill(pid, SIGINT);
    }
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_THAT(end.out, HasSubstr("\033[?25h\033[?1049l"));
}

}  // namespace
}  // namespace orvo::simulator::testing
