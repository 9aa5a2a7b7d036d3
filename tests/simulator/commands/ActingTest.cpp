// SPDX-License-Identifier: Apache-2.0
// Tests of the commands that do something: what they ask, what they print, how they end.

#include <string>

#include "tests/simulator/commands/CommandsFixture.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;

constexpr char kCamera[] = "device@3.2/legacy/100";

class ActingTest : public CommandsFixture {
  protected:
    /** What it asked the device. */
    void expectAsked(const std::string& command, Json members) {
        Json asked = mDevice.requests(command).back();
        EXPECT_EQ(protocolId(), asked["protocol"]);
        members["command"] = command;
        members["protocol"] = protocolId();
        EXPECT_EQ(members, asked);
    }

    static Json openAnswer(bool opened, const std::string& status) {
        return {{"camera", kCamera},
                {"status", status},
                {"resourceCost", 45},
                {"conflictingDevices", {"device@3.2/external/101"}},
                {"info", ""},
                {"characteristics",
                 {{{"tag", 0x80010000u}, {"type", "FLOAT"}, {"value", "1.5"}},
                  {{"tag", 0x50000u}, {"type", "BYTE"}, {"value", "1"}}}},
                {"characteristicsBytes", 80},
                {"opened", opened},
                {"heldOpen", Json::array()}};
    }

    static constexpr char kFacts[] =
            "device@3.2/legacy/100: resource cost 45, conflicts with device@3.2/external/101\n"
            "CHARACTERISTIC  TYPE   VALUE\n"
            "0x80010000      FLOAT  1.5\n"
            "0x00050000      BYTE   1\n";

    FakeDevice mDevice{mTemporary.path()};
};

TEST_F(ActingTest, OpenTellsWhatTheCameraIs) {
    mDevice.answer("open", openAnswer(true, "OK"));
    expectPrints({"open", kCamera}, std::string(kFacts) + "opened, and closed\n");
    expectAsked("open", {{"camera", kCamera}, {"hold", false}});
}

TEST_F(ActingTest, OpenAndHoldSaysHowToClose) {
    mDevice.answer("open", openAnswer(true, "OK"));
    expectPrints({"open", kCamera, "--hold"},
                 std::string(kFacts) + "opened; camerasim close " + kCamera + " closes it\n");
    expectAsked("open", {{"camera", kCamera}, {"hold", true}});
}

TEST_F(ActingTest, ACameraThatWasNotOpenedEndsWithOne) {
    mDevice.answer("open", openAnswer(false, "CAMERA_IN_USE"));
    expectComplaint({"open", kCamera}, 1, std::string(kCamera) + " was not opened: CAMERA_IN_USE");
    EXPECT_EQ(1, camerasim({"open", kCamera, "--format=json"}).status);
}

TEST_F(ActingTest, OpenAsJsonIsWhatTheDeviceAnswered) {
    mDevice.answer("open", openAnswer(true, "OK"));
    expectDocument({"open", kCamera, "--format=json"}, openAnswer(true, "OK"));
}

TEST_F(ActingTest, CloseNamesOneCamera) {
    mDevice.answer("close", {{"camera", kCamera}});
    expectPrints({"close", kCamera}, std::string(kCamera) + ": closed\n");
    expectAsked("close", {{"camera", kCamera}});
}

TEST_F(ActingTest, CloseWithoutANameClosesWhatIsHeld) {
    mDevice.answer("close", {{"camera", kCamera}});
    expectPrints({"close"}, std::string(kCamera) + ": closed\n");
    expectAsked("close", {{"camera", kCamera}});
}

TEST_F(ActingTest, ThereMayBeNothingToClose) {
    HeadsetState state = mDevice.state();
    state.cameras[0].open = false;
    mDevice.answer("state", state);
    expectComplaint({"close"}, 1, "no camera is held open; camerasim open CAMERA --hold does so");
}

TEST_F(ActingTest, ACameraInTheWayIsNamed) {
    Json answer = openAnswer(false, "MAX_CAMERAS_IN_USE");
    answer["heldOpen"] = {"device@3.2/legacy/7"};
    mDevice.answer("open", answer);
    expectComplaint({"open", kCamera}, 1,
                    std::string(kCamera) +
                            " was not opened: MAX_CAMERAS_IN_USE; held open are"
                            " device@3.2/legacy/7, and camerasim close closes them");
}

TEST_F(ActingTest, ACameraOfVersion1IsReadAndThatIsAll) {
    mDevice.answer("open", openAnswer(false, "OK"));
    expectPrints({"open", kCamera}, std::string(kFacts) +
                                            "read, not opened: it is of version 1, whose interface"
                                            " nothing here opens\n");
}

