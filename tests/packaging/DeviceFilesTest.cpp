// SPDX-License-Identifier: Apache-2.0
// The sample configuration in device/: its files agree with each other and with the code.

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <android-base/file.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/vintf/VintfManifest.h"
#include "mapper/ProviderMapper.h"
#include "provider/naming/CameraIdProperty.h"
#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::Each;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

const fs::path kDevice = fs::path(ORVO_SOURCE_DIR) / "device";
const std::string kService = "android.hardware.camera.provider@2.4-service-orvo";
constexpr char kInterface[] = "android.hardware.camera.provider@2.4::ICameraProvider";

std::string textOf(const fs::path& file) {
    std::string text;
    EXPECT_TRUE(android::base::ReadFileToString(kDevice / file, &text)) << file;
    return text;
}

// The lines that are no comment, as words.
std::vector<std::vector<std::string>> statementsOf(const fs::path& file) {
    std::vector<std::vector<std::string>> statements;
    std::istringstream lines(textOf(file));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream stream(line);
        std::vector<std::string> words;
        for (std::string word; stream >> word;) words.push_back(word);
        if (!words.empty() && words[0][0] != '#') statements.push_back(words);
    }
    return statements;
}

// The map, read by the library's own reader.
std::map<std::string, std::vector<std::string>> sampleMap() {
    camera::ProviderMapper mapper;
    EXPECT_TRUE(mapper.loadMapFromFile((kDevice / "orvo_vendor_manifest.xml").c_str()));
    return mapper.mProviderMap;
}

std::set<std::string> replacements() {
    std::set<std::string> names;
    for (const auto& [instance, behind] : sampleMap()) names.insert(behind.begin(), behind.end());
    return names;
}

std::vector<std::string> declaredInstances() {
    VintfManifest manifest;
    EXPECT_TRUE(manifest.addFile(kDevice / (kService + ".xml")).empty());
    for (const std::string& instance : manifest.instancesOf(kInterface)) {
        EXPECT_EQ(manifest.transportOf(kInterface, instance), VintfManifest::Transport::HWBINDER);
    }
    return manifest.instancesOf(kInterface);
}

// The instances that the .rc file passes to the service.
std::vector<std::string> servedInstances() {
    for (const auto& words : statementsOf(kService + ".rc")) {
        if (words[0] == "service") return {words.begin() + 3, words.end()};
    }
    ADD_FAILURE() << "the .rc file starts no service";
    return {};
}

// Key: property name or path, as in the file. Value: its label.
std::map<std::string, std::string> labelsOf(const fs::path& file) {
    std::map<std::string, std::string> labels;
    for (const auto& words : statementsOf(file)) {
        EXPECT_GE(words.size(), 2u) << words[0];
        static const std::regex kLabel("u:object_r:([a-z_]+):s0");
        std::smatch match;
        EXPECT_TRUE(std::regex_match(words[1], match, kLabel)) << words[1];
        EXPECT_TRUE(labels.emplace(words[0], match[1]).second) << words[0] << " is there twice";
    }
    return labels;
}

// The types that the policy of this directory declares.
std::set<std::string> declaredTypes() {
    std::set<std::string> types;
    for (const char* file : {"sepolicy/property.te", "sepolicy/hal_camera_orvo.te"}) {
        for (const auto& words : statementsOf(file)) {
            if (words[0] == "type") types.insert(words[1].substr(0, words[1].find(',')));
        }
    }
    return types;
}

TEST(DeviceMapFileTest, EveryReplacementCanBeServed) {
    EXPECT_THAT(sampleMap(), Not(IsEmpty()));
    EXPECT_THAT(replacements(), Each(EndsWith("/0")));
}

TEST(DeviceMapFileTest, TheInstancesInItAreServed) {
    for (const auto& [instance, behind] : sampleMap()) {
        EXPECT_THAT(servedInstances(), Contains(instance));
    }
}

TEST(DeviceManifestTest, DeclaresWhatTheMapNeeds) {
    EXPECT_THAT(declaredInstances(), IsSupersetOf(replacements()));
}

TEST(DeviceManifestTest, DeclaresWhatTheServiceServes) {
    EXPECT_THAT(declaredInstances(), IsSupersetOf(servedInstances()));
}

