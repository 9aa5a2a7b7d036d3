// SPDX-License-Identifier: Apache-2.0
// Tests of what the listing commands print, for people and for programs.

#include <string>

#include "tests/simulator/commands/CommandsFixture.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class ListingTest : public CommandsFixture {
  protected:
    /** A device whose state is the sample, changed. */
    template <typename Change>
    void changeState(Change change) {
        HeadsetState state = mDevice.state();
        change(state);
        mDevice.answer("state", state);
    }

    std::string header() const {
        return "headset, up for 1 min 15 s, in " + mDevice.root() +
               "\ncamera provider service: process 4010; serves legacy/0, default/0\n";
    }

    FakeDevice mDevice{mTemporary.path()};
};

TEST_F(ListingTest, PsHasARowForEachProviderAndWhatIsWrongBelow) {
    expectPrints(
            {"ps"},
            header() +
                    "PROVIDER    BEHIND    DECLARED  RUNS            CONNECTED  DEATHS  PRESENT"
                    "  LAST END\n"
                    "external/0  legacy/0  yes       4001            yes        2       1 of 2 "
                    "  ended by signal 9 (Killed)\n"
                    "virtual/0   legacy/0  yes       no              no         1       -      "
                    "  ended with status 0\n"
                    "    declared but not running\n"
                    "ghost/0     legacy/0  no        no              no         0       -      "
                    "  -\n"
                    "    named in the map but not declared in the manifest\n"
                    "default/0   -         yes       in the service  yes        0       -      "
                    "  -\n");
}

TEST_F(ListingTest, PsTellsOfAHungProcessAndOfAServiceThatWasRestarted) {
    changeState([](HeadsetState& state) {
        state.providers[0].hung = true;
        state.service.restarts = 2;
        state.service.lastEnd = "ended by signal 6 (Aborted)";
    });
    const ProgramEnd end = camerasim({"ps"});
    EXPECT_THAT(end.out, HasSubstr("hung, 4001"));
    EXPECT_THAT(end.out, HasSubstr("process 4010, restarted 2 times, last one ended by signal 6"
                                   " (Aborted); serves legacy/0, default/0"));
}

TEST_F(ListingTest, PsTellsThatTheServiceDoesNotRun) {
    changeState([](HeadsetState& state) { state.service = {false, 0, 1, "", {}}; });
    EXPECT_THAT(
            camerasim({"ps"}).out,
            HasSubstr("camera provider service: not running, restarted 1 time; serves nothing"));
}

TEST_F(ListingTest, PsWithoutAProviderSaysWhy) {
    changeState([](HeadsetState& state) { state.providers.clear(); });
    expectPrints({"ps"}, header() +
                                 "nothing to list: neither the map, the manifest nor device.yaml"
                                 " names a provider\n");
}

TEST_F(ListingTest, PsAsJsonIsWhatTheDeviceAnswered) {
    expectDocument({"ps", "--format=json"}, mDevice.state());
}

TEST_F(ListingTest, CamerasHasARowForEachCameraAndTheProvidersWithoutAny) {
    expectPrints({"cameras"},
                 "CAMERA                 SERVICE    STATUS       TORCH         OPEN\n"
                 "device@3.2/legacy/100  legacy/0   PRESENT      AVAILABLE_ON  yes\n"
                 "device@3.2/legacy/7    legacy/0   NOT_PRESENT  -             -\n"
                 "device@3.2/default/0   default/0  PRESENT      -             -\n"
                 "virtual/0: declared but not running\n"
                 "ghost/0: named in the map but not declared in the manifest\n");
}

TEST_F(ListingTest, NoCamerasAreOnlyTheReasons) {
    changeState([](HeadsetState& state) { state.cameras.clear(); });
    expectPrints({"cameras"},
                 "virtual/0: declared but not running\n"
                 "ghost/0: named in the map but not declared in the manifest\n");
}

