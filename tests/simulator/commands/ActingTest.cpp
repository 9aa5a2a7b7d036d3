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
    void expectAsked(const Json& request) {
        EXPECT_EQ(request, mDevice.requests(request["command"])[0]);
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
                {"opened", opened}};
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
    expectAsked({{"command", "open"}, {"camera", kCamera}, {"hold", false}});
}

TEST_F(ActingTest, OpenAndHoldSaysHowToClose) {
    mDevice.answer("open", openAnswer(true, "OK"));
    expectPrints({"open", kCamera, "--hold"},
                 std::string(kFacts) + "opened; camerasim close " + kCamera + " closes it\n");
    expectAsked({{"command", "open"}, {"camera", kCamera}, {"hold", true}});
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
    mDevice.answer("close", Json::object());
    expectPrints({"close", kCamera}, std::string(kCamera) + ": closed\n");
    expectAsked({{"command", "close"}, {"camera", kCamera}});
}

TEST_F(ActingTest, CloseWithoutANameClosesWhatIsHeld) {
    mDevice.answer("close", Json::object());
    expectPrints({"close"}, std::string(kCamera) + ": closed\n");
    expectAsked({{"command", "close"}, {"camera", kCamera}});
}

TEST_F(ActingTest, ThereMayBeNothingToClose) {
    HeadsetState state = mDevice.state();
    state.cameras[0].open = false;
    mDevice.answer("state", state);
    expectComplaint({"close"}, 1, "no camera is held open; camerasim open CAMERA --hold does so");
}

TEST_F(ActingTest, ProvidersAreKilledToldToEndHungAndStarted) {
    mDevice.answer("kill", {{"pid", 4001}});
    mDevice.answer("exit", Json::object());
    mDevice.answer("hang", Json::object());
    mDevice.answer("start", {{"pid", 4002}});
    expectPrints({"kill", "external/0"}, "external/0: killed, process 4001\n");
    expectAsked({{"command", "kill"}, {"provider", "external/0"}, {"signal", "KILL"}});
    expectPrints({"kill", "external/0", "--clean"}, "external/0: told to end\n");
    expectAsked({{"command", "exit"}, {"provider", "external/0"}});
    expectPrints({"hang", "external/0"}, "external/0: hangs\n");
    expectAsked({{"command", "hang"}, {"provider", "external/0"}});
    expectPrints({"start", "external/0"}, "external/0: runs, process 4002\n");
    expectAsked({{"command", "start"}, {"provider", "external/0"}});
}

TEST_F(ActingTest, CamerasArePluggedInAndPulledOut) {
    mDevice.answer("plug", {{"device", "device@3.2/external/100"}, {"status", "PRESENT"}});
    mDevice.answer("unplug", {{"device", "device@3.2/external/100"}, {"status", "NOT_PRESENT"}});
    expectPrints({"plug", "external/0", "100"}, "device@3.2/external/100: PRESENT\n");
    expectAsked({{"command", "plug"}, {"provider", "external/0"}, {"device", "100"}});
    expectPrints({"unplug", "external/0", "100"}, "device@3.2/external/100: NOT_PRESENT\n");
}

TEST_F(ActingTest, TheTorchIsSwitched) {
    mDevice.answer("torch", {{"camera", kCamera}, {"status", "OK"}});
    expectPrints({"torch", kCamera, "on"}, std::string(kCamera) + ": torch on\n");
    expectAsked({{"command", "torch"}, {"camera", kCamera}, {"on", true}});
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
    expectAsked({{"command", "wait"},
                 {"condition", {{"provider", "external/0"}, {"is", "connected"}}},
                 {"timeout", 2.5}});
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

TEST_F(ActingTest, AConditionThatIsNoneIsRefusedBeforeTheDeviceIsAsked) {
    const ProgramEnd end = camerasim({"wait", "camera", "here"});
    EXPECT_EQ(2, end.status);
    EXPECT_EQ(0u, end.err.find("camerasim: 'camera here' is no condition; write 'camera NAME"));
}

TEST_F(ActingTest, StopWaitsUntilTheDeviceIsGone) {
    mDevice.answer("stop", Json::object());
    expectPrints({"stop"}, "the device has ended\n");
}

}  // namespace
}  // namespace orvo::simulator::testing
