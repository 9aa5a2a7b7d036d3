// SPDX-License-Identifier: Apache-2.0
// Tests of ProviderDescription: what a description says, and one clear line for each mistake.

#include "simulator/description/ProviderDescription.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/description/MetadataBuffer.h"
#include "tests/simulator/support/FreshDirectory.h"

namespace orvo::simulator::testing {
namespace {

using android::hardware::camera::common::V1_0::CameraMetadataType;

constexpr char kGood[] = R"(instance: external/0
torch: false
reportsBuiltIn: true
vendorTags:
  - section: com.example.one
    tags:
      - { id: 0x80000000, name: first, type: BYTE }
      - { id: 2147483649, name: second, type: RATIONAL }
cameras:
  - name: device@3.2/external/100
    facing: FRONT
    flash: true
    orientation: 90
    resourceCost: 45
    conflictsWith: [device@1.0/external/b/c]
    characteristics:
      - { tag: 0x80000001, type: RATIONAL, values: [[1, 3], [-2, 5]] }
      - { tag: 7, type: DOUBLE, values: [0.25] }
  - name: device@1.0/external/b/c
    facing: EXTERNAL
    present: false
    resourceCost: 0
)";

class ProviderDescriptionTest : public ::testing::Test {
  protected:
    android::base::Result<ProviderDescription> read(const std::string& text) {
        mFile = mDirectory.write("provider.yaml", text);
        return ProviderDescription::read(mFile);
    }

    /** The good description with one text replaced. */
    std::string changed(const std::string& from, const std::string& to) {
        std::string text = kGood;
        const size_t at = text.find(from);
        EXPECT_NE(std::string::npos, at) << from;
        return text.replace(at, from.size(), to);
    }

    void expectMistake(const std::string& text, int line, const std::string& message) {
        const auto result = read(text);
        ASSERT_FALSE(result.has_value()) << "accepted:\n" << text;
        EXPECT_EQ(mFile + ":" + std::to_string(line) + ": " + message, result.error().message());
    }

