// SPDX-License-Identifier: Apache-2.0
// Holds the checker's verdicts against what the library itself does with the same map.

#include <set>
#include <string>
#include <vector>

#include "mapper/ProviderMapper.h"
#include "tests/mapcheck/MapCheckTest.h"
#include "tests/provider/FakePlatform.h"
#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using android::sp;
using android::hardware::camera::provider::V2_4::ICameraProvider;
using android::hardware::camera::provider::V2_4::implementation::HIDL_FETCH_ICameraProvider;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ExitedWithCode;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

class AgreementTest : public ProviderTest {
  protected:
    void TearDown() override {
        mPlatform.services.clear();
        ProviderTest::TearDown();
    }

    // Makes it the map of the device, and gives the codes of what the checker finds in it.
    std::vector<std::string> check(const std::string& entries,
                                   const std::vector<std::string>& arguments = {}) {
        return checkText("<map>\n" + entries + "</map>\n", arguments);
    }

    std::vector<std::string> checkText(const std::string& map,
                                       const std::vector<std::string>& arguments = {}) {
        mPlatform.mapText = map;
        std::vector<std::string> codes;
        for (const auto& finding : findingsOf(mDirectory.write("map.xml", map), arguments)) {
            codes.push_back(finding.code);
        }
        return codes;
    }

    // What the platform's loader gets for the instance; the process has to survive it.
    static sp<ICameraProvider> fetch(const std::string& instance) {
        const sp<ICameraProvider> provider = HIDL_FETCH_ICameraProvider(instance.c_str());
        if (provider != nullptr) provider->decStrong(nullptr);
        return provider;
    }

    void declareAndStart(const std::string& instance) {
        mPlatform.declared.push_back(instance);
        mPlatform.services[instance] = new ScriptedProvider;
    }

    std::vector<std::string> lookedUp() {
        std::vector<std::string> names;
        for (const auto& lookup : mPlatform.lookups) names.push_back(lookup.instance);
        return names;
    }

    // The object as the library makes it from the map, in front of these services.
    void makeObjectOfMap(const std::vector<std::string>& services) {
        for (const std::string& name : services) startService(name);
        mObject = new Object("legacy/0", mProxy, std::make_shared<camera::ProviderMapper>());
        ASSERT_TRUE(mObject->mIsValid);
        mObject->initialize();
    }

    FakePlatform mPlatform;
    simulator::testing::FreshDirectory mDirectory;
};

// Every entry that a line of the map seems to have says in its value which line that is.
constexpr char kMixedMap[] =
        R"(<!DOCTYPE map [<!ENTITY more '<instance replace="9/0">a/0</instance>'>]>
<map>
<instance replace="3/0">a/0</instance>
<group><instance replace="4/0">a/0</instance></group>
<Instance replace="5/0">a/0</Instance>
<other replace="6/0">a/0</other>
<instance Replace="7/0">a/0</instance>
<!-- -->
&more;
<instance replace="10/0">a/0
  <instance replace="11/0">a/0</instance>
</instance>
<instance
  replace="14/0"> a/0</instance>
<instance replace="15/0,"/>
<x:instance xmlns:x="urn:x" replace="16/0">a/0</x:instance>
<y:instance replace="17/0">a/0</y:instance>
<instance replace="18/1"><![CDATA[a/0]]></instance>
<![CDATA[<instance replace="19/0">a/0</instance>]]>
</map>)";

TEST_F(AgreementTest, WhatTheCheckerCallsIgnoredIsWhatTheReaderLeavesOut) {
    const std::set<std::string> ignoredCodes = {"nested", "other-element", "no-replace",
                                                "entity-reference", "stray-text"};
    const std::string file = mDirectory.write("map.xml", kMixedMap);
    std::set<long> ignored;
    for (const JsonFinding& finding : findingsOf(file)) {
        if (ignoredCodes.count(finding.code) != 0) ignored.insert(finding.line);
    }

    camera::ProviderMapper mapper;
    ASSERT_TRUE(mapper.loadMapFromFile(file.c_str()));
    std::set<long> read;
    for (const auto& [key, values] : mapper.mProviderMap) {
        for (const std::string& value : values) read.insert(std::stol(value));
    }
    EXPECT_THAT(ignored, ElementsAre(4, 5, 6, 7, 9, 11, 17, 19));
    EXPECT_THAT(read, ElementsAre(3, 10, 14, 15, 16, 18));
}

