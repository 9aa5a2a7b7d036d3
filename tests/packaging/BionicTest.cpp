// SPDX-License-Identifier: Apache-2.0
// What the device's modules compile on a device only: it has no mistake that this machine's
// compiler can find.

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include <android-base/file.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/packaging/BlueprintModules.h"
#include "tests/packaging/SourceTexts.h"
#include "tests/simulator/support/ProgramRun.h"

namespace orvo::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using ::testing::Contains;
using ::testing::HasSubstr;

const fs::path kRoot = ORVO_SOURCE_DIR;

// Whether a line of the file, or of a header of the project that it includes, asks for the device.
bool dependsOnTheDevice(const std::string& source) {
    static const std::regex kCondition(R"(\n\s*#\s*(if|elif).*\b__(BIONIC|ANDROID)\w*__)");
    const std::set<std::string> texts = withHeaders({source});
    return std::any_of(texts.begin(), texts.end(), [](const std::string& file) {
        return std::regex_search(sourceText(file), kCondition);
    });
}

// What the compiler of this build says of `file`, with the options that it compiles `source` with,
// if the C library is a device's.
std::string complaintsAbout(const fs::path& file, const std::string& source) {
    std::string text;
    EXPECT_TRUE(android::base::ReadFileToString(ORVO_BINARY_DIR "/compile_commands.json", &text));
    for (const json& command : json::parse(text)) {
        const std::string compiled = command["file"];
        if (compiled != kRoot / source) continue;
        std::string line = command["command"];
        line.replace(line.rfind(compiled), compiled.size(), file);
        line = "cd '" + command["directory"].get<std::string>() + "' && " + line +
               " -fsyntax-only -include '" + (kRoot / "tests/packaging/Bionic.h").string() + "'";
        const auto end = simulator::testing::runProgram({"/bin/sh", "-c", line});
        return end.status == 0 ? "" : "status " + std::to_string(end.status) + "\n" + end.err;
    }
    return source + " is not compiled here";
}

TEST(BionicTest, WhatIsCompiledOnADeviceOnlyCompiles) {
    const BlueprintReading reading = readBlueprints(kRoot, kBlueprints);
    ASSERT_TRUE(reading.accepted) << reading.complaints;
    std::set<std::string> sources;
    for (const std::string& source : BlueprintModules(reading.output).sources()) {
        if (!dependsOnTheDevice(source)) continue;
        EXPECT_EQ(complaintsAbout(kRoot / source, source), "");
        sources.insert(source);
    }
    EXPECT_THAT(sources, Contains("tests/mapper/MapFaultsTest.cpp"));
}

TEST(BionicTest, AMistakeThereIsFound) {
    const TemporaryDir directory;
    const std::string file = std::string(directory.path) + "/Mistaken.cpp";
    ASSERT_TRUE(android::base::WriteStringToFile(
            "#ifdef __BIONIC__\nint answer(int question) { return 42; }\n#endif\n", file));
    EXPECT_THAT(complaintsAbout(file, "tests/support/TemporaryDirectory.cpp"),
                HasSubstr("unused parameter"));
}

}  // namespace
}  // namespace orvo::test