    FreshDirectory mDirectory;
    std::string mFile;
};

TEST_F(ProviderDescriptionTest, EveryFieldIsRead) {
    const auto result = read(kGood);
    ASSERT_TRUE(result.has_value()) << result.error().message();
    EXPECT_EQ("external/0", result->instance);
    EXPECT_FALSE(result->torchSupported);
    EXPECT_TRUE(result->reportsBuiltIn);
    ASSERT_EQ(1u, result->vendorTags.size());
    EXPECT_EQ("com.example.one", result->vendorTags[0].sectionName);
    ASSERT_EQ(2u, result->vendorTags[0].tags.size());
    EXPECT_EQ(0x80000001u, result->vendorTags[0].tags[1].tagId);
    EXPECT_EQ("second", result->vendorTags[0].tags[1].tagName);
    EXPECT_EQ(CameraMetadataType::RATIONAL, result->vendorTags[0].tags[1].tagType);
    ASSERT_EQ(2u, result->cameras.size());
    const CameraDescription& front = result->cameras[0];
    EXPECT_EQ("device@3.2/external/100", front.name);
    EXPECT_EQ(3, front.majorVersion);
    EXPECT_EQ(Facing::FRONT, front.facing);
    EXPECT_TRUE(front.builtIn());
    EXPECT_TRUE(front.present);
    EXPECT_TRUE(front.flash);
    EXPECT_EQ(90u, front.orientation);
    EXPECT_EQ(45u, front.resourceCost);
    EXPECT_THAT(front.conflicts, ::testing::ElementsAre("device@1.0/external/b/c"));
    const CameraDescription& external = result->cameras[1];
    EXPECT_EQ(1, external.majorVersion);
    EXPECT_FALSE(external.builtIn());
    EXPECT_FALSE(external.present);
    EXPECT_FALSE(external.flash);
    EXPECT_TRUE(external.characteristics.empty());
}

TEST_F(ProviderDescriptionTest, CharacteristicsHoldTheDescribedAndTheCamerasOwn) {
    const auto result = read(kGood);
    ASSERT_TRUE(result.has_value()) << result.error().message();
    const auto& bytes = result->cameras[0].characteristics;
    const auto entries = unpackMetadata(bytes.data(), bytes.size());
    ASSERT_TRUE(entries.has_value());
    std::string text;
    for (const MetadataEntry& entry : *entries) {
        text += std::to_string(entry.tag) + "=" + entry.toText() + ";";
    }
    // In the order of tags: double, flash, facing (0 is the front), orientation, rationals.
    EXPECT_EQ("7=0.25;327680=1;524293=0;917518=90;2147483649=1/3 -2/5;", text);
}

TEST_F(ProviderDescriptionTest, AMissingFileIsNamed) {
    const auto result = ProviderDescription::read("/no/such.yaml");
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(
            "/no/such.yaml: cannot be read (No such file or directory); give a file that is there",
            result.error().message());
}

TEST_F(ProviderDescriptionTest, AFileThatMayHaveNoEndIsNotRead) {
    const auto result = ProviderDescription::read("/dev/zero");
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ("/dev/zero: is not a file; give one with a description", result.error().message());
}

TEST_F(ProviderDescriptionTest, TextThatIsNoYamlIsRefusedAtItsLine) {
    const auto result = read("instance: external/0\ncameras: [\n  }\n");
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(0u, result.error().message().find(mFile + ":3: is not YAML: "));
    EXPECT_EQ(std::string::npos, result.error().message().find('\n'));
}

TEST_F(ProviderDescriptionTest, AnEmptyFileIsNoDescription) {
    expectMistake("", 1, "the description is not a map; write lines of the form 'key: value'");
}

TEST_F(ProviderDescriptionTest, AnUnknownKeyIsNamedWithTheKnownOnes) {
    expectMistake(changed("torch:", "tourch:"), 2,
                  "the description has no key 'tourch'; the keys are instance, torch,"
                  " reportsBuiltIn, vendorTags, cameras");
}

TEST_F(ProviderDescriptionTest, AKeyThatIsThereTwiceIsRefused) {
    expectMistake(changed("torch: false", "instance: virtual/0"), 2,
                  "the description has 'instance' twice; leave one of them out");
}

TEST_F(ProviderDescriptionTest, AMissingKeyIsNamed) {
    expectMistake(changed("    facing: FRONT\n", ""), 10,
                  "camera 'device@3.2/external/100' has no 'facing'; add a line 'facing: ...'");
}

TEST_F(ProviderDescriptionTest, AnInstanceWithoutANumberIsRefused) {
    for (const char* instance : {"external", "external/", "/0"}) {
        expectMistake(changed("external/0", instance), 1,
                      std::string("instance is '") + instance +
                              "'; write <type>/<number>, such as external/0");
    }
}

TEST_F(ProviderDescriptionTest, AWordThatIsNoChoiceIsRefusedWithTheChoices) {
    expectMistake(changed("FRONT", "LEFT"), 11,
                  "camera 'device@3.2/external/100': facing is 'LEFT'; write one of BACK, FRONT,"
                  " EXTERNAL");
}

TEST_F(ProviderDescriptionTest, AFlagThatIsNeitherIsRefused) {
    expectMistake(changed("flash: true", "flash: 1"), 12,
                  "camera 'device@3.2/external/100': flash is neither true nor false; write one of"
                  " the two");
}

TEST_F(ProviderDescriptionTest, ANumberOutOfItsRangeIsRefused) {
    for (const char* number : {"101", "-1", "4.5", "lots", "99999999999999999999", "0x"}) {
        expectMistake(changed("45", number), 14,
                      std::string("camera 'device@3.2/external/100': resourceCost is '") + number +
                              "'; write a number from 0 to 100");
    }
}

TEST_F(ProviderDescriptionTest, AnOrientationThatIsNoQuarterIsRefused) {
    expectMistake(changed("orientation: 90", "orientation: 45"), 13,
                  "camera 'device@3.2/external/100': orientation is 45; write 0, 90, 180 or 270");
}

TEST_F(ProviderDescriptionTest, ANameOfAnotherProviderOrVersionIsRefused) {
    for (const char* name :
         {"device@3.2/virtual/100", "device@2.0/external/100", "camera", "device@3/external/100",
          "device@3.2/external/", "device@3.x/external/1"}) {
        expectMistake(changed("name: device@3.2/external/100", std::string("name: ") + name), 10,
                      std::string("camera '") + name +
                              "' is not named for this provider; write device@3.2/external/<id> or"
                              " device@1.0/external/<id>");
    }
}

TEST_F(ProviderDescriptionTest, TwoCamerasWithOneIdAreRefused) {
    std::string text = changed("[device@1.0/external/b/c]", "[]");
    const std::string name = "device@1.0/external/b/c";
    text.replace(text.find(name), name.size(), "device@1.0/external/100");
    expectMistake(text, 19,
                  "camera 'device@1.0/external/100' has an id that another camera has; give each"
                  " camera its own");
}

TEST_F(ProviderDescriptionTest, AConflictWithNobodyIsRefused) {
    for (const char* other : {"device@3.2/external/9", "device@3.2/external/100"}) {
        expectMistake(changed("[device@1.0/external/b/c]", std::string("[") + other + "]"), 15,
                      std::string("camera 'device@3.2/external/100' conflicts with '") + other +
                              "'; name another camera of this description");
    }
}

TEST_F(ProviderDescriptionTest, AVendorTagBelowTheVendorsRangeIsRefused) {
    expectMistake(changed("0x80000000", "0x7fffffff"), 7,
                  "section 'com.example.one': a tag: id is '0x7fffffff'; write a number from"
                  " 2147483648 to 4294967295");
}

TEST_F(ProviderDescriptionTest, TwoTagsWithOneIdAreRefused) {
    expectMistake(changed("2147483649", "2147483648"), 8,
                  "section 'com.example.one': a tag has an id that another tag has; give each its"
                  " own");
}

TEST_F(ProviderDescriptionTest, ACharacteristicThatIsThereAlreadyIsRefused) {
    expectMistake(changed("tag: 7, type: DOUBLE, values: [0.25]",
                          "tag: 0x00080005, type: BYTE, values: [1]"),
                  18,
                  "camera 'device@3.2/external/100': an entry of characteristics has a tag that is"
                  " there already; leave one out (facing, orientation and flash make entries of"
                  " their own)");
}

TEST_F(ProviderDescriptionTest, CharacteristicsOfAVersion1CameraAreRefused) {
    expectMistake(changed("    present: false\n",
                          "    characteristics: [{ tag: 1, type: BYTE, values: [1] }]\n"),
                  21,
                  "camera 'device@1.0/external/b/c' is of version 1 and has no characteristics;"
                  " leave them out");
}

TEST_F(ProviderDescriptionTest, ARationalThatIsNoFractionIsRefused) {
    expectMistake(changed("[1, 3]", "0.5"), 17,
                  "camera 'device@3.2/external/100': an entry of characteristics: a value is not a"
                  " fraction; write [numerator, denominator]");
}

TEST_F(ProviderDescriptionTest, AProviderMayHaveNoCameras) {
    for (const char* cameras : {"", "cameras: []\n"}) {
        const auto result = read(std::string("instance: a/0\n") + cameras);
        ASSERT_TRUE(result.has_value()) << result.error().message();
        EXPECT_TRUE(result->cameras.empty());
    }
}

TEST_F(ProviderDescriptionTest, CamerasThatAreNoneAreRefused) {
    expectMistake("instance: a/0\ncameras: many\n", 2,
                  "the description: cameras is not a list; begin each entry with '- '");
    expectMistake("instance: a/0\ncameras: [many]\n", 2,
                  "a camera is not a map; write lines of the form 'key: value'");
    expectMistake(changed("[[1, 3], [-2, 5]]", "[]"), 17,
                  "camera 'device@3.2/external/100': an entry of characteristics: values is empty;"
                  " write at least one entry");
}

TEST_F(ProviderDescriptionTest, AllMistakesAreTold) {
    mFile = mDirectory.write("provider.yaml", R"(instance: external
tourch: true
vendorTags:
  - section: com.example.one
    tags: [{ id: 1, name: first, type: WORD }, { name: [] }]
cameras:
  - facing: LEFT
    resourceCost: 101
  - name: device@3.2/external/7
    facing: BACK
    resourceCost: 1
    conflictsWith: [nobody]
    characteristics: [{ tag: 1, type: WORD, values: [x] }, { tag: 2, type: BYTE, values: [x] }]
  - 7
)");
    std::vector<std::string> mistakes;
    ProviderDescription::read(mFile, &mistakes);
    std::vector<std::string> places;
    for (const std::string& mistake : mistakes) {
        ASSERT_EQ(0u, mistake.find(mFile + ":")) << mistake;
        const size_t begin = mFile.size() + 1;
        places.push_back(mistake.substr(begin, mistake.find(':', begin) - begin));
    }
    EXPECT_THAT(places, ::testing::ElementsAre("1", "2", "5", "5", "5", "5", "5", "7", "7", "8",
                                               "12", "13", "13", "14"))
            << ::testing::PrintToString(mistakes);
}

}  // namespace
}  // namespace orvo::simulator::testing
