// SPDX-License-Identifier: Apache-2.0
// End-to-end tests of camerasim: the guided tour, its end in every way, and what a user gets wrong.

#include <signal.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <android-base/file.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/description/HeadsetCheck.h"
#include "tests/simulator/support/FreshDirectory.h"
#include "tests/simulator/support/ProgramRun.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

/** Runs camerasim with a TMPDIR of its own, so that whatever it leaves behind is found. */
class CamerasimTest : public ::testing::Test {
  protected:
    CamerasimTest() { chmod(mTemporary.path().c_str(), 0777); }

    std::map<std::string, std::string> environment() const {
        return {{"TMPDIR", mTemporary.path()}};
    }

    static std::vector<std::string> tour(std::vector<std::string> arguments = {}) {
        std::vector<std::string> command = {programPath("camerasim"), "tour"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return command;
    }

    void expectNothingIsLeft() const {
        EXPECT_TRUE(mTemporary.isEmpty());
        EXPECT_THAT(processesWithEnvironment("TMPDIR=" + mTemporary.path()), IsEmpty());
    }

    /** Refused before anything ran: one line that holds the text, and nothing left behind. */
    void expectRefused(const ProgramEnd& end, const std::string& text) const {
        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(2, end.status) << end.out << end.err;
        EXPECT_EQ(1, std::count(end.err.begin(), end.err.end(), '\n')) << end.err;
        EXPECT_EQ(0u, end.err.find("camerasim: ")) << end.err;
        EXPECT_THAT(end.err, HasSubstr(text));
        EXPECT_EQ("", end.out);
        expectNothingIsLeft();
    }

    /** A copy of the default device with one text of one file replaced. */
    std::string changedDevice(const std::string& file, const std::string& from,
                              const std::string& to) {
        const std::string directory = mDevices.path() + "/device";
        copyHeadset(directory);
        edit(directory + "/" + file, from, to);
        return directory;
    }

    FreshDirectory mTemporary;
    FreshDirectory mDevices;
};

// What differs from one run to the next.
std::string withoutDurations(const std::string& text) {
    return std::regex_replace(text, std::regex("[0-9.]+ (ms|s)\\b"), "DURATION $1");
}

TEST_F(CamerasimTest, TheReadmeShowsWhatTheGuidedTourPrints) {
    constexpr char kLeftOut[] = "[...]\n";
    std::string readme;
    ASSERT_TRUE(android::base::ReadFileToString(ORVO_README, &readme));
    const size_t begin = readme.find("A guided tour");
    const size_t end = readme.find("```", begin);
    ASSERT_NE(end, std::string::npos);
    std::string shown = withoutDurations(readme.substr(begin, end - begin));

    const std::string printed = withoutDurations(runProgram(tour(), environment()).out);
    size_t position = 0;
    while (!shown.empty()) {
        const std::string excerpt = shown.substr(0, shown.find(kLeftOut));
        shown.erase(0, excerpt.size() + strlen(kLeftOut));
        position = printed.find(excerpt, position);
        ASSERT_NE(position, std::string::npos)
                << excerpt << "is not what is printed now; bring README.md up to date";
        position += excerpt.size();
    }
}

TEST_F(CamerasimTest, TheGuidedTourIsAsExpectedAndLeavesNothing) {
    const ProgramEnd end = runProgram(tour(), environment());
    EXPECT_EQ(0, end.status) << end.out << end.err;
    EXPECT_EQ("", end.err);
    EXPECT_THAT(end.out, HasSubstr("All 14 steps were as expected"));
    EXPECT_THAT(end.out, HasSubstr("device@3.2/legacy/usb-7C21 NOT_PRESENT"));
    EXPECT_THAT(end.out, HasSubstr("device@3.2/default/0"));
    EXPECT_THAT(end.out, Not(HasSubstr("\033"))) << "colour is for terminals";
    EXPECT_THAT(end.out, Not(HasSubstr("✗")));
    expectNothingIsLeft();
    EXPECT_FALSE(std::filesystem::exists("/vendor/etc/orvo_vendor_manifest.xml"));
}

TEST_F(CamerasimTest, AnOrdinaryUserIsGivenTheSameTour) {
    std::vector<std::string> command = tour();
    if (geteuid() == 0) {
        const std::vector<std::string> asNobody = {"/usr/bin/setpriv", "--reuid=65534",
                                                   "--regid=65534", "--clear-groups"};
        std::vector<std::string> mayRead = asNobody;
        mayRead.insert(mayRead.end(), {"/usr/bin/test", "-x", programPath("camerasim")});
        if (runProgram(mayRead).status != 0) {
            GTEST_SKIP() << "the build directory is closed to other users";
        }
        command.insert(command.begin(), asNobody.begin(), asNobody.end());
    }
    const ProgramEnd end = runProgram(command, environment());
    EXPECT_EQ(0, end.status) << end.out << end.err;
    EXPECT_THAT(end.out, HasSubstr("All 14 steps were as expected"));
    expectNothingIsLeft();
}

TEST_F(CamerasimTest, SeveralToursAtOnceDoNotMeet) {
    std::vector<std::unique_ptr<ProgramRun>> runs;
    for (int i = 0; i < 3; i++) runs.push_back(std::make_unique<ProgramRun>(tour(), environment()));
    for (const auto& run : runs) {
        const ProgramEnd end = run->awaitEnd();
        EXPECT_EQ(0, end.status) << end.out << end.err;
    }
    expectNothingIsLeft();
}

TEST_F(CamerasimTest, KeepLeavesTheLogsOfEveryProgram) {
    const ProgramEnd end = runProgram(tour({"--keep"}), environment());
    EXPECT_EQ(0, end.status) << end.out << end.err;
    const size_t at = end.out.find("Kept: ");
    ASSERT_NE(std::string::npos, at);
    const std::string root = end.out.substr(at + 6, end.out.find('\n', at) - at - 6);
    EXPECT_EQ(0u, root.find(mTemporary.path()));
    for (const char* log : {"hwservicemanager", "provider-external-0", "provider-virtual-0",
                            "camera_provider_service"}) {
        EXPECT_TRUE(std::filesystem::exists(root + "/run/log/" + log + ".log")) << log;
    }
    EXPECT_THAT(processesWithEnvironment("TMPDIR=" + mTemporary.path()), IsEmpty());
}

TEST_F(CamerasimTest, ATourThatIsInterruptedLeavesNothing) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ProgramRun run(tour({"--pause", "600"}), environment());
        ASSERT_TRUE(run.awaitOutput("every program ready; each instance found"));
        run.signal(signal);
        const ProgramEnd end = run.awaitEnd();
        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(128 + signal, end.status);
        EXPECT_EQ("camerasim: the tour was stopped\n", end.err);
        expectNothingIsLeft();
    }
}

