// SPDX-License-Identifier: Apache-2.0
// Tests of everything that can go wrong between a command and a device: one line each.

#include <string>

#include "tests/simulator/commands/CommandsFixture.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ComplaintTest : public CommandsFixture {
  protected:
    FakeDevice mDevice{mTemporary.path()};
};

TEST_F(ComplaintTest, WhatTheDeviceRefusesIsPassedOnInItsWords) {
    const std::string text = "external/0 is hung; camerasim start external/0 lets it go on";
    for (const std::string command :
         {"state", "tags", "dump", "list", "props", "open", "close", "kill", "hang", "start",
          "plug", "torch", "wait", "stop", "events"}) {
        mDevice.refuse(command, text);
    }
    const std::vector<Words> commands = {{"ps"},
                                         {"cameras"},
                                         {"tags"},
                                         {"dump"},
                                         {"list"},
                                         {"props"},
                                         {"events"},
                                         {"watch"},
                                         {"open", "c"},
                                         {"close"},
                                         {"close", "c"},
                                         {"kill", "p"},
                                         {"kill", "p", "--clean"},
                                         {"hang", "p"},
                                         {"start", "p"},
                                         {"plug", "p", "d"},
                                         {"unplug", "p", "d"},
                                         {"torch", "c", "on"},
                                         {"wait", "cameras", "1"},
                                         {"stop"}};
    for (const Words& command : commands) expectComplaint(command, 1, text);
}

TEST_F(ComplaintTest, TheDeviceSaysWhatKindOfErrorItIs) {
    mDevice.refuse("kill", "there is no provider 'x'", 2);
    expectComplaint({"kill", "x"}, 2, "there is no provider 'x'");
    mDevice.refuse("kill", "external/0 is not running", 1);
    expectComplaint({"kill", "external/0"}, 1, "external/0 is not running");
    EXPECT_THAT(mDevice.requests("state", 0), IsEmpty()) << "no second question";
}

TEST_F(ComplaintTest, AnErrorOfSeveralLinesBecomesOne) {
    mDevice.refuse("props", "first\nsecond");
    expectComplaint({"props"}, 1, "first second");
}

TEST_F(ComplaintTest, AnAnswerThatIsNoneIsNotUnderstood) {
    for (const std::string bytes : {"hello\n", "[]\n", "{\"error\":5}\n", "{}\n", "\n"}) {
        mDevice.answerRaw("props", bytes);
        expectComplaint({"props"}, 1,
                        "the device was booted by another build of camerasim; use the one that"
                        " booted it");
    }
}

TEST_F(ComplaintTest, AnAnswerThatLacksSomethingIsOfAnotherBuild) {
    mDevice.answer("state", {{"name", "headset"}});
    expectComplaint({"ps"}, 1,
                    "the device was booted by another build of camerasim; use the one that booted"
                    " it");
}

TEST_F(ComplaintTest, ADeviceThatEndsInTheMiddleIsToldOf) {
    mDevice.answerRaw("props", "");
    expectComplaint({"props"}, 1, "the device has ended before it answered");
    mDevice.answerRaw("props", "{\"result\":[");
    expectComplaint({"props"}, 1, "the device has ended before it answered");
    mDevice.answerRaw("events", "");
    expectComplaint({"events"}, 1, "the device has ended before it had told all");
}

TEST_F(ComplaintTest, WrongWordsOnTheCommandLineAreRefused) {
    const std::vector<Words> wrong = {{"fly"},
                                      {"ps", "external/0"},
                                      {"ps", "--format=xml"},
                                      {"open"},
                                      {"kill"},
                                      {"plug", "external/0"},
                                      {"torch", "device@3.2/legacy/100"},
                                      {"torch", "device@3.2/legacy/100", "dim"},
                                      {"log", "--priority", "loud"},
                                      {"events", "--from", "0"},
                                      {"wait"},
                                      {"wait", "cameras", "1", "--timeout", "soon"},
                                      {"wait", "cameras", "1", "--timeout", "nan"},
                                      {"wait", "cameras", "1", "--timeout", "-1"}};
    for (const Words& words : wrong) {
        const ProgramEnd end = camerasim(words);
        EXPECT_EQ(2, end.status) << words[0];
        EXPECT_EQ(1, std::count(end.err.begin(), end.err.end(), '\n')) << end.err;
        EXPECT_THAT(end.err, HasSubstr("see camerasim --help"));
        EXPECT_EQ("", end.out);
    }
}

TEST_F(ComplaintTest, ACommandThatIsNoneIsNamedWithThoseThatWereMeant) {
    const ProgramEnd end = camerasim({"camera"});
    EXPECT_EQ(2, end.status);
    EXPECT_THAT(end.err, HasSubstr("there is no command 'camera'; there are cameras, "));
    EXPECT_THAT(end.err, HasSubstr(" more; see camerasim --help\n"));
    EXPECT_THAT(camerasim({"events", "--from", "abc"}).err,
                HasSubstr("'abc' is no whole number of 1 or more; see camerasim --help"));
}

TEST_F(ComplaintTest, HelpAndTheVersionCanBeAskedForByWordOrOption) {
    EXPECT_EQ(camerasim({"--help"}).out, camerasim({"help"}).out);
    EXPECT_THAT(camerasim({"--version"}).out, HasSubstr("camerasim 0."));
}

TEST_F(ComplaintTest, EveryCommandHasASentenceAndAnExample) {
    const ProgramEnd all = camerasim({"names", ""});
    ASSERT_EQ(0, all.status);
    std::istringstream names(all.out);
    size_t count = 0;
    for (std::string name; std::getline(names, name); count++) {
        const ProgramEnd help = camerasim({name, "--help"});
        EXPECT_EQ(0, help.status) << name;
        EXPECT_THAT(help.out, HasSubstr("Example: camerasim " + name)) << name;
        EXPECT_GT(help.out.find("\n"), 10u) << name << " says nothing of itself";
    }
    EXPECT_EQ(26u, count);
}

}  // namespace
}  // namespace orvo::simulator::testing
