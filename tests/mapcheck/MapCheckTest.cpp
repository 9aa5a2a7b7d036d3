// SPDX-License-Identifier: Apache-2.0
// Runs the checker, and holds its two forms of output against each other.

#include "tests/mapcheck/MapCheckTest.h"

#include <sstream>

#include <nlohmann/json.hpp>

#include "tests/packaging/SourceTexts.h"

namespace orvo::test {

namespace {

// An object as the line that the text form has for it.
std::string lineOf(const JsonFinding& finding) {
    return finding.file + ":" + (finding.line == 0 ? "" : std::to_string(finding.line) + ":") +
           " " + finding.severity + ": " + finding.message +
           (finding.severity == "note" ? "" : " [" + finding.code + "]") + "\n";
}

// The row of the document's table whose first cell has the code; empty if there is none.
std::string rowOf(const std::string& code) {
    static const std::string document = sourceText("docs/device.md");
    const std::string quoted = "`" + code + "`";
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
        const bool isRow = line.compare(0, 3, "| `") == 0;
        if (isRow && line.substr(0, line.find(" | ")).find(quoted) != std::string::npos) {
            return line;
        }
    }
    return "";
}

void expectInDocument(const JsonFinding& finding) {
    const std::string row = rowOf(finding.code);
    ASSERT_NE(row, "") << "give `" << finding.code << "` a row in docs/device.md";
    const size_t second = row.find(" | ") + 1;
    EXPECT_THAT(row.substr(second, row.find(" | ", second) - second),
                ::testing::HasSubstr(finding.severity))
            << "mend the severity of `" << finding.code << "` in docs/device.md";
}

}  // namespace

std::string entry(const std::string& value, const std::string& key) {
    return "<instance replace=\"" + value + "\">" + key + "</instance>\n";
}

std::string mapOf(const std::string& entries) {
    return "<providers>\n" + entries + "</providers>\n";
}

std::string manifestText(const std::vector<std::string>& instances) {
    std::string text = R"(<manifest version="1.0" type="device"><hal format="hidl">
        <name> android.hardware.camera.provider </name><transport>hwbinder</transport>
        <version>2.4</version><interface><name>ICameraProvider</name>)";
    for (const auto& instance : instances) text += "<instance> " + instance + "\n</instance>";
    return text + "</interface></hal></manifest>";
}

std::string descriptionText(const std::string& type, const std::string& tags) {
    return "instance: " + type +
           "/0\ntorch: true\nreportsBuiltIn: true\nvendorTags:\n  - { section: com." + type +
           ", tags: [" + tags + "] }\ncameras:\n  - { name: device@3.2/" + type + "/" + type +
           ", facing: BACK, resourceCost: 1 }\n";
}

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
    for (const JsonFinding& finding : parseFindings(json.out)) {
        lineByLine += lineOf(finding);
        if (finding.severity != "note") expectInDocument(finding);
    }
    EXPECT_EQ(lineByLine, expected) << "both forms say the same";
    EXPECT_EQ(json.err, "");
    EXPECT_EQ(json.status, status);
}

}  // namespace orvo::test