TEST(DeviceInitFileTest, StartsTheProgramThatIsBuilt) {
    const auto statements = statementsOf(kService + ".rc");
    ASSERT_THAT(statements, Not(IsEmpty()));
    ASSERT_GE(statements[0].size(), 4u);
    EXPECT_EQ(statements[0][2], "/vendor/bin/hw/" + kService);
    EXPECT_THAT(textOf("Android.bp"), ::testing::HasSubstr("name: \"" + kService + "\""));
}

TEST(DeviceInitFileTest, NamesTheInterfaceOfEachInstance) {
    std::vector<std::string> named;
    for (const auto& words : statementsOf(kService + ".rc")) {
        if (words[0] != "interface") continue;
        ASSERT_EQ(words.size(), 3u);
        EXPECT_EQ(words[1], kInterface);
        named.push_back(words[2]);
    }
    EXPECT_EQ(named, servedInstances());
}

TEST(DevicePolicyTest, TheServicesProgramIsLabelled) {
    std::map<std::string, std::string> labels;
    for (const auto& [path, label] : labelsOf("sepolicy/file_contexts")) {
        labels[std::regex_replace(path, std::regex(R"(\\\.)"), ".")] = label;
    }
    EXPECT_EQ(labels["/vendor/bin/hw/" + kService], "hal_camera_orvo_exec");
    EXPECT_THAT(declaredTypes(), Contains("hal_camera_orvo_exec"));
}

TEST(DevicePolicyTest, TheServiceMaySetThePropertiesThatItWrites) {
    for (const auto& [property, label] : labelsOf("sepolicy/property_contexts")) {
        EXPECT_THAT(declaredTypes(), Contains(label)) << property;
        EXPECT_THAT(textOf("sepolicy/hal_camera_orvo.te"),
                    ::testing::HasSubstr("\nset_prop(hal_camera_orvo, " + label + ")\n"))
                << property;
    }
}

// The library itself says which properties it writes.
class DevicePropertiesTest : public ProviderTest {};

TEST_F(DevicePropertiesTest, AllThatTheLibraryWritesAreLabelledAndNoOthers) {
    const std::set<std::string> names = replacements();
    makeConnectedObject({names.begin(), names.end()});
    for (const std::string& name : names) {
        reportPresent({"device@3.2/" + name.substr(0, name.find('/')) + "/1"});
    }
    std::set<std::string> written;
    for (const PropertyWrite& write : mProperties.writes()) written.insert(write.name);

    std::set<std::string> labelled;
    for (const auto& [property, label] : labelsOf("sepolicy/property_contexts")) {
        labelled.insert(property);
    }
    EXPECT_THAT(written, Not(IsEmpty()));
    EXPECT_EQ(labelled, written);
}

// How many ids of one length the library can list.
size_t fittingIds(size_t length) {
    FakeProperties properties;
    const std::string id(length, '7');
    for (size_t count = 0;; ++count) {
        namespace naming = android::hardware::camera::provider::V2_4::implementation;
        naming::appendCameraIdToSystemProperty("external", id);
        if (!properties.writes().back().accepted) return count;
    }
}

TEST(DeviceDocumentTest, SaysHowManyIdsAPropertyHolds) {
    std::string text;
    ASSERT_TRUE(android::base::ReadFileToString(ORVO_SOURCE_DIR "/docs/device.md", &text));
    static const std::regex kRow(R"(\n  \| (\d+) \| (\d+) \|)");
    size_t rows = 0;
    for (std::sregex_iterator it(text.begin(), text.end(), kRow), end; it != end; ++it, ++rows) {
        EXPECT_EQ(fittingIds(stoul((*it)[1])), stoul((*it)[2])) << (*it)[1] << " characters";
    }
    EXPECT_EQ(rows, 5u);
}

TEST(DeviceDocumentTest, ItsLinesForInitClearTheIdsOfEveryType) {
    std::string text;
    ASSERT_TRUE(android::base::ReadFileToString(ORVO_SOURCE_DIR "/docs/device.md", &text));
    static const std::regex kLine(R"(\n    onrestart setprop (\S+) "")");
    std::set<std::string> cleared;
    for (std::sregex_iterator it(text.begin(), text.end(), kLine), end; it != end; ++it) {
        cleared.insert((*it)[1]);
    }
    std::set<std::string> ids;
    for (const auto& [property, label] : labelsOf("sepolicy/property_contexts")) {
        if (std::regex_match(property, std::regex(R"(camera\..+\.ids)"))) ids.insert(property);
    }
    EXPECT_THAT(ids, Not(IsEmpty()));
    EXPECT_EQ(cleared, ids);
}

}  // namespace
}  // namespace orvo::test