TEST_F(AgreementTest, AMapThatTheCheckerCannotUseIsOneThatTheLibraryDoesNotLoad) {
    using namespace std::string_literals;
    for (const std::string& text : {""s, "<map>"s, "no xml"s, "<map/><map/>"s,
                                    "<map>&unknown;</map>"s, "<map>\0</map>"s, "\0<map/>"s}) {
        const std::string file = mDirectory.write("map.xml", text);
        EXPECT_EQ(run({file}).status, 2) << text;
        EXPECT_FALSE(camera::ProviderMapper().loadMapFromFile(file.c_str())) << text;
        mPlatform.mapText = text;
        EXPECT_EQ(fetch("legacy/0"), nullptr) << text;
    }
}

TEST_F(AgreementTest, AnEmptyMapServesNoInstance) {
    EXPECT_THAT(checkText(entry("external/0")), ElementsAre("root-is-entry", "no-entry"));
    EXPECT_EQ(fetch("legacy/0"), nullptr);
}

using AgreementDeathTest = AgreementTest;

TEST_F(AgreementDeathTest, AFatalValueEndsTheProcess) {
    for (const char* value : {"virtual", "", " virtual ", "external virtual"}) {
        EXPECT_THAT(check(entry("external/0") + entry(value)), Contains("fatal-value")) << value;
        EXPECT_EXIT(
                {
                    const MirroredLog log;
                    fetch("legacy/0");
                },
                ExitedWithCode(1), "FATAL: Invalid provider name .*\n.*Shutting down")
                << value;
    }
}

TEST_F(AgreementDeathTest, AServiceForAKeyWithoutASlashEndsBeforeItReadsTheMap) {
    EXPECT_THAT(check(entry("external/0", "legacy")), ElementsAre("key-without-slash"));
    EXPECT_EXIT(
            {
                const MirroredLog log;
                mPlatform.mapText.clear();  // Would be missed if it were read.
                fetch("legacy");
            },
            ExitedWithCode(1), "Invalid provider name legacy\n.*Shutting down");
}

TEST_F(AgreementTest, AValueWithoutASlashThatIsNotFatalEndsNothing) {
    EXPECT_THAT(check(entry("virtual", "default/0") + entry("virtual", "other/0 ")),
                ElementsAre("mr-key", "value-without-slash", "blanks-around-key",
                            "value-without-slash"));
    fetch("default/0");
    fetch("other/0");
}

TEST_F(AgreementTest, NoOtherFindingIsFatal) {
    check(entry("external/0") + entry("external/0") + entry("external/1") + entry("a/0,b/0") +
          entry(" c/0") + entry("d/0 e/0") + entry("legacy/0") + entry("/"));
    EXPECT_NE(fetch("legacy/0"), nullptr);
}

TEST_F(AgreementTest, AKeyOfTheMRProviderNeverReachesTheMap) {
    EXPECT_THAT(check(entry("external/0", "default/01")), ElementsAre("mr-key"));
    EXPECT_EQ(fetch("default/01"), nullptr);
    EXPECT_EQ(mPlatform.symbolLookups, 1) << "the MR library was asked for";
    for (const LogLine& line : mLog.lines()) EXPECT_NE(line.tag, "ProviderMapper");
}

TEST_F(AgreementTest, AKeyWithBlanksOrCommasIsNotThatOfItsInstances) {
    EXPECT_THAT(check(entry("external/0", "\nlegacy/0") + entry("external/0", "legacy/0,legacy/1")),
                ElementsAre("blanks-around-key", "comma-in-key"));
    EXPECT_EQ(fetch("legacy/0"), nullptr);
    EXPECT_EQ(fetch("legacy/1"), nullptr);
}

