// SPDX-License-Identifier: Apache-2.0
// The fixture of the map checker's tests: it runs the program over a map and reads what it says.
#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/support/FreshDirectory.h"
#include "tests/simulator/support/ProgramRun.h"

namespace orvo::test {

using simulator::testing::ProgramEnd;

/** One object of the checker's JSON. */
struct JsonFinding {
    std::string file;
    long line;
    std::string severity;
    std::string code;
    std::string message;
};

/** Runs a program of the build under test with these arguments. */
ProgramEnd run(const std::vector<std::string>& arguments,
               const std::string& program = "orvo-mapcheck");

/** Reads the JSON of the checker; the test fails if it has another form. */
std::vector<JsonFinding> parseFindings(const std::string& json);

/** What the checker says about the map file with --format=json. */
std::vector<JsonFinding> findingsOf(const std::string& file,
                                    const std::vector<std::string>& arguments = {});

/** A line of a map. */
std::string entry(const std::string& value, const std::string& key = "legacy/0");

/** A map of these lines; the first one is on line 2. */
std::string mapOf(const std::string& entries);

/** A manifest that declares these instances of the camera provider. */
std::string manifestText(const std::vector<std::string>& instances);

/**
 * The description of a provider TYPE/0 with one camera, whose id is the type, and one section of
 * vendor tags, "com.TYPE", with `tags` such as "{ id: 0x80000001, name: gain, type: BYTE }".
 */
std::string descriptionText(const std::string& type, const std::string& tags);

class MapCheckTest : public ::testing::Test {
  protected:
    /**
     * Writes the map, and expects these lines, the file's name left out, and the exit status in
     * both forms of the output: "3: error: <message> [<code>]", "4: note: <message>". Each code has
     * to have a row of that severity in the table of findings in docs/device.md.
     */
    void expect(const std::string& map, const std::vector<std::string>& lines,
                const std::vector<std::string>& arguments = {}, int status = 1);
    void expectClean(const std::string& map, const std::vector<std::string>& arguments = {}) {
        expect(map, {}, arguments, 0);
    }
    /** The same for the map file as it is now. */
    void expectOfFile(const std::vector<std::string>& lines,
                      const std::vector<std::string>& arguments, int status);

    simulator::testing::FreshDirectory mDirectory;
    const std::string mMap = mDirectory.path() + "/map.xml";
};

}  // namespace orvo::test
