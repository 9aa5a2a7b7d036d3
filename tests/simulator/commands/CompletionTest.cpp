// SPDX-License-Identifier: Apache-2.0
// Tests of the completion for bash: what it offers after the beginning of a command line.

#include <algorithm>
#include <sstream>
#include <string>

#include "tests/simulator/commands/CommandsFixture.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/** Sources the file in a bash of its own and calls the function as bash does. */
class CompletionTest : public CommandsFixture {
  protected:
    /** What is offered after "camerasim " and this; bash keeps what is before the last '@' or '='.
     */
    Words offered(const std::string& typed, const std::string& wordBreaks = kWordBreaks) const {
        const std::string script = "source " ORVO_COMPLETION
                                   "\n"
                                   "COMP_WORDBREAKS=$1\n"
                                   "COMP_LINE=\"camerasim $2\"\n"
                                   "COMP_POINT=${#COMP_LINE}\n"
                                   "COMP_WORDS=(" +
                                   programPath("camerasim") +
                                   ")\n"
                                   "complete -p camerasim >/dev/null || exit 3\n"
                                   "_camerasim\n"
                                   "for word in \"${COMPREPLY[@]}\"; do echo \"$word\"; done\n";
        const ProgramEnd end = runProgram(
                {"/bin/bash", "--norc", "-c", script, "bash", wordBreaks, typed}, environment());
        EXPECT_EQ(0, end.status);
        EXPECT_EQ("", end.err);
        std::istringstream lines(end.out);
        Words words;
        for (std::string line; std::getline(lines, line);) words.push_back(line);
        return words;
    }

    static constexpr char kWordBreaks[] = " \t\n\"'@><=;|&(:";
};

class CompletionOfADeviceTest : public CompletionTest {
  protected:
    FakeDevice mDevice{mTemporary.path()};
};

TEST_F(CompletionTest, CommandsAreTheProgramsOwn) {
    const ProgramEnd all = camerasim({"names", ""});
    std::string offeredLines;
    for (const std::string& word : offered("")) offeredLines += word + "\n";
    std::istringstream lines(all.out);
    Words expected;
    for (std::string line; std::getline(lines, line);) expected.push_back(line);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, offered(""));
    EXPECT_THAT(expected, AllOf(Contains("up"), Contains("ps"), Not(Contains("inside")),
                                Not(Contains("names"))));
    EXPECT_THAT(offered("ca"), ElementsAre("cameras"));
}

TEST_F(CompletionTest, OptionsAreTheCommandsOwn) {
    EXPECT_THAT(offered("kill --"), ElementsAre("--clean", "--device", "--format", "--help"));
    EXPECT_THAT(offered("log -"), AllOf(Contains("-f"), Contains("--follow"), Contains("--tag"),
                                        Contains("--priority"), Contains("--program")));
    EXPECT_THAT(offered("fly --"), IsEmpty());
}

TEST_F(CompletionTest, ValuesOfOptionsAreOffered) {
    EXPECT_THAT(offered("ps --format "), ElementsAre("json", "table"));
    EXPECT_THAT(offered("ps --format=j"), ElementsAre("json"));
    EXPECT_THAT(offered("ps --format=j", " "), ElementsAre("--format=json"));
    EXPECT_THAT(offered("log --priority "), ElementsAre("D", "E", "F", "I", "V", "W"));
    EXPECT_THAT(offered("log --tag "), IsEmpty());
}

TEST_F(CompletionTest, WithoutADeviceThereAreNoNamesAndNoComplaints) {
    EXPECT_THAT(offered("open "), IsEmpty());
    EXPECT_THAT(offered("plug "), IsEmpty());
    EXPECT_THAT(offered("ps --device zz"), IsEmpty());
}

TEST_F(CompletionOfADeviceTest, CamerasAreOfferedAcrossTheAtSign) {
    EXPECT_THAT(offered("open "), ElementsAre("device@3.2/default/0", "device@3.2/legacy/100",
                                              "device@3.2/legacy/7"));
    EXPECT_THAT(offered("open device@3.2/legacy/1"), ElementsAre("3.2/legacy/100"));
    EXPECT_THAT(offered("open device@3.2/legacy/1", " "), ElementsAre("device@3.2/legacy/100"));
    EXPECT_THAT(offered("torch device@3.2/legacy/100 "), ElementsAre("off", "on"));
}

TEST_F(CompletionOfADeviceTest, ProvidersAndTheirDevicesAreOffered) {
    EXPECT_THAT(offered("kill "),
                ElementsAre("default/0", "external/0", "ghost/0", "service", "virtual/0"));
    EXPECT_THAT(offered("kill --clean ext"), ElementsAre("external/0"));
    EXPECT_THAT(offered("unplug external/0 "),
                ElementsAre("device@3.2/external/100", "device@3.2/external/usb-7C21"));
    EXPECT_THAT(offered("unplug virtual/0 "), IsEmpty());
    EXPECT_THAT(offered("tags --service l"), ElementsAre("legacy/0"));
    EXPECT_THAT(offered("dump "), ElementsAre("default/0", "legacy/0"));
}

TEST_F(CompletionOfADeviceTest, ConditionsAreOfferedWordByWord) {
    EXPECT_THAT(offered("wait "), ElementsAre("camera", "cameras", "property", "provider"));
    EXPECT_THAT(offered("wait provider v"), ElementsAre("virtual/0"));
    EXPECT_THAT(offered("wait --timeout 5 provider virtual/0 "),
                ElementsAre("connected", "dead", "disconnected", "running"));
    EXPECT_THAT(offered("wait camera device@3.2/legacy/7 N"), ElementsAre("NOT_PRESENT"));
    EXPECT_THAT(offered("wait property camera.legacy.ids "), ElementsAre("contains", "is"));
}

TEST_F(CompletionOfADeviceTest, TheDeviceThatIsNamedIsAsked) {
    HeadsetState other = sampleState();
    other.name = "glasses";
    other.cameras = {{"device@3.2/legacy/55", "legacy/0", "PRESENT", "", false}};
    const FakeDevice glasses(mTemporary.path(), "other1", other);
    EXPECT_THAT(offered("ps --device "), AllOf(Contains("glasses"), Contains("headset")));
    EXPECT_THAT(offered("open --device glasses "), ElementsAre("device@3.2/legacy/55"));
    EXPECT_THAT(offered("open --device=glasses "), ElementsAre("device@3.2/legacy/55"));
    EXPECT_THAT(offered("open "), IsEmpty()) << "nobody says which";
}

}  // namespace
}  // namespace orvo::simulator::testing
