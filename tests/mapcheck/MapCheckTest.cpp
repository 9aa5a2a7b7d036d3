// SPDX-License-Identifier: Apache-2.0
// Runs the checker, and holds its two forms of output against each other.

#include "tests/mapcheck/MapCheckTest.h"

#include <nlohmann/json.hpp>

namespace orvo::test {

namespace {

// An object as the line that the text form has for it.
std::string lineOf(const JsonFinding& finding) {
    return finding.file + ":" + (finding.line == 0 ? "" : std::to_string(finding.line) + ":") +
           " " + finding.severity + ": " + finding.message +
           (finding.severity == "note" ? "" : " [" + finding.code + "]") + "\n";
}

}  // namespace

ProgramEnd run(const std::vector<std::string>& arguments, const std::string& program) {
    std::vector<std::string> command = {simulator::testing::programPath(program)};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return simulator::testing::runProgram(command);
}

std::vector<JsonFinding> parseFindings(const std::string& json) {
    std::vector<JsonFinding> findings;
    const auto parsed = nlohmann::json::parse(json, nullptr, false);
    EXPECT_TRUE(parsed.is_array()) << json;
    if (!parsed.is_array()) return findings;
    for (const auto& object : parsed) {
        EXPECT_EQ(object.size(), 5) << object;
        findings.push_back({object.at("file"), object.at("line"), object.at("severity"),
                            object.at("code"), object.at("message")});
    }
    return findings;
}

std::vector<JsonFinding> findingsOf(const std::string& file,
                                    const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {file, "--format=json"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return parseFindings(run(all).out);
}

void MapCheckTest::expect(const std::string& map, const std::vector<std::string>& lines,
                          const std::vector<std::string>& arguments, int status) {
    mDirectory.write("map.xml", map);
    expectOfFile(lines, arguments, status);
}

void MapCheckTest::expectOfFile(const std::vector<std::string>& lines,
                                const std::vector<std::string>& arguments, int status) {
    std::string expected;
    for (const std::string& line : lines) expected += mMap + ":" + line + "\n";

    std::vector<std::string> all = {mMap};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const ProgramEnd text = run(all);
    EXPECT_EQ(text.out, expected);
    EXPECT_EQ(text.err, "");
    EXPECT_EQ(text.status, status);

    all.push_back("--format=json");
    const ProgramEnd json = run(all);
    std::string lineByLine;
    for (const JsonFinding& finding : parseFindings(json.out)) lineByLine += lineOf(finding);
    EXPECT_EQ(lineByLine, expected) << "both forms say the same";
    EXPECT_EQ(json.err, "");
    EXPECT_EQ(json.status, status);
}

}  // namespace orvo::test
