// SPDX-License-Identifier: Apache-2.0
// Tests of what can be asked of a device that is up.

#include <signal.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/simulator/control/UpFixture.h"

namespace orvo::simulator::testing {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class UpTest : public UpFixture {
  protected:
    void SetUp() override { mDevice = boot(); }
    void TearDown() override {
        if (mDevice == nullptr) return;
        mDevice->request({{"command", "stop"}});
        const ProgramEnd end = mDevice->awaitEnd();
        EXPECT_EQ(0, end.status) << end.err;
        EXPECT_EQ("", end.err);
        expectNothingIsLeft();
    }

    json does(const char* command, const std::string& provider) {
        return mDevice->request({{"command", command}, {"provider", provider}});
    }

    std::unique_ptr<DeviceRun> mDevice;
};

TEST_F(UpTest, TellsItsState) {
    for (const char* instance : {"legacy/0", "default/0", "external/0", "virtual/0"}) {
        ASSERT_TRUE(mDevice->waitFor({"provider", instance, "connected"}));
    }
    const HeadsetState state = mDevice->state();
    EXPECT_EQ("headset", state.name);
    EXPECT_EQ(mDevice->root(), state.root);
    EXPECT_GT(state.uptimeSeconds, 0);
    EXPECT_TRUE(state.service.running);
    EXPECT_EQ(0, state.service.restarts);
    EXPECT_THAT(state.service.instances, ElementsAre("default/0", "legacy/0"));
    ASSERT_EQ(4u, state.providers.size());
    for (const ProviderState& provider : state.providers) {
        SCOPED_TRACE(provider.instance);
        EXPECT_TRUE(provider.declared && provider.running && provider.connected);
        EXPECT_FALSE(provider.hung);
        EXPECT_EQ(0, provider.deaths);
        EXPECT_EQ("", provider.problem);
        EXPECT_EQ(provider.inProcess, provider.pid == state.service.pid);
    }
    EXPECT_EQ("legacy/0", state.providers[2].behind);
    ASSERT_EQ(3u, state.providers[2].devices.size());
    EXPECT_EQ("device@3.2/external/usb-7C21", state.providers[2].devices[2].name);
    EXPECT_EQ("NOT_PRESENT", state.providers[2].devices[2].status);
    ASSERT_EQ(6u, state.cameras.size());
    EXPECT_EQ("device@3.2/default/0", state.cameras[1].name);
    EXPECT_EQ("default/0", state.cameras[1].service);
}

TEST_F(UpTest, TellsVendorTagsOfOneServiceOrOfAll) {
    const json one = mDevice->request({{"command", "tags"}, {"service", "legacy/0"}})[0];
    EXPECT_EQ("OK", one["status"]);
    EXPECT_EQ("external/0", one["sections"][0]["name"]);
    EXPECT_EQ(json({{"id", 0x80010000}, {"name", "exposureBoost"}, {"type", "FLOAT"}}),
              one["sections"][1]["tags"][0]);
    const json all = mDevice->request({{"command", "tags"}});
    ASSERT_EQ(2u, all.size());
    EXPECT_EQ("default/0", all[0]["service"]);
    EXPECT_EQ(one, all[1]);
    EXPECT_EQ("the service does not serve 'external/0'; it serves default/0, legacy/0",
              mDevice->refusal({{"command", "tags"}, {"service", "external/0"}}));
}

TEST_F(UpTest, DumpsOneServiceOrAll) {
    const json request = {{"command", "dump"}, {"service", "legacy/0"}};
    EXPECT_EQ(
            "Camera provider legacy/0 of type legacy\n"
            "Framework: registered\n"
            "Providers:\n"
            "  external/0 of type external: connected, shim alive\n"
            "  virtual/0 of type virtual: connected, shim alive\n"
            "Active devices:\n"
            "  device@1.0/legacy/8 <- device@1.0/virtual/8\n"
            "  device@3.2/legacy/100 <- device@3.2/external/100\n"
            "  device@3.2/legacy/101 <- device@3.2/external/101\n"
            "  device@3.2/legacy/7 <- device@3.2/virtual/7\n"
            "Properties:\n"
            "  camera.external.ids = \"100, 101\"\n"
            "  camera.virtual.ids = \"8, 7\"\n"
            "  service.cam_prvdr.external_0.added = \"1\"\n",
            mDevice->request(request)[0]["text"].get<std::string>());
    const json all = mDevice->request({{"command", "dump"}});
    ASSERT_EQ(2u, all.size());
    EXPECT_EQ(json({{"service", "default/0"}, {"text", ""}}), all[0]);
    EXPECT_EQ("legacy/0", all[1]["service"]);

    does("kill", "external/0");
    ASSERT_TRUE(mDevice->waitFor({"camera", kBackCamera, "NOT_PRESENT"}));
    EXPECT_THAT(mDevice->request(request)[0]["text"].get<std::string>(),
                AllOf(HasSubstr("  external/0 of type external: not connected, shim alive\n"),
                      HasSubstr("Active devices:\n  device@1.0/legacy/8 "),
                      HasSubstr("  camera.external.ids = \"\"\n")));
}

TEST_F(UpTest, TellsProperties) {
    const json properties = mDevice->request({{"command", "props"}});
    EXPECT_THAT(properties,
                Contains(json({{"name", "service.cam_prvdr.external_0.added"}, {"value", "1"}})));
}

TEST_F(UpTest, OpensACameraAndHoldsIt) {
    const json request = {{"command", "open"}, {"camera", kBackCamera}, {"hold", true}};
    const json answer = mDevice->request(request);
    EXPECT_EQ("OK", answer["status"]);
    EXPECT_EQ(true, answer["opened"]);
    EXPECT_EQ(45, answer["resourceCost"]);
    EXPECT_THAT(answer["conflictingDevices"], ElementsAre("device@3.2/external/101"));
    EXPECT_THAT(answer["characteristics"],
                Contains(json({{"tag", 0x80010000}, {"type", "FLOAT"}, {"value", "1.5"}})));
    const auto isOpen = [&] {
        const auto cameras = mDevice->state().cameras;
        return std::any_of(cameras.begin(), cameras.end(), [](const CameraState& camera) {
            return camera.name == kBackCamera && camera.open;
        });
    };
    EXPECT_TRUE(isOpen());
    EXPECT_EQ("CAMERA_IN_USE", mDevice->request(request)["status"]);
    mDevice->request({{"command", "close"}, {"camera", kBackCamera}});
    EXPECT_FALSE(isOpen());
    EXPECT_THAT(mDevice->refusal({{"command", "close"}, {"camera", kBackCamera}}),
                HasSubstr("is not held open"));
    EXPECT_EQ(true, mDevice->request({{"command", "open"}, {"camera", kBackCamera}})["opened"]);
    EXPECT_FALSE(isOpen()) << "one that is not to be held is closed again";
}

TEST_F(UpTest, ReadsACameraOfVersion1WithoutOpeningIt) {
    const json answer = mDevice->request({{"command", "open"}, {"camera", "device@1.0/legacy/8"}});
    EXPECT_EQ(false, answer["opened"]);
    EXPECT_EQ("facing FRONT, orientation 90", answer["info"]);
}

TEST_F(UpTest, ANameThatWasNeverReportedIsRefusedAndTheServiceLives) {
    const pid_t service = mDevice->state().service.pid;
    for (const char* command : {"open", "torch"}) {
        EXPECT_THAT(mDevice->refusal({{"command", command}, {"camera", "x"}, {"on", true}}),
                    HasSubstr("there is no camera 'x'; present are device@1.0/legacy/8, "));
        EXPECT_THAT(mDevice->refusal({{"command", command},
                                      {"camera", "device@3.2/external/100"},
                                      {"on", true}}),
                    HasSubstr("there is no camera 'device@3.2/external/100'"));
    }
    EXPECT_EQ(service, mDevice->state().service.pid);
}

TEST_F(UpTest, AWithdrawnCameraIsRefusedAndTheServiceLives) {
    const pid_t service = mDevice->state().service.pid;
    json change = {{"command", "plug"}, {"provider", "external/0"}, {"device", "usb-7C21"}};
    EXPECT_EQ(json({{"device", "device@3.2/external/usb-7C21"},
                    {"status", "PRESENT"},
                    {"dropped", json::array()}}),
              mDevice->request(change));
    EXPECT_EQ(7u, mDevice->state().cameras.size()) << "it is there when the request is answered";
    change["present"] = false;
    EXPECT_EQ("NOT_PRESENT", mDevice->request(change)["status"]);
    EXPECT_THAT(mDevice->refusal({{"command", "open"}, {"camera", kUsbCamera}}),
                HasSubstr("the camera 'device@3.2/legacy/usb-7C21' is not present; present are"));
    EXPECT_EQ(service, mDevice->state().service.pid);
}

TEST_F(UpTest, ACameraThatIsPulledOutIsHeldNoLonger) {
    const json plug = {{"command", "plug"}, {"provider", "external/0"}, {"device", "usb-7C21"}};
    json unplug = plug;
    unplug["present"] = false;
    mDevice->request(plug);
    mDevice->request({{"command", "open"}, {"camera", kUsbCamera}, {"hold", true}});
    EXPECT_THAT(mDevice->request(unplug)["dropped"], ElementsAre(kUsbCamera));
    EXPECT_THAT(mDevice->history(),
                Contains("camera device@3.2/legacy/usb-7C21 the session held open is gone"));
    EXPECT_THAT(mDevice->refusal({{"command", "close"}, {"camera", kUsbCamera}}),
                HasSubstr("is not held open"));
}

TEST_F(UpTest, SwitchesATorch) {
    const auto torch = [&](bool on) {
        EXPECT_EQ("OK",
                  mDevice->request(
                          {{"command", "torch"}, {"camera", kBackCamera}, {"on", on}})["status"]);
        for (const CameraState& camera : mDevice->state().cameras) {
            if (camera.name == kBackCamera) return camera.torch;
        }
        return std::string();
    };
    EXPECT_EQ("AVAILABLE_ON", torch(true));
    EXPECT_EQ("AVAILABLE_OFF", torch(false));
    EXPECT_THAT(mDevice->history(), Contains("torch device@3.2/legacy/100 AVAILABLE_ON"));
}

TEST_F(UpTest, UnknownDevicesAndProvidersAreAnsweredWithTheKnownOnes) {
    json plug = {{"command", "plug"}, {"provider", "external/0"}, {"device", "7"}};
    EXPECT_EQ(
            "external/0 has no camera '7'; it has device@3.2/external/100, device@3.2/external/101,"
            " device@3.2/external/usb-7C21",
            mDevice->refusal(plug));
    plug["provider"] = "external/1";
    EXPECT_EQ(
            "there is no provider 'external/1'; there are legacy/0, default/0, external/0,"
            " virtual/0, service",
            mDevice->refusal(plug));
    plug["provider"] = "legacy/0";
    EXPECT_THAT(mDevice->refusal(plug), HasSubstr("is served by the camera provider service"));
    plug["provider"] = "service";
    EXPECT_THAT(mDevice->refusal(plug), HasSubstr("nothing is plugged into the service"));
}

TEST_F(UpTest, AKilledProviderIsDeadUntilItIsStarted) {
    EXPECT_EQ("ended by signal 9 (Killed)", does("kill", "external/0")["what"]);
    EXPECT_TRUE(mDevice->waitFor({"camera", kBackCamera, "NOT_PRESENT"}));
    const ProviderState dead = mDevice->provider("external/0");
    EXPECT_FALSE(dead.running || dead.connected);
    EXPECT_EQ(1, dead.deaths);
    EXPECT_EQ("ended by signal 9 (Killed)", dead.lastEnd);
    EXPECT_THAT(dead.problem, HasSubstr("camerasim start external/0 starts it"));
    EXPECT_THAT(dead.devices, IsEmpty());
    EXPECT_EQ("external/0 is not running",
              mDevice->refusal({{"command", "kill"}, {"provider", "external/0"}}));
    EXPECT_EQ("runs", does("start", "external/0")["what"]);
    EXPECT_EQ("external/0 runs already",
              mDevice->refusal({{"command", "start"}, {"provider", "external/0"}}));
    EXPECT_TRUE(mDevice->waitFor({"provider", "external/0", "connected"}));
    EXPECT_TRUE(mDevice->waitFor({"camera", kBackCamera, "PRESENT"}));
    EXPECT_EQ("", mDevice->provider("external/0").problem);
    EXPECT_THAT(mDevice->history(), Contains("provider external/0 disconnected"));
}

TEST_F(UpTest, ACleanExitIsTheProvidersOwn) {
    const json request = {{"command", "kill"}, {"provider", "virtual/0"}, {"signal", "TERM"}};
    EXPECT_EQ("ended with status 0", mDevice->request(request)["what"]);
    EXPECT_EQ("ended with status 0", mDevice->provider("virtual/0").lastEnd);
}

TEST_F(UpTest, SignalsHaveNamesAndNumbers) {
    const auto kill = [&](const char* signal) {
        return mDevice->request(
                {{"command", "kill"}, {"provider", "virtual/0"}, {"signal", signal}})["what"];
    };
    EXPECT_EQ("goes on", kill("WINCH"));
    EXPECT_EQ("ended by signal 14 (Alarm clock)", kill("SIGALRM"));
    does("start", "virtual/0");
    EXPECT_EQ("ended by signal 6 (Aborted)", kill("6"));
    EXPECT_THAT(
            mDevice->refusal({{"command", "kill"}, {"provider", "external/0"}, {"signal", "BANG"}}),
            HasSubstr("there is no signal 'BANG'"));
}

TEST_F(UpTest, AHungProviderHangsNobodyElse) {
    EXPECT_EQ("hangs", does("hang", "external/0")["what"]);
    const ProviderState hung = mDevice->provider("external/0");
    EXPECT_TRUE(hung.running && hung.hung && hung.connected);
    EXPECT_THAT(hung.problem, HasSubstr("camerasim start external/0 lets it go on"));
    EXPECT_THAT(
            mDevice->refusal({{"command", "kill"}, {"provider", "external/0"}, {"signal", "TERM"}}),
            HasSubstr("is hung and hears no signal but KILL"));
    EXPECT_THAT(mDevice->refusal(
                        {{"command", "plug"}, {"provider", "external/0"}, {"device", "usb-7C21"}}),
                HasSubstr("external/0 is hung"));
    EXPECT_EQ("no answer within 10 s: external/0 is hung; camerasim start lets it go on",
              mDevice->refusal({{"command", "open"}, {"camera", kBackCamera}}));
    EXPECT_EQ(true,
              mDevice->request({{"command", "open"}, {"camera", "device@3.2/legacy/7"}})["opened"]);
    EXPECT_THAT(mDevice->request({{"command", "dump"}})[1]["text"].get<std::string>(),
                HasSubstr("external/0 of type external: connected, shim alive"));
    EXPECT_EQ("runs", does("start", "external/0")["what"]);
    EXPECT_FALSE(mDevice->provider("external/0").hung);
}

TEST_F(UpTest, AHungServiceHangsNobodyEither) {
    does("hang", "service");
    const HeadsetState state = mDevice->state();
    EXPECT_THAT(state.providers[0].problem, HasSubstr("the camera provider service is hung"));
    EXPECT_EQ(3u, state.providers[2].devices.size()) << "providers answer for themselves";
    EXPECT_EQ(
            "no answer within 10 s: the camera provider service is hung; camerasim start lets it"
            " go on",
            mDevice->refusal({{"command", "tags"}}));
    EXPECT_EQ("runs", does("start", "service")["what"]);
    EXPECT_EQ(2u, mDevice->request({{"command", "tags"}}).size());
}

TEST_F(UpTest, AKilledServiceIsStartedAgainAndServes) {
    const pid_t before = mDevice->state().service.pid;
    EXPECT_EQ("ended by signal 9 (Killed)", does("kill", "service")["what"]);
    EXPECT_TRUE(mDevice->waitFor({"cameras", "6"}));
    const ServiceState service = mDevice->state().service;
    EXPECT_NE(before, service.pid);
    EXPECT_EQ(1, service.restarts);
    EXPECT_EQ("ended by signal 9 (Killed)", service.lastEnd);
    EXPECT_EQ(true, mDevice->request({{"command", "open"}, {"camera", kBackCamera}})["opened"]);
    EXPECT_EQ("service runs already",
              mDevice->refusal({{"command", "start"}, {"provider", "service"}}));
}

TEST_F(UpTest, AProviderThatWasStartedAfterTheServiceHadLookedIsExplained) {
    does("kill", "virtual/0");
    does("kill", "service");
    ASSERT_TRUE(mDevice->waitFor({"camera", kBackCamera, "PRESENT"}));
    does("start", "virtual/0");
    EXPECT_THAT(mDevice->provider("virtual/0").problem,
                HasSubstr("it was started after the service had looked for it; camerasim kill"
                          " service lets a new one look for it"));
    does("kill", "service");
    EXPECT_TRUE(mDevice->waitFor({"provider", "virtual/0", "connected"}));
}

TEST_F(UpTest, EventsAreNumberedWithoutGapsAndCanBeFollowed) {
    ControlTalk follower(mDevice->socket());
    follower.send("{\"command\":\"events\",\"follow\":true}\n");
    int64_t expected = 1;
    const auto awaitEvent = [&](const std::string& what) {
        while (const auto line = follower.next()) {
            const auto event = (*line)["event"].get<TimelineEvent>();
            EXPECT_EQ(expected++, event.number);
            if (event.who + " " + event.what == what) return true;
        }
        return false;
    };
    EXPECT_TRUE(awaitEvent("device@3.2/legacy/100 PRESENT"));
    does("kill", "external/0");
    EXPECT_TRUE(awaitEvent("external/0 kill KILL"));
    EXPECT_TRUE(awaitEvent("external/0 disconnected"));
    ControlTalk later(mDevice->socket());
    later.send("{\"command\":\"events\",\"from\":" + std::to_string(expected - 1) + "}\n");
    EXPECT_EQ(expected - 1, (*later.next())["event"]["number"]);
}

TEST_F(UpTest, AFollowerThatDoesNotReadBlocksNobody) {
    ControlTalk follower(mDevice->socket());
    follower.send("{\"command\":\"events\",\"follow\":true}\n");
    for (int i = 0; i < 400; i++) {
        mDevice->request({{"command", "torch"}, {"camera", kBackCamera}, {"on", i % 2 == 0}});
    }
    EXPECT_GT(mDevice->history().size(), 800u);
}

TEST_F(UpTest, AWaitThatIsNotMetSaysSo) {
    const json answer = mDevice->request(
            {{"command", "wait"}, {"condition", {"cameras", "99"}}, {"timeout", 0.05}});
    EXPECT_EQ(false, answer["met"]);
    EXPECT_GE(answer["seconds"], 0.05);
    EXPECT_EQ(true, mDevice->request({{"command", "wait"},
                                      {"condition", {"cameras", "6"}},
                                      {"timeout", 0}})["met"]);
}

TEST_F(UpTest, AWaitIsMetByWhatHappensLater) {
    ControlTalk waiting(mDevice->socket());
    const json condition = {"property", "camera.external.ids", "contains", "usb-7C21"};
    waiting.send(json({{"command", "wait"}, {"condition", condition}}).dump() + "\n");
    mDevice->request({{"command", "plug"}, {"provider", "external/0"}, {"device", "usb-7C21"}});
    EXPECT_EQ(true, (*waiting.next())["result"]["met"]);
    EXPECT_THAT(mDevice->refusal({{"command", "wait"}, {"condition", {"provider", "x", "dead"}}}),
                HasSubstr("there is no provider 'x'"));
}

TEST_F(UpTest, WhatIsNoRequestIsAnsweredWithOneLine) {
    ControlTalk talk(mDevice->socket());
    talk.send("nonsense\n");
    EXPECT_THAT((*talk.next())["error"], HasSubstr("the request is no JSON object"));
    EXPECT_THAT(mDevice->refusal({{"command", "fly"}}), HasSubstr("there is no command 'fly'"));
    EXPECT_THAT(mDevice->refusal({{"command", "wait"}, {"condition", {"camera", "here"}}}),
                HasSubstr("'camera here' is no condition; write 'camera NAME"));
}

TEST_F(UpTest, ManyRequestsAtOnceAreAllAnswered) {
    std::vector<std::unique_ptr<ControlTalk>> talks;
    for (int i = 0; i < 40; i++) {
        talks.push_back(std::make_unique<ControlTalk>(mDevice->socket()));
        talks.back()->send("{\"command\":\"state\"}\n");
    }
    for (const auto& talk : talks) EXPECT_EQ("headset", (*talk->next())["result"]["name"]);
}

}  // namespace
}  // namespace orvo::simulator::testing
