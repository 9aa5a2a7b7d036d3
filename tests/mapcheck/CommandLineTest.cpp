// SPDX-License-Identifier: Apache-2.0
// The command line, the program for a device, and the two forms of the output.

#include "tests/mapcheck/MapCheckTest.h"

namespace orvo::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kPortable[] = "orvo-mapcheck-portable";
constexpr char kBadMap[] = "<map>\n<instance>legacy/0</instance>\n</map>\n";

class CommandLineTest : public MapCheckTest {
  protected:
    void expectBadUse(const std::vector<std::string>& arguments, const std::string& complaint,
                      const std::string& program = "orvo-mapcheck") {
        const ProgramEnd end = run(arguments, program);
        EXPECT_EQ(end.err, "orvo-mapcheck: " + complaint + "\n");
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.status, 2);
    }
};

TEST_F(CommandLineTest, HelpShowsTheOptionsAndExamples) {
    for (const char* option : {"--help", "-h"}) {
        const ProgramEnd end = run({option});
        EXPECT_THAT(end.out, StartsWith("usage: orvo-mapcheck FILE... "));
        EXPECT_THAT(end.out, HasSubstr("\nexamples:\n  orvo-mapcheck orvo_vendor_manifest.xml\n"));
        EXPECT_THAT(end.out, HasSubstr("--description FILE"));
        EXPECT_EQ(end.err, "");
        EXPECT_EQ(end.status, 0);
    }
}

TEST_F(CommandLineTest, BadUseIsOneLineThatSaysWhatToDo) {
    expectBadUse({}, "name at least one map file; see --help");
    expectBadUse({"m", "--colour"}, "--colour is not an option, or takes no value; see --help");
    expectBadUse({"m", "-x"}, "-x is not an option, or takes no value; see --help");
    expectBadUse({"m", "--help=yes"}, "--help=yes is not an option, or takes no value; see --help");
    expectBadUse({"m", "--manifest"}, "--manifest needs a value; see --help");
    expectBadUse({"m", "--format", "xml"}, "--format is text or json, not \"xml\"; see --help");
    expectBadUse({"m", "--devices", "external/0"},
                 "--devices takes INSTANCE=NAME[,NAME...], not \"external/0\"; see --help");
    for (const std::string devices : {"external/0=", "external/0=device@3.2/external/1,"}) {
        expectBadUse({"m", "--devices", devices},
                     "there is an empty device name in \"" + devices +
                             "\"; write one such as device@3.2/external/100; see --help");
    }
}

TEST_F(CommandLineTest, AMistakeInADescriptionIsItsReadersOwnLine) {
    const std::string file = mDirectory.write("external.yaml", "cameras: 1\n");
    const ProgramEnd end = run({mMap, "--description", file});
    EXPECT_THAT(end.err, StartsWith("orvo-mapcheck: " + file + ":1: "));
    EXPECT_THAT(end.err, Not(HasSubstr("--help")));
    EXPECT_EQ(end.status, 2);
}

TEST_F(CommandLineTest, AFileAfterTwoDashesMayBeginWithOne) {
    const ProgramEnd end = run({"--", "-map.xml"});
    EXPECT_THAT(end.out, StartsWith("-map.xml: error: cannot be opened"));
    EXPECT_EQ(end.status, 2);
}

TEST_F(CommandLineTest, TheProgramForADeviceDoesTheSameWithoutDescriptions) {
    const std::string map = mDirectory.write("map.xml", kBadMap);
    const ProgramEnd portable = run({map}, kPortable);
    const ProgramEnd full = run({map});
    EXPECT_EQ(portable.out, full.out);
    EXPECT_EQ(portable.err, "");
    EXPECT_EQ(portable.status, 1);
    EXPECT_THAT(run({"--help"}, kPortable).out, Not(HasSubstr("--description")));
    expectBadUse({map, "--description", "x.yaml"},
                 "--description is not an option, or takes no value; see --help", kPortable);
}

TEST_F(CommandLineTest, JsonIsOneObjectALine) {
    const std::string map = mDirectory.write("map.xml", kBadMap);
    const ProgramEnd end = run({"--format=json", map});
    EXPECT_THAT(end.out, HasSubstr(",\n{\"file\":\"" + map +
                                   "\",\"line\":2,\"severity\":\"error\",\"code\":\"no-replace\","
                                   "\"message\":\"the entry \\\"legacy/0\\\" is ignored, it has "
                                   "no \\\"replace\\\" attribute; name the provider that stands "
                                   "behind it\"}\n]\n"));
    EXPECT_THAT(end.out, StartsWith("[\n{\"file\":\""));
    EXPECT_EQ(end.status, 1);
}

