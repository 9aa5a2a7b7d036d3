// SPDX-License-Identifier: Apache-2.0
// The Android.bp files: a device's build reads them, and they build what is built here.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <android-base/file.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/packaging/BlueprintModules.h"
#include "tests/packaging/SourceTexts.h"

namespace orvo::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

const fs::path kRoot = ORVO_SOURCE_DIR;
constexpr char kLibrary[] = "android.hardware.camera.provider@2.4-impl-orvo";

// What is compiled on Linux and not on a device.
bool isOnlyForLinux(const std::string& source) {
    static const std::set<std::string> kFiles = {
            // These look at the sources, and at the library that the Linux build made.
            "tests/provider/ExportedSymbolsTest.cpp",
            "tests/provider/IncludeRuleTest.cpp",
    };
    // Reads descriptions of simulated devices.
    constexpr char kDescriptions[] = "mapcheck/linux/";
    return kFiles.count(source) > 0 || source.rfind(kDescriptions, 0) == 0;
}

bool isOfTheDevice(const std::string& source) {
    static const std::vector<std::string> kDirectories = {"provider/",     "mapper/",
                                                          "mapcheck/",     "tests/provider/",
                                                          "tests/mapper/", "device/service/"};
    return std::any_of(kDirectories.begin(), kDirectories.end(), [&](const std::string& directory) {
        return source.rfind(directory, 0) == 0;
    });
}

// The labels of a rule's command that stand for two files, which the build refuses.
std::set<std::string> ambiguousLabels(const json& rule) {
    std::set<std::string> labels;
    std::set<std::string> ambiguous;
    for (const char* property : {"srcs", "tools", "tool_files", "out"}) {
        for (const std::string label : rule["properties"].value(property, json::array())) {
            if (!labels.insert(label).second) ambiguous.insert(label);
        }
    }
    return ambiguous;
}

// What the Linux build compiles, relative to the root.
std::set<std::string> compiledOnLinux() {
    std::string text;
    EXPECT_TRUE(android::base::ReadFileToString(ORVO_BINARY_DIR "/compile_commands.json", &text));
    std::set<std::string> sources;
    for (const json& command : json::parse(text)) {
        const fs::path file = command["file"].get<std::string>();
        sources.insert(file.lexically_relative(kRoot));
    }
    return sources;
}

std::set<std::string> without(std::set<std::string> all, const std::set<std::string>& some) {
    for (const std::string& one : some) all.erase(one);
    return all;
}

// The source files that belong to the headers that these files include.
std::set<std::string> sourcesOfHeadersOf(const std::set<std::string>& files) {
    std::set<std::string> sources;
    for (const fs::path header : withHeaders(files)) {
        const fs::path source = fs::path(header).replace_extension(".cpp");
        if (fs::exists(kRoot / source)) sources.insert(source);
    }
    return sources;
}

class BlueprintTest : public ::testing::Test {
  protected:
    BlueprintTest() : mReading(readBlueprints(kRoot, kBlueprints)), mModules(mReading.output) {}

    void SetUp() override { ASSERT_TRUE(mReading.accepted) << mReading.complaints; }

    // The files that a module and its static libraries compile.
    std::set<std::string> sourcesOf(const std::string& module) const {
        const fs::path directory =
                fs::path(mModules.module(module)["file"].get<std::string>()).parent_path();
        std::set<std::string> sources;
        for (const std::string& source : mModules.list(module, "srcs")) {
            sources.insert((directory / source).lexically_normal());
        }
        for (const char* property : {"static_libs", "whole_static_libs"}) {
            for (const std::string& library : mModules.list(module, property)) {
                if (library.rfind("orvo", 0) == 0) sources.merge(sourcesOf(library));
            }
        }
        return sources;
    }

    const BlueprintReading mReading;
    const BlueprintModules mModules;
};

TEST_F(BlueprintTest, EveryFileThatIsNamedIsThere) {
    EXPECT_THAT(mModules.files(), Contains("provider/exports.map"));
    for (const std::string& file : mModules.files()) {
        // The build takes patterns for the inputs of a fuzz target.
        if (file.find('*') != std::string::npos) {
            EXPECT_TRUE(fs::is_directory(kRoot / fs::path(file).parent_path())) << file;
        } else {
            EXPECT_TRUE(fs::is_regular_file(kRoot / file)) << file;
        }
    }
}