TEST_F(CamerasimTest, ASecondInterruptEndsAtOnce) {
    ProgramRun run(tour({"--pause", "600"}), environment());
    ASSERT_TRUE(run.awaitOutput("every program ready; each instance found"));
    run.signal(SIGINT);
    run.signal(SIGTERM);
    EXPECT_GT(run.awaitEnd().status, 128);
    expectNothingIsLeft();
}

TEST_F(CamerasimTest, ATourWhoseSupervisorIsKilledLeavesNothing) {
    ProgramRun run(tour({"--pause", "600"}), environment());
    ASSERT_TRUE(run.awaitOutput("every program ready; each instance found"));
    EXPECT_GE(processesWithEnvironment("TMPDIR=" + mTemporary.path()).size(), 7u);
    run.signal(SIGKILL);
    const ProgramEnd end = run.awaitEnd();  // also waits for who inherited its output
    EXPECT_TRUE(end.inTime);
    EXPECT_EQ(128 + SIGKILL, end.status);
    expectNothingIsLeft();
}

TEST_F(CamerasimTest, AProgramThatDiesEndsTheTourWithItsLog) {
    ProgramRun run(tour({"--pause", "2"}), environment());
    ASSERT_TRUE(run.awaitOutput("every program ready; each instance found"));
    const std::string marker = "virtual/0, process ";
    ASSERT_TRUE(run.awaitOutput("seen      device@3.2/legacy/7 PRESENT"));
    const std::string& out = run.output();
    const pid_t provider = std::stoi(out.substr(out.find(marker) + marker.size()));
    kill(provider, SIGKILL);
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(1, end.status) << end.out;
    EXPECT_THAT(end.out, HasSubstr("✗ expected"));
    EXPECT_THAT(end.out, HasSubstr("Step 3 of 14 was not as expected"));
    EXPECT_THAT(end.err, HasSubstr("the end of camera_provider_service.log:"));
    EXPECT_THAT(end.err, HasSubstr("camerasim: the tour was not as expected"));
    expectNothingIsLeft();
}

TEST_F(CamerasimTest, ColourCanBeHadOnATerminalOnly) {
    // script(1) gives the program a terminal.
    const std::vector<std::string> command = {"/usr/bin/script", "-qec",
                                              programPath("camerasim") + " tour", "/dev/null"};
    const ProgramEnd end = runProgram(command, environment());
    EXPECT_EQ(0, end.status);
    EXPECT_THAT(end.out, HasSubstr("\033[32m✓"));
    expectNothingIsLeft();
}

