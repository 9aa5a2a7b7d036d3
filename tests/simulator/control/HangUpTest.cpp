// SPDX-License-Identifier: Apache-2.0
// Tests of devices whose terminal hangs up, or whose output nobody reads.

#include <signal.h>

#include <chrono>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <android-base/file.h>

#include "tests/simulator/control/UpFixture.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;

/** Printed when everything runs: the service's cameras are there. */
constexpr char kLastOfTheBoot[] = "device@3.2/legacy/7  PRESENT";

/** Both halves, the janitor, the namespace's keeper, and four programs. */
constexpr size_t kProcesses = 8;

std::string camerasim(const std::string& arguments) {
    return programPath("camerasim") + " " + arguments;
}

/** As the project's Makefile runs it: its rule is the one command. */
std::vector<std::string> makeOf(const std::string& command) {
    return {"/usr/bin/make", "--always-make",         "-f",    "/dev/null",
            "--eval",        "device: ; @" + command, "device"};
}

std::vector<std::string> shellOf(const std::string& command) {
    return {"/bin/sh", "-c", command + "; true"};
}

std::vector<std::string> wordsOf(const std::string& command) {
    return {"/bin/sh", "-c", "exec " + command};
}

bool eventually(const std::function<bool()>& isSo) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

class HangUpTest : public UpFixture {
  protected:
    ~HangUpTest() override {
        // Whoever is left has failed the test, and is not to stay.
        for (const pid_t pid : processes()) kill(pid, SIGKILL);
    }

    std::vector<pid_t> processes() const {
        return processesWithEnvironment("TMPDIR=" + mTemporary.path());
    }

    /** Without colour between the words, and without what a make that runs the tests has set. */
    std::map<std::string, std::string> environment() const {
        return {{"TMPDIR", mTemporary.path()}, {"NO_COLOR", "1"}, {"MAKEFLAGS", ""}};
    }

    /** Starts it on a terminal of its own. */
    ProgramRun onTerminal(std::vector<std::string> command) const {
        return ProgramRun(std::move(command), environment(), ProgramRun::Screen::TERMINAL);
    }

    void expectEndWithNothingLeft(ProgramRun& run) const {
        EXPECT_TRUE(run.awaitEnd().inTime);
        expectNothingIsLeft();
    }

    /** The half of it that runs the device's programs does nothing any more. */
    void stopInnerHalf() const {
        for (const pid_t pid : processes()) {
            std::string words;
            android::base::ReadFileToString("/proc/" + std::to_string(pid) + "/cmdline", &words);
            if (words.find(std::string("camerasim\0inside", 16)) == 0) kill(pid, SIGSTOP);
        }
    }
};

/** How somebody starts it, and what is printed once it is there. */
struct Start {
    std::string name;
    std::vector<std::string> command;
    std::string printed = kLastOfTheBoot;
};

void PrintTo(const Start& start, std::ostream* out) {
    *out << start.name;
}

class HangUpThroughTest : public HangUpTest, public ::testing::WithParamInterface<Start> {};

TEST_P(HangUpThroughTest, EndsItAndLeavesNothing) {
    ProgramRun run = onTerminal(GetParam().command);
    ASSERT_TRUE(run.awaitOutput(GetParam().printed)) << run.output();
    run.hangUp();
    expectEndWithNothingLeft(run);
}

std::vector<Start> starts() {
    return {
            {"NobodyElse", wordsOf(camerasim("up"))},
            {"AShell", shellOf(camerasim("up"))},
            {"Make", makeOf(camerasim("up"))},
            {"MakeInAShell", shellOf("make --always-make -f /dev/null --eval 'device: ; @" +
                                     camerasim("up") + "' device")},
            {"MakeOfATour", makeOf(camerasim("tour --pause 600")), "each instance found"},
            // On the stream, but in a session without a terminal.
            {"AnotherSession", {"/usr/bin/setsid", "--wait", programPath("camerasim"), "up"}},
    };
}

INSTANTIATE_TEST_SUITE_P(Starts, HangUpThroughTest, ::testing::ValuesIn(starts()),
                         [](const auto& start) { return start.param.name; });

TEST_F(HangUpTest, EndsItAlsoWhenAllItsStreamsAreRedirected) {
    ProgramRun run = onTerminal(makeOf(camerasim("up </dev/null >/dev/null 2>&1")));
    ASSERT_TRUE(eventually([this] { return processes().size() >= kProcesses; }));
    run.hangUp();
    expectEndWithNothingLeft(run);
}

TEST_F(HangUpTest, EndsItAtAnyMomentOfItsBoot) {
    const auto moments = {"", "The device", "ends it.", "hwservicemanager", "external/0"};
    for (const std::string moment : moments) {
        ProgramRun run = onTerminal(makeOf(camerasim("up")));
        ASSERT_TRUE(run.awaitOutput(moment)) << moment;
        run.hangUp();
        expectEndWithNothingLeft(run);
    }
    ProgramRun run = onTerminal(makeOf(camerasim("up")));
    ASSERT_TRUE(eventually([this] { return !mTemporary.isEmpty(); }));
    run.hangUp();
    expectEndWithNothingLeft(run);
}

TEST_F(HangUpTest, ToldManyTimesEndsItAsOnce) {
    const auto device = boot();
    do {
        device->program().signal(SIGHUP);
    } while (!device->program().awaitOutput("hwservicemanager  ended",
                                            std::chrono::milliseconds(1)) &&
             !processes().empty());
    const ProgramEnd end = device->awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_EQ("", end.err);
    EXPECT_THAT(end.out, HasSubstr("external/0  ended with status 0"));
    EXPECT_THAT(end.out, HasSubstr("hwservicemanager  ended with status 0"));
    expectNothingIsLeft();
}

TEST_F(HangUpTest, ASecondCtrlCEndsAtOnceWhatDoesNotStop) {
    ProgramRun run = onTerminal(makeOf(camerasim("up")));
    ASSERT_TRUE(run.awaitOutput(kLastOfTheBoot)) << run.output();
    stopInnerHalf();
    // Typed again until it works: two that come before the first is heard are one.
    EXPECT_TRUE(eventually([this, &run] {
        run.type("\003");
        return processes().empty();
    }));
    expectEndWithNothingLeft(run);
}

TEST_F(HangUpTest, ASignalEndsItWellWhenItsOutputIsGone) {
    for (const int signal : {SIGINT, SIGHUP}) {
        const auto device = boot();
        device->program().hangUp();
        device->program().signal(signal);
        const ProgramEnd end = device->awaitEnd();
        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(0, end.status);
        EXPECT_EQ("", end.err);
        expectNothingIsLeft();
    }
}

TEST_F(HangUpTest, ASignalEndsItAlsoWhenNobodyReads) {
    // A pipe takes 65,536 bytes, so that the first line does not fit, or one of the boot's.
    for (const std::string filling : {"65536", "65000"}) {
        ProgramRun run(
                {"/bin/sh", "-c", "head -c " + filling + " /dev/zero; exec " + camerasim("up")},
                environment());
        // Who cannot print the first line boots nothing.
        const size_t wanted = filling == "65536" ? kProcesses / 2 : kProcesses;
        ASSERT_TRUE(eventually([&] { return processes().size() >= wanted; }));
        run.signal(SIGHUP);
        EXPECT_TRUE(eventually([this] { return processes().empty(); }));
        EXPECT_EQ(0, run.awaitEnd().status);
        expectNothingIsLeft();
    }
}

}  // namespace
}  // namespace orvo::simulator::testing