TEST_F(ListingTest, NoCamerasForNoReasonIsSaidToo) {
    changeState([](HeadsetState& state) {
        state.cameras.clear();
        state.providers.clear();
    });
    expectPrints({"cameras"}, "nothing to list: no provider has reported a camera\n");
}

TEST_F(ListingTest, CamerasAsJsonAreTheDevicesOwn) {
    expectDocument({"cameras", "--format=json"}, Json(mDevice.state())["cameras"]);
}

TEST_F(ListingTest, TagsAreListedServiceBySectionByTag) {
    const Json answer = Json::array(
            {{{"service", "legacy/0"},
              {"status", "OK"},
              {"sections",
               {{{"name", "external/0"}, {"tags", Json::array()}},
                {{"name", "com.orvo.usb"},
                 {"tags", {{{"id", 0x80020000u}, {"name", "busAddress"}, {"type", "INT32"}}}}}}}},
             {{"service", "default/0"}, {"status", "OK"}, {"sections", Json::array()}}});
    mDevice.answer("tags", answer);
    expectPrints({"tags"},
                 "SERVICE   SECTION       ID          NAME        TYPE\n"
                 "legacy/0  external/0    -           -           -\n"
                 "legacy/0  com.orvo.usb  0x80020000  busAddress  INT32\n"
                 "nothing to list: default/0 has no vendor tags\n");
    expectDocument({"tags", "--format=json"}, answer);
}

TEST_F(ListingTest, TagsOfOneServiceAreAskedForByName) {
    const Json one = {
            {"service", "legacy/0"}, {"status", "INTERNAL_ERROR"}, {"sections", Json::array()}};
    mDevice.answer("tags", Json::array({one}));
    expectPrints({"tags", "--service", "legacy/0"},
                 "nothing to list: legacy/0 answers INTERNAL_ERROR\n");
    EXPECT_EQ("legacy/0", mDevice.requests("tags")[0]["service"]);
    expectDocument({"tags", "--service", "legacy/0", "--format=json"}, one);
}

TEST_F(ListingTest, TagsOfADeviceThatServesNothingSayWhy) {
    mDevice.answer("tags", Json::array());
    expectPrints({"tags"},
                 "nothing to list: the device serves no instance; camerasim ps says why\n");
}

TEST_F(ListingTest, DumpsStandOneBelowTheOther) {
    const Json answer = Json::array({{{"service", "default/0"}, {"text", ""}},
                                     {{"service", "legacy/0"}, {"text", "Camera provider\n"}}});
    mDevice.answer("dump", answer);
    expectPrints({"dump"}, "default/0 has nothing to tell\n\nCamera provider\n");
    expectDocument({"dump", "--format=json"}, answer);
}

TEST_F(ListingTest, ADumpOfOneServiceIsAskedForByName) {
    const Json one = {{"service", "legacy/0"}, {"text", "Camera provider\n"}};
    mDevice.answer("dump", Json::array({one}));
    expectPrints({"dump", "legacy/0"}, "Camera provider\n");
    EXPECT_EQ("legacy/0", mDevice.requests("dump")[0]["service"]);
    expectDocument({"dump", "legacy/0", "--format=json"}, one);
}

TEST_F(ListingTest, ADumpOfADeviceThatServesNothingSaysWhy) {
    mDevice.answer("dump", Json::array());
    expectPrints({"dump"},
                 "nothing to list: the device serves no instance; camerasim ps says why\n");
}