TEST_F(BlueprintTest, TheDeviceCompilesWhatLinuxCompiles) {
    std::set<std::string> expected;
    for (const std::string& source : compiledOnLinux()) {
        if (isOfTheDevice(source) && !isOnlyForLinux(source)) expected.insert(source);
    }
    std::set<std::string> found;
    for (const std::string& source : mModules.sources()) {
        if (isOfTheDevice(source)) found.insert(source);
    }
    EXPECT_THAT(expected, Contains("provider/EntryPoint.cpp"));
    EXPECT_THAT(without(expected, found), IsEmpty()) << "add these to Android.bp";
    EXPECT_THAT(without(found, expected), IsEmpty()) << "the Linux build does not compile these";
}

TEST_F(BlueprintTest, WhatTheTestsAndTheFuzzTargetShareIsCompiledOnLinuxToo) {
    EXPECT_THAT(without(mModules.sources(), compiledOnLinux()), IsEmpty());
}

TEST_F(BlueprintTest, EveryProgramIsLinkedWithTheSourcesOfTheHeadersThatItIncludes) {
    for (const char* type : {"cc_library_shared", "cc_binary", "cc_test", "cc_fuzz"}) {
        for (const std::string& module : mModules.namesOfType(type)) {
            const std::set<std::string> linked = sourcesOf(module);
            EXPECT_THAT(linked, Not(IsEmpty())) << module;
            EXPECT_THAT(without(sourcesOfHeadersOf(linked), linked), IsEmpty())
                    << "add these to " << module;
        }
    }
}

TEST_F(BlueprintTest, WhatIsOlderThanTheNamesThatWeUseIsNotNeeded) {
    // Each is younger than level 29, or of another C library.
    static const std::regex kYounger(
            "std::filesystem|<filesystem>|<charconv>|__android_log_set_|[^_]memfd_create|"
            "[^\\\\]\\n\\s*\\[\\[clang::|\\bMOCK_METHOD\\(|GTEST_FLAG_SET|TempDir\\(");
    static const std::regex kRenamed("INSTANTIATE_TEST_SUITE_P|TYPED_TEST_SUITE|GTEST_SKIP");
    constexpr char kOlderNames[] = "tests/support/OlderGoogleTest.h";
    for (const std::string& source : withHeaders(mModules.sources())) {
        const std::string text = sourceText(source);
        std::smatch match;
        EXPECT_FALSE(std::regex_search(text, match, kYounger)) << source << ": " << match.str();
        if (source != kOlderNames && std::regex_search(text, kRenamed)) {
            EXPECT_THAT(headersOf(source), Contains(kOlderNames)) << "included by " << source;
        }
    }
}

TEST_F(BlueprintTest, TheTestsReplaceTheFunctionsThatTheyReplaceOnLinux) {
    static const std::regex kWrap("--wrap=([a-zA-Z_]+)");
    const auto wraps = [](const std::string& text) {
        std::multiset<std::string> names;
        for (std::sregex_iterator it(text.begin(), text.end(), kWrap), end; it != end; ++it) {
            names.insert((*it)[1]);
        }
        return names;
    };
    std::string linux;
    for (const char* directory : {"mapper", "provider", "support"}) {
        std::string text;
        ASSERT_TRUE(android::base::ReadFileToString(kRoot / "tests" / directory / "CMakeLists.txt",
                                                    &text));
        linux += text;
    }
    std::string device;
    for (const char* type : {"cc_defaults", "cc_test"}) {
        for (const std::string& name : mModules.namesOfType(type)) {
            device += mModules.module(name)["properties"].value("ldflags", json()).dump();
        }
    }
    EXPECT_THAT(wraps(linux), Contains("dlopen"));
    EXPECT_EQ(wraps(device), wraps(linux));
}

TEST_F(BlueprintTest, FilesThatEveryTreeFindsHoldWhatEveryTreeKnows) {
    // The reader here is of a later year than level 29, and would accept more.
    static const std::set<std::string> kTypes = {
            "cc_binary", "cc_defaults", "cc_library_shared", "cc_library_static",
            "cc_test",   "genrule",     "prebuilt_etc"};
    for (const json& module : json::parse(mReading.output)) {
        if (fs::path(module["file"].get<std::string>()).filename() != "Android.bp") continue;
        EXPECT_THAT(kTypes, Contains(module["type"].get<std::string>())) << module["file"];
    }
}