TEST_F(CamerasimTest, AMissingDeviceDirectoryIsRefused) {
    expectRefused(runProgram(tour({"/no/such/device"}), environment()),
                  "there is no device directory '/no/such/device'");
}

TEST_F(CamerasimTest, ADirectoryThatIsNoDeviceIsRefused) {
    expectRefused(runProgram(tour({mDevices.path()}), environment()), "has no vendor tree");
}

TEST_F(CamerasimTest, ANewDeviceBoots) {
    const std::string directory = mDevices.path() + "/new";
    ASSERT_TRUE(makeHeadset(directory));
    ProgramRun run({programPath("camerasim"), "up", directory}, environment());
    EXPECT_TRUE(run.awaitOutput("device@3.2/legacy/100  PRESENT"));
    run.signal(SIGINT);
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(0, end.status) << end.err;
    EXPECT_EQ("", end.err);
    expectNothingIsLeft();
}

TEST_F(CamerasimTest, AMapThatADeviceRefusesIsWarnedOfAndBooted) {
    const std::string map = "vendor/etc/orvo_vendor_manifest.xml";
    const std::string directory = changedDevice(map, "</providers>", "</providers>\ngarbage");
    ProgramRun run({programPath("camerasim"), "up", directory}, environment());
    EXPECT_TRUE(run.awaitOutput("device@3.2/default/0  PRESENT"));
    run.signal(SIGINT);
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(0, end.status) << end.err;
    EXPECT_EQ("camerasim: warning: " + directory + "/" + map +
                      ":8: is not XML (Extra content at the end of the document); the reader says"
                      " 'Failed to parse XML'\n",
              end.err);
    EXPECT_THAT(end.out, HasSubstr("legacy/0  not served; its log says why"));
    expectNothingIsLeft();
}

TEST_F(CamerasimTest, AFullDiskIsNamedWithWhatIsLeftAndTmpdir) {
    for (const char* bytes : {"4096", "20000", "2000000"}) {
        std::vector<std::string> command = {"/usr/bin/bwrap", "--dev-bind", "/",       "/",
                                            "--size",         bytes,        "--tmpfs", "/mnt"};
        for (const std::string& word : tour()) command.push_back(word);
        const ProgramEnd end = runProgram(command, {{"TMPDIR", "/mnt"}});
        EXPECT_EQ(2, end.status) << end.out << end.err;
        EXPECT_THAT(end.err,
                    MatchesRegex("camerasim: cannot .* [(]No space left on device[)]; the file "
                                 "system at '/mnt' has 0 KiB and [0-9]+ files left; free some, or "
                                 "set TMPDIR to a directory with more\n"));
    }
}

TEST_F(CamerasimTest, AMalformedDeviceDescriptionIsRefused) {
    expectRefused(runProgram(tour({changedDevice("device.yaml", "service:", "service: [")}),
                             environment()),
                  "device.yaml:");
}

TEST_F(CamerasimTest, AMalformedProviderDescriptionIsRefused) {
    expectRefused(runProgram(tour({changedDevice("providers/external.yaml", "resourceCost: 45",
                                                 "resourceCost: 145")}),
                             environment()),
                  "external.yaml:22: camera 'device@3.2/external/100': resourceCost is '145'; write"
                  " a number from 0 to 100");
}

TEST_F(CamerasimTest, AProviderThatNobodyDeclaresIsSeenMissing) {
    const std::string device =
            changedDevice("vendor/etc/vintf/manifest.xml", "<instance>virtual/0</instance>", "");
    const ProgramEnd end = runProgram(tour({device}), environment());
    EXPECT_EQ(1, end.status);
    EXPECT_THAT(end.out, HasSubstr("expected  the framework hears device@1.0/legacy/8 PRESENT"));
    EXPECT_THAT(end.out, HasSubstr("Step 2 of 14 was not as expected"));
    expectNothingIsLeft();
}

TEST_F(CamerasimTest, AMapEntryWithoutAProviderIsRefused) {
    expectRefused(runProgram(tour({changedDevice("vendor/etc/orvo_vendor_manifest.xml",
                                                 "\"virtual/0\"", "\"virtual/1\"")}),
                             environment()),
                  "nothing provides 'virtual/1', which the map puts behind legacy/0");
}