TEST_F(CommandLineTest, JsonOfACleanMapIsAnEmptyArray) {
    const std::string map = mDirectory.write(
            "map.xml", "<map><instance replace=\"external/0\">legacy/0</instance></map>");
    const ProgramEnd end = run({"--format=json", map});
    EXPECT_EQ(end.out, "[]\n");
    EXPECT_EQ(end.status, 0);
}

TEST_F(CommandLineTest, AFileNameInAnotherEncodingStillGivesJson) {
    const std::string json = run({"--format=json", "caf\xE9\n.xml"}).out;
    const std::vector<JsonFinding> found = parseFindings(json);
    ASSERT_THAT(found, ::testing::SizeIs(1));
    EXPECT_EQ(found[0].file, "café\n.xml");
    EXPECT_EQ(found[0].line, 0);
}

TEST_F(CommandLineTest, AFileNameThatIsNearlyUtf8StillGivesJson) {
    const std::pair<const char*, const char*> names[] = {
            {"\xED\xA0\x80", "\u00ED\u00A0\u0080"},            // Half a surrogate pair.
            {"\xC0\x80", "\u00C0\u0080"},                      // A longer form of NUL.
            {"\xE0\x80\xAF", "\u00E0\u0080\u00AF"},            // A longer form of "/".
            {"\xF0\x82\x82\xAC", "\u00F0\u0082\u0082\u00AC"},  // A longer form of a sign.
            {"\xF4\x90\x80\x80", "\u00F4\u0090\u0080\u0080"},  // Beyond the last character.
            {"\xF8\x88\x80\x80\x80", "\u00F8\u0088\u0080\u0080\u0080"},
            {"\x80", "\u0080"},            // A middle without a begin.
            {"\xE2\x82", "\u00E2\u0082"},  // A begin without an end.
            {"\xE2\x82z", "\u00E2\u0082z"},
            {"\xF4\x8F\xBF\xBF\xEF\xBF\xBF\xED\x9F\xBF\xC2\x80", "\U0010FFFF\uFFFF\uD7FF\u0080"},
            {"\u20AC\xE9", "\u20AC\u00E9"},
            {"\x7F\x01", "\x7F\x01"},
    };
    for (const auto& [name, shown] : names) {
        const std::vector<JsonFinding> found = findingsOf(name);
        ASSERT_THAT(found, ::testing::SizeIs(1)) << shown;
        EXPECT_EQ(found[0].file, shown);
    }
}

class FullDiskTest : public CommandLineTest {
  protected:
    // The end of a run whose output goes where nothing can be written.
    static ProgramEnd runIntoFullDisk(const std::string& arguments) {
        return simulator::testing::runProgram({"/bin/sh", "-c",
                                               simulator::testing::programPath("orvo-mapcheck") +
                                                       " " + arguments + " >/dev/full"});
    }

    static void expectOneLine(const ProgramEnd& end) {
        EXPECT_EQ(end.err,
                  "orvo-mapcheck: the output cannot be written: No space left on device\n");
        EXPECT_EQ(end.status, 2);
    }
};

TEST_F(FullDiskTest, FindingsThatCannotBeWrittenAreAnError) {
    const std::string map = mDirectory.write("map.xml", kBadMap);
    expectOneLine(runIntoFullDisk(map));
    expectOneLine(runIntoFullDisk(map + " --format=json"));
}

TEST_F(FullDiskTest, FindingsThatFillMoreThanABufferAreAnErrorToo) {
    std::string text = "<map>\n";
    for (int i = 0; i < 300000; ++i) text += "<instance/>\n";
    const std::string map = mDirectory.write("map.xml", text + "</map>\n");
    expectOneLine(runIntoFullDisk(map));
    expectOneLine(runIntoFullDisk(map + " --format=json"));
}

TEST_F(FullDiskTest, HelpThatCannotBeWrittenIsAnError) {
    expectOneLine(runIntoFullDisk("--help"));
}

TEST_F(FullDiskTest, WhereThereIsNothingToSayNothingHasToBeWritten) {
    const std::string map = mDirectory.write(
            "map.xml", "<map><instance replace=\"external/0\">legacy/0</instance></map>");
    EXPECT_EQ(runIntoFullDisk(map).status, 0);
    expectOneLine(runIntoFullDisk(map + " --format=json"));
}

}  // namespace
}  // namespace orvo::test