TEST_F(ActingTest, ProvidersAreKilledHungAndStarted) {
    const Json killed = {{"provider", "external/0"},
                         {"what", "ended by signal 9 (Killed)"},
                         {"pid", 0},
                         {"ended", true}};
    mDevice.answer("kill", killed);
    expectPrints({"kill", "external/0"}, "external/0: ended by signal 9 (Killed)\n");
    expectAsked("kill", {{"provider", "external/0"}, {"signal", "KILL"}});
    expectDocument({"kill", "external/0", "--clean", "--format=json"}, killed);
    expectAsked("kill", {{"provider", "external/0"}, {"signal", "TERM"}});
    for (const std::string command : {"hang", "start"}) {
        mDevice.answer(command, {{"provider", "external/0"},
                                 {"what", command + "s"},
                                 {"pid", 4002},
                                 {"ended", false}});
        expectPrints({command, "external/0"}, "external/0: " + command + "s, process 4002\n");
        expectAsked(command, {{"provider", "external/0"}});
    }
}

TEST_F(ActingTest, AProcessThatSurvivesEndsWithOne) {
    mDevice.answer(
            "kill",
            {{"provider", "external/0"}, {"what", "goes on"}, {"pid", 4001}, {"ended", false}});
    expectComplaint({"kill", "external/0", "--clean"}, 1, "external/0 has not ended: it goes on");
}

TEST_F(ActingTest, CamerasArePluggedInAndPulledOut) {
    const std::string camera = "device@3.2/external/100";
    mDevice.answer("plug", {{"device", camera}, {"status", "PRESENT"}, {"dropped", Json::array()}});
    expectPrints({"plug", "external/0", "100"}, camera + ": PRESENT\n");
    expectAsked("plug", {{"provider", "external/0"}, {"device", "100"}, {"present", true}});
    mDevice.answer("plug", {{"device", camera}, {"status", "NOT_PRESENT"}, {"dropped", {kCamera}}});
    expectPrints({"unplug", "external/0", "100"}, camera + ": NOT_PRESENT\nthe session of " +
                                                          kCamera +
                                                          ", which was held open, is gone\n");
    expectAsked("plug", {{"provider", "external/0"}, {"device", "100"}, {"present", false}});
}

TEST_F(ActingTest, TheTorchIsSwitched) {
    mDevice.answer("torch", {{"camera", kCamera}, {"status", "OK"}});
    expectPrints({"torch", kCamera, "on"}, std::string(kCamera) + ": torch on\n");
    expectAsked("torch", {{"camera", kCamera}, {"on", true}});
    expectPrints({"torch", kCamera, "off"}, std::string(kCamera) + ": torch off\n");
    EXPECT_EQ(false, mDevice.requests("torch", 2)[1]["on"]);
}

TEST_F(ActingTest, ATorchThatWasNotSwitchedEndsWithOne) {
    mDevice.answer("torch", {{"camera", kCamera}, {"status", "METHOD_NOT_SUPPORTED"}});
    expectComplaint(
            {"torch", kCamera, "on"}, 1,
            "the torch of " + std::string(kCamera) + " was not switched: METHOD_NOT_SUPPORTED");
}

TEST_F(ActingTest, WaitTellsHowLongItTook) {
    mDevice.answer("wait", {{"met", true}, {"seconds", 0.5}});
    expectPrints({"wait", "provider", "external/0", "connected", "--timeout", "2.5"},
                 "provider external/0 connected after 0.50 s\n");
    expectAsked("wait", {{"condition", {"provider", "external/0", "connected"}}, {"timeout", 2.5}});
    expectDocument({"wait", "cameras", "4", "--format=json"}, {{"met", true}, {"seconds", 0.5}});
}

TEST_F(ActingTest, AWaitThatIsOverEndsWithOne) {
    mDevice.answer("wait", {{"met", false}, {"seconds", 2.0}});
    expectComplaint({"wait", "cameras", "4", "--timeout", "2"}, 1,
                    "after 2.00 s not yet: cameras 4");
    const ProgramEnd json = camerasim({"wait", "cameras", "4", "--format=json"});
    EXPECT_EQ(1, json.status);
    EXPECT_EQ((Json{{"met", false}, {"seconds", 2.0}}), Json::parse(json.out));
}

TEST_F(ActingTest, StopWaitsUntilTheDeviceIsGone) {
    mDevice.answer("stop", {{"complaints", Json::array()}});
    expectPrints({"stop"}, "the device has ended\n");
}

TEST_F(ActingTest, StopTellsOfProgramsThatDidNotEndWell) {
    mDevice.answer("stop", {{"complaints", {"provider-external-0 ended with status 1"}}});
    expectPrints({"stop"}, "provider-external-0 ended with status 1\nthe device has ended\n");
}

TEST_F(ActingTest, OutputThatCannotBeWrittenIsNoSuccess) {
    const std::string program = programPath("camerasim");
    for (const std::string command : {"ps", "cameras --format=json", "--help"}) {
        const ProgramEnd end = runProgram(
                {"/bin/sh", "-c", program + " " + command + " >/dev/full"}, environment());
        EXPECT_EQ(1, end.status) << command;
        EXPECT_EQ("camerasim: the output could not be written; free space where it goes\n",
                  end.err);
    }
}

}  // namespace
}  // namespace orvo::simulator::testing
