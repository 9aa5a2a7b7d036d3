// SPDX-License-Identifier: Apache-2.0
// Tests of everything that can go wrong between a command and a device: one line each.

#include <string>

#include "tests/simulator/commands/CommandsFixture.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;

class ComplaintTest : public CommandsFixture {
  protected:
    FakeDevice mDevice{mTemporary.path()};
};

TEST_F(ComplaintTest, WhatTheDeviceRefusesIsPassedOnInItsWords) {
    const std::string text = "external/0 is hung; camerasim start external/0 lets it go on";
    for (const std::string command :
         {"state", "tags", "dump", "props", "open", "close", "kill", "exit", "hang", "start",
          "plug", "unplug", "torch", "wait", "stop", "events"}) {
        mDevice.refuse(command, text);
    }
    const std::vector<Words> commands = {{"ps"},
                                         {"cameras"},
                                         {"tags"},
                                         {"dump"},
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

TEST_F(ComplaintTest, ANameThatNothingHasEndsWithTwo) {
    const std::vector<Words> commands = {{"kill", "x"},
                                         {"open", "x"},
                                         {"close", "x"},
                                         {"torch", "x", "on"},
                                         {"plug", "external/0", "x"},
                                         {"tags", "--service", "x"},
                                         {"dump", "x"},
                                         {"wait", "provider", "x", "dead"}};
    for (const Words& command : commands) {
        mDevice.refuse(command[0], "there is no 'x'; there are others");
        expectComplaint(command, 2, "there is no 'x'; there are others");
    }
}

TEST_F(ComplaintTest, ARefusalOfWhatIsThereEndsWithOne) {
    const std::string camera = "device@3.2/legacy/100";
    const std::vector<Words> commands = {{"kill", "virtual/0"},
                                         {"hang", "service"},
                                         {"open", camera},
                                         {"plug", "external/0", "usb-7C21"},
                                         {"unplug", "external/0", "device@3.2/external/100"},
                                         {"tags", "--service", "default/0"},
                                         {"wait", "provider", "ghost/0", "dead"}};
    for (const Words& command : commands) {
        mDevice.refuse(command[0], "not now");
        expectComplaint(command, 1, "not now");
    }
}

TEST_F(ComplaintTest, AnErrorOfSeveralLinesBecomesOne) {
    mDevice.refuse("props", "first\nsecond");
    expectComplaint({"props"}, 1, "first second");
}

TEST_F(ComplaintTest, AnAnswerThatIsNoneIsNotUnderstood) {
    for (const std::string bytes : {"hello\n", "[]\n", "{\"error\":5}\n", "{}\n", "\n"}) {
        mDevice.answerRaw("props", bytes);
        expectComplaint({"props"}, 1,
                        "the device answers what this camerasim does not understand; use the one"
                        " that booted it");
    }
}

TEST_F(ComplaintTest, AnAnswerThatLacksSomethingIsNotAsExpected) {
    mDevice.answer("state", {{"name", "headset"}});
    const ProgramEnd end = camerasim({"ps"});
    EXPECT_EQ(1, end.status);
    EXPECT_EQ(1, std::count(end.err.begin(), end.err.end(), '\n'));
    EXPECT_THAT(end.err, HasSubstr("camerasim: the device's answer is not as expected; use the"
                                   " camerasim that booted it"));
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
                                      {"wait", "cameras", "1", "--timeout", "-1"}};
    for (const Words& words : wrong) {
        const ProgramEnd end = camerasim(words);
        EXPECT_EQ(2, end.status) << words[0];
        EXPECT_EQ(1, std::count(end.err.begin(), end.err.end(), '\n')) << end.err;
        EXPECT_THAT(end.err, HasSubstr("see camerasim --help"));
        EXPECT_EQ("", end.out);
    }
}

TEST_F(ComplaintTest, EveryCommandHasASentenceAndAnExample) {
    const ProgramEnd all = camerasim({"names", "commands"});
    ASSERT_EQ(0, all.status);
    std::istringstream names(all.out);
    size_t count = 0;
    for (std::string name; std::getline(names, name); count++) {
        const ProgramEnd help = camerasim({name, "--help"});
        EXPECT_EQ(0, help.status) << name;
        EXPECT_THAT(help.out, HasSubstr("Example: camerasim " + name)) << name;
        EXPECT_GT(help.out.find("\n"), 10u) << name << " says nothing of itself";
    }
    EXPECT_EQ(22u, count);
}

}  // namespace
}  // namespace orvo::simulator::testing