TEST_F(AgreementTest, OddCharactersArePartOfAName) {
    EXPECT_THAT(check(entry("external/0", "legacy/0&#xA0;") + entry("external/0&#x200B;")),
                ElementsAre("odd-character-in-key", "odd-character-in-value"));
    declareAndStart("external/0");
    EXPECT_NE(fetch("legacy/0"), nullptr) << "of the second entry";
    EXPECT_THAT(lookedUp(), IsEmpty());
}

TEST_F(AgreementTest, AValueWithBlanksOrCommasConnectsNoneOfItsProviders) {
    EXPECT_THAT(check(entry(" external/0") + entry("usb/0,virtual/0") + entry("usb/0 virtual/0")),
                ElementsAre("blanks-around-value", "comma-in-value", "blanks-in-value"));
    for (const char* name : {"external/0", "usb/0", "virtual/0"}) declareAndStart(name);
    EXPECT_NE(fetch("legacy/0"), nullptr);
    EXPECT_THAT(lookedUp(), IsEmpty());
}

TEST_F(AgreementTest, AnUndeclaredProviderIsNeverConnected) {
    const std::string manifest = mDirectory.write("manifest.xml", R"(<manifest version="1.0">
        <hal><name>android.hardware.camera.provider</name><transport>hwbinder</transport>
        <fqname>@2.4::ICameraProvider/legacy/0</fqname>
        <fqname>@2.4::ICameraProvider/external/0</fqname></hal></manifest>)");
    EXPECT_THAT(check(entry("external/0") + entry("virtual/0"), {"--manifest", manifest}),
                ElementsAre("undeclared-value"));
    declareAndStart("external/0");
    mPlatform.services["virtual/0"] = new ScriptedProvider;
    EXPECT_NE(fetch("legacy/0"), nullptr);
    EXPECT_THAT(lookedUp(), ElementsAre("external/0"));
}

TEST_F(AgreementTest, AnInstanceBehindItselfIsWaitedForDuringItsOwnStart) {
    EXPECT_THAT(check(entry("legacy/0")), ElementsAre("own-name"));
    mPlatform.declared = {"legacy/0"};
    fetch("legacy/0");
    EXPECT_THAT(lookedUp(), ElementsAre("legacy/0")) << "before anybody could register it";
}

TEST_F(AgreementTest, AnInstanceOfTheMapBehindAnotherOneIsWaitedForDuringTheStartOfThat) {
    EXPECT_THAT(
            check(entry("aggregate/0") + entry("external/0", "aggregate/0") + entry("default/0")),
            ElementsAre("value-is-served-here", "value-is-served-here", "value-is-served-here"))
            << "the second one is the note of the first";
    mPlatform.declared = {"aggregate/0", "default/0", "legacy/0"};
    fetch("legacy/0");
    EXPECT_THAT(lookedUp(), ElementsAre("aggregate/0", "default/0"))
            << "before this process could register them";
}

TEST_F(AgreementTest, ADuplicateAddsNoProvider) {
    EXPECT_THAT(check(entry("external/0") + entry("external/0")),
                ElementsAre("duplicate", "duplicate"))
            << "the second one is its note";
    makeObjectOfMap({"external/0"});
    EXPECT_THAT(mObject->mHalDescriptors, SizeIs(1));
}

TEST_F(AgreementTest, CamerasOfAnotherInstanceThanZeroCannotBeOpened) {
    EXPECT_THAT(check(entry("external/1")), ElementsAre("not-instance-0"));
    makeObjectOfMap({"external/1"});
    reportPresent({"device@3.2/external/7"});
    std::vector<Status> answers;
    const auto result = mObject->getCameraDeviceInterface_V3_x(
            "device@3.2/legacy/7", [&](Status status, const auto&) { answers.push_back(status); });
    EXPECT_TRUE(result.isOk());
    EXPECT_THAT(answers, ElementsAre(Status::ILLEGAL_ARGUMENT));
    EXPECT_THAT(mShims.shim("external/1")->askedDevices(), IsEmpty());
}