TEST_F(BlueprintTest, TheLibraryIsInstalledWhereTheLoaderLooks) {
    EXPECT_EQ(mModules.module(kLibrary)["type"], "cc_library_shared");
    EXPECT_EQ(std::string(kLibrary) + ".so", ORVO_PROVIDER_LIBRARY_NAME);
    EXPECT_EQ(mModules.property(kLibrary, "vendor"), true);
    EXPECT_EQ(mModules.property(kLibrary, "compile_multilib"), "64");
    EXPECT_EQ(mModules.property(kLibrary, "relative_install_path"), "hw");
}

TEST_F(BlueprintTest, TheLibraryHidesWhatItDoesNotExport) {
    EXPECT_EQ(mModules.property(kLibrary, "version_script"), "provider/exports.map");
    for (const char* module : {kLibrary, "orvo_camera_provider_core", "orvo_camera_mapper"}) {
        EXPECT_THAT(mModules.list(module, "cflags"), Contains("-fvisibility=hidden")) << module;
        EXPECT_EQ(mModules.property(module, "sanitize")["integer_overflow"], true) << module;
        EXPECT_EQ(mModules.property(module, "cpp_std"), "c++17") << module;
    }
}

TEST_F(BlueprintTest, EveryModuleButTheToolsIsForTheVendorPartition) {
    for (const char* type : {"cc_library_static", "cc_library_shared", "cc_test", "prebuilt_etc"}) {
        EXPECT_THAT(mModules.namesOfType(type), Not(IsEmpty())) << type;
        for (const std::string& module : mModules.namesOfType(type)) {
            EXPECT_EQ(mModules.property(module, "vendor"), true) << module;
        }
    }
}

TEST_F(BlueprintTest, EveryDependencyWithinTheProjectExists) {
    for (const char* type : {"cc_library_static", "cc_library_shared", "cc_test", "cc_binary",
                             "cc_fuzz", "genrule", "prebuilt_etc"}) {
        for (const std::string& module : mModules.namesOfType(type)) {
            for (const char* property : {"static_libs", "whole_static_libs", "required", "tools"}) {
                for (const std::string& name : mModules.list(module, property)) {
                    if (name.find("orvo") != std::string::npos) mModules.module(name);
                }
            }
        }
    }
}

TEST_F(BlueprintTest, TheProductsMapIsCheckedBeforeItIsInstalled) {
    constexpr char kMap[] = "orvo_vendor_manifest.xml";
    const std::string source = mModules.property(kMap, "src");
    ASSERT_EQ(source.substr(0, 1), ":");
    const std::string rule = source.substr(1);
    EXPECT_EQ(mModules.module(rule)["type"], "genrule");
    EXPECT_THAT(mModules.list(rule, "tools"), Contains("orvo-mapcheck"));
    EXPECT_THAT(mModules.property(rule, "cmd").get<std::string>(),
                HasSubstr("$(location orvo-mapcheck) $(in) --manifest "));
    EXPECT_EQ(mModules.property("orvo-mapcheck", "host_supported"), true);
    EXPECT_EQ(mModules.property(kMap, "filename"), kMap);
    EXPECT_THAT(mModules.list(kLibrary, "required"), Contains(kMap));
}

TEST_F(BlueprintTest, EveryLabelOfARuleStandsForOneFile) {
    EXPECT_THAT(mModules.namesOfType("genrule"), Not(IsEmpty()));
    for (const std::string& name : mModules.namesOfType("genrule")) {
        json rule = mModules.module(name);
        EXPECT_THAT(ambiguousLabels(rule), IsEmpty()) << name;
        const std::string source = rule["properties"]["srcs"][0];
        rule["properties"]["out"].push_back(source);
        EXPECT_THAT(ambiguousLabels(rule), ElementsAre(source))
                << "an output named like its source";
    }
}

TEST(BlueprintReaderTest, AMistakeIsNamedWithItsPlace) {
    const TemporaryDir directory;
    std::ofstream(fs::path(directory.path) / "Android.bp")
            << "cc_library_shared {\n    name: \"a\",\n    visible: false,\n}\n\ncc_nothing {}\n";
    const BlueprintReading reading = readBlueprints(directory.path, {"Android.bp"});
    EXPECT_FALSE(reading.accepted);
    EXPECT_EQ(reading.complaints,
              "Android.bp:3:12: unrecognized property \"visible\"\n"
              "Android.bp:6:1: unrecognized module type \"cc_nothing\"\n");
}

}  // namespace
}  // namespace orvo::test
