// SPDX-License-Identifier: Apache-2.0
// Tests of how a command finds the device that it is about.

#include <filesystem>
#include <string>

#include "tests/simulator/commands/CommandsFixture.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;

class FindingDevicesTest : public CommandsFixture {
  protected:
    static HeadsetState called(const std::string& name, const std::string& directory) {
        HeadsetState state = sampleState();
        state.name = name;
        state.directory = directory;
        return state;
    }

    /** The device that the command chose is the one that was asked for its properties. */
    void expectChosen(FakeDevice& device, const std::string& wanted) {
        device.answer("props", Json::array({{{"name", "chosen"}, {"value", device.root()}}}));
        const ProgramEnd end = camerasim({"props", "--device", wanted});
        EXPECT_EQ(0, end.status) << end.err;
        EXPECT_THAT(end.out, HasSubstr("\"" + device.root() + "\"")) << wanted;
    }

    static constexpr char kNone[] = "no device is running; start one with: camerasim up";
};

TEST_F(FindingDevicesTest, WithoutADeviceEveryCommandSaysHowToStartOne) {
    const std::vector<Words> commands = {{"ps"},
                                         {"cameras"},
                                         {"tags"},
                                         {"dump"},
                                         {"props"},
                                         {"log"},
                                         {"events"},
                                         {"watch"},
                                         {"open", "c"},
                                         {"close"},
                                         {"kill", "p"},
                                         {"hang", "p"},
                                         {"start", "p"},
                                         {"plug", "p", "d"},
                                         {"unplug", "p", "d"},
                                         {"torch", "c", "on"},
                                         {"wait", "cameras", "1"},
                                         {"bugreport"},
                                         {"stop"}};
    for (const Words& command : commands) expectComplaint(command, 2, kNone);
}

TEST_F(FindingDevicesTest, ANameIsNotLookedForWhenNothingRuns) {
    expectComplaint({"ps", "--device", "headset"}, 2, kNone);
}

TEST_F(FindingDevicesTest, TheOnlyOneNeedsNoName) {
    const FakeDevice device(mTemporary.path());
    EXPECT_EQ(0, camerasim({"ps"}).status);
}

TEST_F(FindingDevicesTest, ADirectoryThatWasLeftOverIsNoDevice) {
    FakeDevice device(mTemporary.path());
    device.end();
    EXPECT_TRUE(std::filesystem::exists(device.root() + "/run/control"));
    expectComplaint({"ps"}, 2, kNone);
    expectPrints({"devices"}, "nothing to list: no device runs below " + mTemporary.path() +
                                      "; start one with: camerasim up\n");
}

TEST_F(FindingDevicesTest, ADirectoryOfAnotherNameIsNoDevice) {
    FakeDevice device(mTemporary.path(), "toolong", sampleState());
    expectComplaint({"ps"}, 2, kNone);
}

TEST_F(FindingDevicesTest, ALinkToADeviceIsNotAnotherOne) {
    FakeDevice device(mTemporary.path());
    std::filesystem::create_symlink(device.root(), mTemporary.path() + "/camerasim.link01");
    EXPECT_EQ(0, camerasim({"ps"}).status);
}

TEST_F(FindingDevicesTest, AmongSeveralOneMustBeNamed) {
    const FakeDevice first(mTemporary.path(), "first1", called("first", "/d/first"));
    const FakeDevice second(mTemporary.path(), "second", called("second", "/d/second"));
    expectComplaint({"ps"}, 2,
                    "several devices run; say which with --device: first (" + first.root() +
                            "), second (" + second.root() + ")");
}

TEST_F(FindingDevicesTest, ADeviceIsNamedByNameByDescriptionOrByRoot) {
    FreshDirectory description;
    FakeDevice first(mTemporary.path(), "first1", called("first", description.path()));
    FakeDevice second(mTemporary.path(), "second", called("second", "/d/second"));
    expectChosen(second, "second");
    expectChosen(second, second.root());
    expectChosen(second, second.root() + "/");
    expectChosen(first, description.path() + "/../" +
                                std::filesystem::path(description.path()).filename().string());
}

TEST_F(FindingDevicesTest, AWrongNameIsToldTheRightOnes) {
    const FakeDevice device(mTemporary.path());
    expectComplaint({"ps", "--device", "glasses"}, 2,
                    "no device 'glasses' is running; there is headset (" + device.root() + ")");
}

TEST_F(FindingDevicesTest, TwoOfOneNameAreNamedByTheirDirectories) {
    FakeDevice first(mTemporary.path(), "first1", sampleState());
    FakeDevice second(mTemporary.path(), "second", sampleState());
    expectComplaint({"ps", "--device", "headset"}, 2,
                    "several devices fit 'headset'; give --device the directory of one: headset (" +
                            first.root() + "), headset (" + second.root() + ")");
    expectChosen(second, second.root());
}

TEST_F(FindingDevicesTest, DevicesListsThemAll) {
    const FakeDevice first(mTemporary.path(), "first1", called("first", "/d/first"));
    const FakeDevice second(mTemporary.path(), "second", called("second", "/d/second"));
    const std::string gap(first.root().size() - 4, ' ');
    expectPrints({"devices"}, "DEVICE  PROCESS  RUNS FOR    ROOT" + gap + "  DESCRIPTION\n" +
                                      "first   4000     1 min 15 s  " + first.root() +
                                      "  /d/first\n" + "second  4000     1 min 15 s  " +
                                      second.root() + "  /d/second\n");
    expectDocument({"devices", "--format=json"}, Json::array({{{"name", "first"},
                                                               {"directory", "/d/first"},
                                                               {"root", first.root()},
                                                               {"pid", 4000},
                                                               {"uptimeSeconds", 75.5}},
                                                              {{"name", "second"},
                                                               {"directory", "/d/second"},
                                                               {"root", second.root()},
                                                               {"pid", 4000},
                                                               {"uptimeSeconds", 75.5}}}));
}

TEST_F(FindingDevicesTest, ADeviceThatDoesNotAnswerIsListedWithThat) {
    FakeDevice device(mTemporary.path());
    device.beSilent();
    const ProgramEnd end = camerasim({"devices"});
    EXPECT_EQ(0, end.status);
    EXPECT_THAT(end.out, HasSubstr(device.root() + "  -\n    the device does not answer\n"));
    expectDocument(
            {"devices", "--format=json"},
            Json::array({{{"root", device.root()}, {"problem", "the device does not answer"}}}));
}

TEST_F(FindingDevicesTest, NoDevicesIsAnEmptyDocument) {
    expectDocument({"devices", "--format=json"}, Json::array());
}

}  // namespace
}  // namespace orvo::simulator::testing