TEST_F(AgreementTest, ProvidersOfOneTypeAreWithdrawnTogether) {
    EXPECT_THAT(check(entry("external/0") + entry("external/1") + entry("virtual/0")),
                ElementsAre("same-type", "same-type", "not-instance-0"));
    makeObjectOfMap({"external/0", "external/1", "virtual/0"});
    reportPresent({"device@3.2/external/1", "device@3.2/external/2", "device@3.2/virtual/3"});
    mObject->removeAndNotifyDevicesByProviderName("external/0");
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/3", "device@3.2/virtual/3")));
}

TEST_F(AgreementTest, OfCamerasThatCollideTheOneReportedLastIsKnown) {
    EXPECT_THAT(check(entry("external/0") + entry("virtual/0"),
                      {"--devices", "external/0=device@3.2/external/7", "--devices",
                       "virtual/0=device@3.2/virtual/7"}),
                ElementsAre("device-collision", "device-collision"));
    makeObjectOfMap({"external/0", "virtual/0"});
    reportPresent({"device@3.2/external/7", "device@3.2/virtual/7"});
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/7", "device@3.2/virtual/7")));
}

TEST_F(AgreementTest, CamerasOfOneIdInTwoVersionsAreReportedUnderThatId) {
    EXPECT_THAT(check(entry("external/0") + entry("virtual/0"),
                      {"--devices", "external/0=device@3.2/external/7", "--devices",
                       "virtual/0=device@3.5/virtual/7"}),
                ElementsAre("id-collision", "id-collision"));
    makeObjectOfMap({"external/0", "virtual/0"});
    reportPresent({"device@3.2/external/7", "device@3.5/virtual/7"});
    EXPECT_THAT(activeDevices(), ElementsAre(Pair("device@3.2/legacy/7", "device@3.2/external/7"),
                                             Pair("device@3.5/legacy/7", "device@3.5/virtual/7")));
}

TEST_F(AgreementTest, WhatTheFrameworkRefusesIsServedAllTheSame) {
    EXPECT_THAT(check(entry("external/0", "legacy/x")), ElementsAre("not-numbered"));
    EXPECT_NE(fetch("legacy/x"), nullptr);

    EXPECT_THAT(check(entry("external/0"),
                      {"--devices", "external/0=device@3.x/external/7,device@2.0/external/8"}),
                ElementsAre("device-name", "device-version"));
    makeObjectOfMap({"external/0"});
    mObject->setCallback(mFramework);
    reportPresent({"device@3.x/external/7", "device@2.0/external/8"});
    EXPECT_THAT(
            mFramework->notifications(),
            ElementsAre(deviceNotification("device@3.x/legacy/7", CameraDeviceStatus::PRESENT),
                        deviceNotification("device@2.0/legacy/8", CameraDeviceStatus::PRESENT)));
}

TEST_F(AgreementTest, OfVendorTagsOfOneIdThatOfTheLastProviderByNameComesLast) {
    std::vector<std::string> descriptions;
    for (const std::string type : {"external", "virtual"}) {
        const std::string text = descriptionText(type, "{ id: 0x80000001, name: a, type: BYTE }");
        descriptions.push_back("--description=" + mDirectory.write(type + ".yaml", text));
    }
    EXPECT_THAT(check(entry("virtual/0") + entry("external/0"), descriptions),
                ElementsAre("vendor-tag-collision", "vendor-tag-collision"))
            << "the second one is its note";
    makeObjectOfMap({"virtual/0", "external/0"});
    std::vector<std::string> sections;
    mObject->getVendorTags([&](Status, const auto& answered) {
        for (const auto& section : answered) sections.push_back(section.sectionName);
    });
    EXPECT_THAT(sections, ElementsAre("external/0", "virtual/0")) << "their markers";
}

TEST_F(AgreementTest, AMapWithoutFindingsConnectsEveryProviderOfIt) {
    EXPECT_THAT(check(entry("external/0") + entry("virtual/0")), IsEmpty());
    declareAndStart("external/0");
    declareAndStart("virtual/0");
    EXPECT_NE(fetch("legacy/0"), nullptr);
    EXPECT_THAT(lookedUp(), UnorderedElementsAre("external/0", "virtual/0"));
}

}  // namespace
}  // namespace orvo::test