TEST_F(CamerasimTest, WhatADeviceDoesNotHaveIsLeftOutWithTheReason) {
    struct Case {
        const char *file, *from, *to, *reason;
    };
    const Case cases[] = {
            {"providers/external.yaml", "flash: true", "flash: false",
             "no camera that is reported has a flash"},
            {"providers/external.yaml", "present: false", "present: true",
             "no external camera is described with 'present: false'"},
            {"device.yaml", "- default/0", "", "the service does not serve default/0"},
            {"device.yaml", "- legacy/0", "", "nothing that the service serves has a map entry"}};
    for (const Case& one : cases) {
        const std::string device = changedDevice(one.file, one.from, one.to);
        const ProgramEnd end = runProgram(tour({device}), environment());
        EXPECT_EQ(0, end.status) << one.to << end.out << end.err;
        EXPECT_THAT(end.out, HasSubstr(one.reason));
        EXPECT_THAT(end.out, HasSubstr("All 14 steps were as expected"));
        expectNothingIsLeft();
        std::filesystem::remove_all(device);
    }
}

TEST_F(CamerasimTest, AMrProviderThatCannotBeHadIsSeenWithItsReason) {
    const std::string device = changedDevice("vendor/etc/mrprovider.yaml", "instance: default/0",
                                             "instance: default/1");
    const ProgramEnd end = runProgram(tour({device}), environment());
    EXPECT_EQ(1, end.status);
    EXPECT_THAT(end.out, HasSubstr("default/0 is not served"));
    EXPECT_THAT(end.err, HasSubstr("Asked for default/0, but /vendor/etc/mrprovider.yaml describes"
                                   " default/1"));
    EXPECT_THAT(end.err, HasSubstr("Could not create MR provider"));
    expectNothingIsLeft();
}

TEST_F(CamerasimTest, AMalformedManifestIsRefused) {
    expectRefused(runProgram(tour({changedDevice("vendor/etc/vintf/manifest.xml", "</manifest>",
                                                 "</manifes>")}),
                             environment()),
                  "manifest.xml");
}

TEST_F(CamerasimTest, AMissingBubblewrapIsRefused) {
    auto environment = this->environment();
    environment["PATH"] = mDevices.path();
    expectRefused(runProgram(tour(), environment),
                  "bubblewrap is not installed; install it (apt-get install bubblewrap)");
}

TEST_F(CamerasimTest, AMachineWithoutUserNamespacesIsRefused) {
    // What bubblewrap does on such a machine.
    const std::string bwrap = mDevices.write(
            "bwrap",
            "#!/bin/sh\necho 'bwrap: No permissions to create new namespace' >&2\nexit 1\n");
    chmod(bwrap.c_str(), 0755);
    auto environment = this->environment();
    environment["PATH"] = mDevices.path();
    expectRefused(runProgram(tour(), environment),
                  "cannot make a mount namespace here (bwrap: No permissions to create new"
                  " namespace); allow user namespaces");
}

TEST_F(CamerasimTest, ATemporaryDirectoryTooLongForSocketsIsRefused) {
    const std::string deep = mTemporary.path() + "/" + std::string(60, 'x');
    std::filesystem::create_directory(deep);
    auto environment = this->environment();
    environment["TMPDIR"] = deep;
    const ProgramEnd end = runProgram(tour(), environment);
    EXPECT_TRUE(std::filesystem::is_empty(deep));
    std::filesystem::remove(deep);
    expectRefused(end, "is too long a name for sockets; set TMPDIR to a shorter one");
}

TEST_F(CamerasimTest, AMissingTemporaryDirectoryIsRefused) {
    auto environment = this->environment();
    environment["TMPDIR"] = "/no/such/directory";
    expectRefused(runProgram(tour(), environment),
                  "cannot use the temporary directory '/no/such/directory'");
}

TEST_F(CamerasimTest, WrongWordsOnTheCommandLineAreRefused) {
    expectRefused(runProgram({programPath("camerasim")}, environment()), "see camerasim --help");
    expectRefused(runProgram({programPath("camerasim"), "fly"}, environment()),
                  "see camerasim --help");
    expectRefused(runProgram(tour({"--pause", "soon"}), environment()), "see camerasim --help");
}

TEST_F(CamerasimTest, HelpIsGivenOnAskingFor) {
    const ProgramEnd end = runProgram(tour({"--help"}), environment());
    EXPECT_EQ(0, end.status);
    EXPECT_THAT(end.out, HasSubstr("DEVICE_DIR"));
    EXPECT_THAT(end.out, HasSubstr("--keep"));
    EXPECT_EQ("", end.err);
}

}  // namespace
}  // namespace orvo::simulator::testing