TEST_F(ListingTest, WhatTheServicesListIsSaidOfEachName) {
    const auto list = [](const std::string& service, const std::string& status, const Json& names,
                         bool torches) {
        return Json{{"service", service},
                    {"status", status},
                    {"names", names},
                    {"torchStatus", "OK"},
                    {"torchSupported", torches}};
    };
    mDevice.answer("list", Json::array({list("default/0", "OK", Json::array(), false),
                                        list("legacy/0", "OK", {"a", "b"}, true)}));
    expectPrints({"list"},
                 "SERVICE   LISTED  TORCHES\n"
                 "legacy/0  a       can be switched\n"
                 "legacy/0  b       can be switched\n"
                 "nothing to list: default/0 lists no camera\n");
    mDevice.answer("list", Json::array({list("legacy/0", "INTERNAL_ERROR", Json::array(), false)}));
    expectPrints({"list", "legacy/0"}, "nothing to list: legacy/0 answers INTERNAL_ERROR\n");
}

TEST_F(ListingTest, PropertiesAreQuotedSoThatBlanksAreSeen) {
    const Json answer = Json::array({{{"name", "camera.legacy.ids"}, {"value", "100,101 "}},
                                     {{"name", "empty"}, {"value", ""}}});
    mDevice.answer("props", answer);
    expectPrints({"props"},
                 "PROPERTY           VALUE\n"
                 "camera.legacy.ids  \"100,101 \"\n"
                 "empty              \"\"\n");
    expectDocument({"props", "--format=json"}, answer);
}

TEST_F(ListingTest, NoPropertiesSayWhy) {
    mDevice.answer("props", Json::array());
    expectPrints({"props"}, "nothing to list: no property has been set\n");
}

TEST_F(ListingTest, EventsCarryTheirNumbers) {
    mDevice.haveEvents(sampleEvents());
    const ProgramEnd end = camerasim({"events"});
    EXPECT_EQ(0, end.status) << end.err;
    EXPECT_EQ(0u, end.out.find("   1  14:03:07.000001"));
    EXPECT_THAT(end.out, HasSubstr("external/0  started, process 4001\n   2  14:03:07.250000"));
    EXPECT_THAT(end.out, HasSubstr("device@3.2/legacy/7  NOT_PRESENT\n"));
}

TEST_F(ListingTest, EventsAsJsonAreOneDocumentALine) {
    mDevice.haveEvents(sampleEvents());
    std::string lines;
    for (const TimelineEvent& event : sampleEvents()) lines += Json(event).dump() + "\n";
    expectPrints({"events", "--format=json"}, lines);
}

TEST_F(ListingTest, EventsFromANumberAreAskedForByIt) {
    mDevice.haveEvents(sampleEvents());
    EXPECT_EQ(0u, camerasim({"events", "--from", "3"}).out.find("   3  "));
    expectPrints({"events", "--from", "9"},
                 "nothing to list: no event has the number 9 or a later one\n");
}

TEST_F(ListingTest, FollowingGoesOnUntilTheDeviceEnds) {
    mDevice.haveEvents(sampleEvents());
    ProgramRun run(commandLine({"events", "--follow", "--from", "3", "--format=json"}),
                   environment());
    ASSERT_TRUE(run.awaitOutput("\"number\":3"));
    EXPECT_THAT(run.output(), Not(HasSubstr("\"number\":2")));
    mDevice.happen({4, "14:03:10.000000", 3.5, "torch", "device@3.2/legacy/100", "AVAILABLE_ON"});
    ASSERT_TRUE(run.awaitOutput("AVAILABLE_ON"));
    mDevice.end();
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_EQ("the device has ended\n", end.err);
}

TEST_F(ListingTest, ColourIsForTerminalsOnly) {
    const std::string command = programPath("camerasim") + " cameras";
    const Words onTerminal = {"/usr/bin/script", "-qec", command, "/dev/null"};
    EXPECT_THAT(camerasim({"cameras"}).out, Not(HasSubstr("\033")));
    EXPECT_THAT(runProgram(onTerminal, environment()).out, HasSubstr("\033[32mPRESENT\033[0m"));
    auto quiet = environment();
    quiet["NO_COLOR"] = "1";
    EXPECT_THAT(runProgram(onTerminal, quiet).out, Not(HasSubstr("\033")));
}

}  // namespace
}  // namespace orvo::simulator::testing
