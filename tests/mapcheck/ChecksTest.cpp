// SPDX-License-Identifier: Apache-2.0
// What is wrong with entries that the library accepts.

#include "tests/mapcheck/MapCheckTest.h"

namespace orvo::test {
namespace {

using ::testing::SizeIs;

class ChecksTest : public MapCheckTest {
  protected:
    // The file of a manifest that declares these instances.
    std::string manifest(const std::vector<std::string>& instances) {
        return mDirectory.write("manifest.xml", manifestText(instances));
    }
};

TEST_F(ChecksTest, BlanksAroundAKeyAreAnError) {
    expect(mapOf(entry("external/0", "\n  legacy/0\r\n\t")),
           {"2: error: the key \"\\n  legacy/0\\n\\t\" has blanks or line breaks around it, which "
            "are part of the name: no instance has it; write \"legacy/0\" [blanks-around-key]"});
}

TEST_F(ChecksTest, BlanksAroundAValueAreAnError) {
    expect(mapOf(entry(" external/0&#10;")),
           {"2: error: the value \" external/0\\n\" has blanks or line breaks around it, which are "
            "part of the name: no provider has it; write \"external/0\" [blanks-around-value]"});
}

TEST_F(ChecksTest, BlanksInsideNamesAreErrors) {
    expect(mapOf(entry("external/0 virtual/0", "legacy/0 legacy/1")),
           {"2: error: the key \"legacy/0 legacy/1\" is one name and never split: no instance has "
            "it; write one entry for each name [blanks-in-key]",
            "2: error: the value \"external/0 virtual/0\" is one name and never split: no provider "
            "has it; write one entry for each name [blanks-in-value]"});
}

TEST_F(ChecksTest, CommasInNamesAreErrors) {
    expect(mapOf(entry("external/0, virtual/0", "legacy/0,legacy/1")),
           {"2: error: the key \"legacy/0,legacy/1\" is one name and never split: no instance has "
            "it; write one entry for each name [comma-in-key]",
            "2: error: the value \"external/0, virtual/0\" is one name and never split: no "
            "provider has it; write one entry for each name [comma-in-value]"});
}

TEST_F(ChecksTest, AValueWithoutASlashEndsTheService) {
    expect(mapOf(entry("external/0") + entry("virtual")),
           {"3: error: the value \"virtual\" has no \"/\": the service ends whenever it is started "
            "for \"legacy/0\"; write a name such as \"external/0\" [fatal-value]"});
}

TEST_F(ChecksTest, AnEmptyValueEndsTheServiceToo) {
    expect(mapOf(entry("")),
           {"2: error: the value \"\" has no \"/\": the service ends whenever it is started for "
            "\"legacy/0\"; write a name such as \"external/0\" [fatal-value]"});
}

TEST_F(ChecksTest, AValueWithoutASlashBehindAKeyThatNobodyAsksForEndsNothing) {
    expect(mapOf(entry("virtual", "default/0")),
           {"2: error: the key \"default/0\" never reaches the map: every instance that begins "
            "with \"default/0\" is the MR provider; remove the entry [mr-key]",
            "2: error: the value \"virtual\" has no \"/\": it would end the service if its key "
            "were ever asked for; write a name such as \"external/0\" [value-without-slash]"});
}

TEST_F(ChecksTest, KeysThatBeginLikeTheMRProviderNeverReachTheMap) {
    expect(mapOf(entry("external/0", "default/01") + entry("external/0", "default/1")),
           {"2: error: the key \"default/01\" never reaches the map: every instance that begins "
            "with \"default/0\" is the MR provider; remove the entry [mr-key]"});
}

TEST_F(ChecksTest, AKeyWithoutASlashIsAnError) {
    expect(mapOf(entry("external/0", "legacy") + "<instance replace=\"external/0\"/>"),
           {"2: error: the key \"legacy\" has no \"/\": a service that is started for it ends "
            "before it reads the map; write a name such as \"legacy/0\" [key-without-slash]",
            "3: error: the key \"\" has no \"/\": a service that is started for it ends before it "
            "reads the map; write a name such as \"legacy/0\" [key-without-slash]"});
}

TEST_F(ChecksTest, OtherInstancesThanZeroAreErrors) {
    expect(mapOf(entry("external/1") + entry("usb/") + entry("virtual/0/x")),
           {"2: error: the value \"external/1\" is not of the form TYPE/0: its cameras are looked "
            "for behind \"external/0\" and can never be opened; let the provider serve as that "
            "[not-instance-0]",
            "3: error: the value \"usb/\" is not of the form TYPE/0: its cameras are looked for "
            "behind \"usb/0\" and can never be opened; let the provider serve as that "
            "[not-instance-0]",
            "4: error: the value \"virtual/0/x\" is not of the form TYPE/0: its cameras are looked "
            "for behind \"virtual/0\" and can never be opened; let the provider serve as that "
            "[not-instance-0]"});
}

TEST_F(ChecksTest, AnInstanceBehindItselfIsAnError) {
    expect(mapOf(entry("legacy/0")),
           {"2: error: the value \"legacy/0\" is its own key: its start waits for a service that "
            "only the end of its start registers; name another provider [own-name]"});
}

TEST_F(ChecksTest, AnInstanceOfTheMapBehindAnotherOneIsAnError) {
    expect(mapOf(entry("aggregate/0") + entry("external/0", "aggregate/0")),
           {"2: error: the value \"aggregate/0\" is a key of this map: a service that is started "
            "for \"legacy/0\" waits until \"aggregate/0\" is registered, for ever if it is to "
            "register that later itself or if \"aggregate/0\" waits for it; name the providers "
            "behind \"aggregate/0\" [value-is-served-here]",
            "3: note: the first entry of that key"});
}

TEST_F(ChecksTest, InstancesBehindOneAnotherAreErrorsAndSoAreThoseOfOtherNumbers) {
    expect(mapOf(entry("aggregate/1") + entry("legacy/0", "aggregate/1")),
           {"2: error: the value \"aggregate/1\" is not of the form TYPE/0: its cameras are looked "
            "for behind \"aggregate/0\" and can never be opened; let the provider serve as that "
            "[not-instance-0]",
            "2: error: the value \"aggregate/1\" is a key of this map: a service that is started "
            "for \"legacy/0\" waits until \"aggregate/1\" is registered, for ever if it is to "
            "register that later itself or if \"aggregate/1\" waits for it; name the providers "
            "behind \"aggregate/1\" [value-is-served-here]",
            "3: note: the first entry of that key",
            "3: error: the value \"legacy/0\" is a key of this map: a service that is started for "
            "\"aggregate/1\" waits until \"legacy/0\" is registered, for ever if it is to "
            "register that later itself or if \"legacy/0\" waits for it; name the providers "
            "behind \"legacy/0\" [value-is-served-here]",
            "2: note: the first entry of that key"});
}

TEST_F(ChecksTest, TheMRProviderBehindAnInstanceIsAnError) {
    expect(mapOf(entry("default/0") + entry("default/01") + entry("default/1", "aggregate/0")),
           {"2: error: the value \"default/0\" is the MR provider, which this library serves, too: "
            "a service that is started for \"legacy/0\" waits until \"default/0\" is registered, "
            "for ever if it is to register that later itself; remove the entry "
            "[value-is-served-here]",
            "3: warning: \"default/01\" and \"default/0\" are both of the type \"default\": the "
            "death of one withdraws the cameras of both [same-type]",
            "2: note: the first provider of this type",
            "3: error: the value \"default/01\" is not of the form TYPE/0: its cameras are looked "
            "for behind \"default/0\" and can never be opened; let the provider serve as that "
            "[not-instance-0]",
            "3: error: the value \"default/01\" is the MR provider, which this library serves, "
            "too: a service that is started for \"legacy/0\" waits until \"default/01\" is "
            "registered, for ever if it is to register that later itself; remove the entry "
            "[value-is-served-here]",
            "4: error: the value \"default/1\" is not of the form TYPE/0: its cameras are looked "
            "for behind \"default/0\" and can never be opened; let the provider serve as that "
            "[not-instance-0]"});
}

TEST_F(ChecksTest, WhatTheManifestDoesNotDeclareIsNotWaitedFor) {
    expect(mapOf(entry("default/0") + entry("aggregate/0") + entry("external/0", "aggregate/0")),
           {"2: error: the manifest does not declare the value \"default/0\": it is never "
            "connected; declare it or correct the name [undeclared-value]",
            "3: error: the value \"aggregate/0\" is a key of this map: a service that is started "
            "for \"legacy/0\" waits until \"aggregate/0\" is registered, for ever if it is to "
            "register that later itself or if \"aggregate/0\" waits for it; name the providers "
            "behind \"aggregate/0\" [value-is-served-here]",
            "4: note: the first entry of that key"},
           {"--manifest", manifest({"legacy/0", "aggregate/0", "external/0"})});
}

TEST_F(ChecksTest, AKeyThatNobodyAsksForIsNotServed) {
    expect(mapOf(entry("legacy/0 ", "aggregate/0") + entry("external/0", "legacy/0 ") +
                 entry("aggregate/0", "default/0")),
           {"2: error: the value \"legacy/0 \" has blanks or line breaks around it, which are part "
            "of the name: no provider has it; write \"legacy/0\" [blanks-around-value]",
            "3: error: the key \"legacy/0 \" has blanks or line breaks around it, which are part "
            "of the name: no instance has it; write \"legacy/0\" [blanks-around-key]",
            "4: error: the key \"default/0\" never reaches the map: every instance that begins "
            "with \"default/0\" is the MR provider; remove the entry [mr-key]"});
}

TEST_F(ChecksTest, ARepeatedEntryIsAWarningAndNothingElse) {
    expect(mapOf(entry("external/1") + entry("virtual/0") + entry("external/1")),
           {"2: error: the value \"external/1\" is not of the form TYPE/0: its cameras are looked "
            "for behind \"external/0\" and can never be opened; let the provider serve as that "
            "[not-instance-0]",
            "4: warning: \"external/1\" is already behind \"legacy/0\", so this entry adds "
            "nothing; remove it [duplicate]",
            "2: note: the first entry of the two"});
}

TEST_F(ChecksTest, OneProviderBehindTwoInstancesIsNoDuplicate) {
    expectClean(mapOf(entry("external/0", "legacy/0") + entry("external/0", "legacy/1")));
}

TEST_F(ChecksTest, TwoProvidersOfOneTypeBehindOneInstanceAreAWarning) {
    expect(mapOf(entry("external/0") + entry("virtual/0") + entry("external/1")),
           {"4: warning: \"external/1\" and \"external/0\" are both of the type \"external\": the "
            "death of one withdraws the cameras of both [same-type]",
            "2: note: the first provider of this type",
            "4: error: the value \"external/1\" is not of the form TYPE/0: its cameras are looked "
            "for behind \"external/0\" and can never be opened; let the provider serve as that "
            "[not-instance-0]"});
}

TEST_F(ChecksTest, WhatTheManifestDoesNotDeclareIsAnError) {
    expect(mapOf(entry("external/0") + entry("virtual/0") + entry("external/0", "aggregate/0")),
           {"3: error: the manifest does not declare the value \"virtual/0\": it is never "
            "connected; declare it or correct the name [undeclared-value]",
            "4: error: the manifest does not declare the key \"aggregate/0\": nobody can get a "
            "service of that name; declare it or correct the name [undeclared-key]"},
           {"--manifest", manifest({"external/0", "legacy/0"})});
}

TEST_F(ChecksTest, WithoutAManifestNothingIsUndeclared) {
    expectClean(mapOf(entry("external/0")));
}

TEST_F(ChecksTest, AManifestThatDeclaresEverythingLeavesTheMapClean) {
    expectClean(mapOf(entry("external/0")), {"--manifest", manifest({"external/0", "legacy/0"})});
}

TEST_F(ChecksTest, FragmentsOfAManifestAddUpAndMayUseFqnames) {
    const std::string fragment = mDirectory.write("fragment.xml", R"(<manifest version="2.0">
        <hal><name>android.hardware.camera.provider</name><transport>hwbinder</transport>
            <fqname>@2.4::ICameraProvider/external/0</fqname>
            <fqname> @2.5::ICameraProvider/virtual/0 </fqname></hal></manifest>)");
    expectClean(mapOf(entry("external/0") + entry("virtual/0")),
                {"--manifest", manifest({"legacy/0"}), "--manifest=" + fragment});
}

TEST_F(ChecksTest, OtherInterfacesAndVersionsDeclareNothing) {
    const std::string other = mDirectory.write("other.xml", R"(<manifest version="2.0">
        <hal format="hidl"><name>android.hardware.camera.provider</name>
            <transport>hwbinder</transport><version>2.3</version><version>3.4</version>
            <interface><name>ICameraProvider</name><instance>external/0</instance></interface>
            <fqname>@2.3::ICameraProvider/external/0</fqname>
            <fqname>@2.4::IOther/external/0</fqname></hal>
        <hal format="hidl"><name>vendor.other</name><transport>hwbinder</transport>
            <version>2.4</version>
            <interface><name>ICameraProvider</name><instance>external/0</instance></interface></hal>
        <hal format="aidl"><name>android.hardware.camera.provider</name><version>2.4</version>
            <interface><name>ICameraProvider</name><instance>external/0</instance></interface></hal>
        <hal format="hidl"><name>android.hardware.camera.provider</name>
            <transport>hwbinder</transport><version>2.4</version>
            <interface><name>IOther</name><instance>external/0</instance></interface></hal>
    </manifest>)");
    expect(mapOf(entry("external/0")),
           {"2: error: the manifest does not declare the value \"external/0\": it is never "
            "connected; declare it or correct the name [undeclared-value]"},
           {"--manifest", manifest({"legacy/0"}), "--manifest", other});
}

TEST_F(ChecksTest, CamerasOfOneNameInTheFrameworkAreAnError) {
    expect(mapOf(entry("external/0") + entry("virtual/0")),
           {"3: error: device@3.2/external/7 and device@3.2/virtual/7 are both device@3.2/legacy/7 "
            "to the framework: only the one that is reported last can be opened; give one of them "
            "another id [device-collision]",
            "2: note: the provider of device@3.2/external/7"},
           {"--devices", "external/0=device@3.2/external/6,device@3.2/external/7", "--devices",
            "virtual/0=device@3.2/virtual/7"});
}

TEST_F(ChecksTest, CamerasOfOneIdInOtherVersionsAreAnError) {
    for (const std::string name : {"device@3.5/virtual/7", "device@1.1/virtual/7"}) {
        expect(mapOf(entry("external/0") + entry("virtual/0")),
               {"3: error: device@3.2/external/7 and " + name +
                        " both have the id \"7\": the framework has one camera of an id, so one "
                        "of the two is lost; give one of them another id [id-collision]",
                "2: note: the provider of device@3.2/external/7"},
               {"--devices", "external/0=device@3.2/external/7", "--devices", "virtual/0=" + name});
    }
}

TEST_F(ChecksTest, CamerasOfOneIdBehindTwoInstancesAreAnError) {
    expect(mapOf(entry("external/0") + entry("virtual/0") + entry("usb/0", "aggregate/0") +
                 entry("tof/0", "legacy/1")),
           {"4: error: device@3.2/virtual/7 and device@3.2/usb/7 both have the id \"7\": the "
            "framework has one camera of an id, so one of the two is lost; give one of them "
            "another id [id-collision]",
            "3: note: the provider of device@3.2/virtual/7",
            "5: error: device@3.2/virtual/7 and device@3.2/tof/7 both have the id \"7\": the "
            "framework has one camera of an id, so one of the two is lost; give one of them "
            "another id [id-collision]",
            "3: note: the provider of device@3.2/virtual/7"},
           {"--devices", "external/0=device@3.2/external/6", "--devices",
            "virtual/0=device@3.2/virtual/7", "--devices", "usb/0=device@3.2/usb/7", "--devices",
            "tof/0=device@3.2/tof/7"});
}

TEST_F(ChecksTest, TheCamerasOfAProviderBehindTwoInstancesCollideWithThemselves) {
    expect(mapOf(entry("external/0") + entry("external/0", "aggregate/0")),
           {"3: error: device@3.2/external/7 is behind \"legacy/0\" and \"aggregate/0\": the "
            "framework has one camera of an id, so one of the two is lost; put the provider "
            "behind one instance only [id-collision]",
            "2: note: the provider of device@3.2/external/7"},
           {"--devices", "external/0=device@3.2/external/7"});
}

TEST_F(ChecksTest, ProvidersThatReportOneNameCollide) {
    expect(mapOf(entry("external/0") + entry("virtual/0")),
           {"3: error: device@3.2/usb/7 and device@3.2/usb/7 are both device@3.2/legacy/7 to the "
            "framework: only the one that is reported last can be opened; give one of them another "
            "id [device-collision]",
            "2: note: the provider of device@3.2/usb/7"},
           {"--devices", "external/0=device@3.2/usb/7", "--devices", "virtual/0=device@3.2/usb/7"});
}

TEST_F(ChecksTest, ACameraMayHaveSeveralMajorVersionsButNoneTwice) {
    const std::string finding =
            "device@3.2/external/7 and device@03.4/external/7 both have the id \"7\": the "
            "framework "
            "has one camera of an id, so one of the two is lost; give one of them another id "
            "[id-collision]";
    for (const std::string devices :
         {"device@1.1/external/7,device@3.2/external/7,device@03.4/external/7",
          "device@3.2/external/7,device@1.1/external/7,device@03.4/external/7"}) {
        expect(mapOf(entry("external/0")),
               {"2: error: " + finding, "2: note: the provider of device@3.2/external/7"},
               {"--devices", "external/0=" + devices});
    }
}

TEST_F(ChecksTest, CamerasOfOneProviderCollideToo) {
    expect(mapOf(entry("external/0")),
           {"2: error: device@3.2/external/7 and device@3.5/external/7 both have the id \"7\": "
            "the framework has one camera of an id, so one of the two is lost; give one of them "
            "another id [id-collision]",
            "2: note: the provider of device@3.2/external/7",
            "2: error: device@3.2/external/8 and device@3.2/usb/8 are both device@3.2/legacy/8 to "
            "the framework: only the one that is reported last can be opened; give one of them "
            "another id [device-collision]",
            "2: note: the provider of device@3.2/external/8"},
           {"--devices", "external/0=device@3.2/external/7,device@3.5/external/7", "--devices",
            "external/0=device@3.2/external/8,device@3.2/usb/8"});
}

TEST_F(ChecksTest, ACameraThatItsProviderHasTwiceIsAWarning) {
    expect(mapOf(entry("external/0") + entry("external/0", "legacy/0 ")),
           {"2: warning: \"external/0\" has device@3.2/external/7 twice: it is one camera to the "
            "framework, and its id is twice in the property that lists the ids; leave one of the "
            "two out [device-repeated]",
            "3: error: the key \"legacy/0 \" has blanks or line breaks around it, which are part "
            "of the name: no instance has it; write \"legacy/0\" [blanks-around-key]"},
           {"--devices", "external/0=device@3.2/external/7,device@3.2/external/7"});
}

TEST_F(ChecksTest, OneCameraInTwoMajorVersionsAndProvidersThatAreNotInTheMapDoNotCollide) {
    expectClean(mapOf(entry("external/0") + entry("virtual/0")),
                {"--devices", "external/0=device@3.2/external/7,device@1.1/external/7",
                 "--devices=virtual/0=device@3.2/virtual/70", "--devices",
                 "foreign/0=device@3.2/foreign/7"});
}

TEST_F(ChecksTest, DeviceNamesAreWrittenOnOneLine) {
    expect(mapOf(entry("external/0") + entry("virtual/0")),
           {"3: error: device@3.2/external/\\xE9\\n and device@3.2/virtual/\\xE9\\n are both "
            "device@3.2/legacy/\\xE9\\n to the framework: only the one that is reported last "
            "can be opened; give one of them another id [device-collision]",
            "2: note: the provider of device@3.2/external/\\xE9\\n"},
           {"--devices", "external/0=device@3.2/external/\xE9\n", "--devices",
            "virtual/0=device@3.2/virtual/\xE9\n"});
}

TEST_F(ChecksTest, TheDescriptionsOfTheHeadsetAreGivenForItsCameras) {
    const std::string providers = std::string(ORVO_HEADSET) + "/providers/";
    const std::vector<std::string> both = {"--description", providers + "external.yaml",
                                           "--description", providers + "virtual.yaml"};
    const std::string oldCamera =
            "3: warning: \"virtual/0\" has device@1.0/virtual/8: the conformance test of a device "
            "whose first level is 29 refuses cameras of version 1.0; give it version 3 "
            "[device-version-1]";
    expect(mapOf(entry("external/0") + entry("virtual/0")), {oldCamera}, both);

    auto collidingToo = both;
    collidingToo.insert(collidingToo.end(), {"--devices", "usb/0=device@3.2/usb/7"});
    expect(mapOf(entry("external/0") + entry("virtual/0") + entry("usb/0")),
           {oldCamera,
            "4: error: device@3.2/virtual/7 and device@3.2/usb/7 are both device@3.2/legacy/7 to "
            "the framework: only the one that is reported last can be opened; give one of them "
            "another id [device-collision]",
            "3: note: the provider of device@3.2/virtual/7"},
           collidingToo);
}

TEST_F(ChecksTest, TheMapOfTheHeadsetIsClean) {
    const std::string etc = std::string(ORVO_HEADSET) + "/vendor/etc/";
    const ProgramEnd end =
            run({etc + "orvo_vendor_manifest.xml", "--manifest", etc + "vintf/manifest.xml"});
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.status, 0);
}

TEST_F(ChecksTest, NamesAreWrittenOnOneLineInBothForms) {
    const std::string name = R"("a\\\",\t\x7F\u00E9\U0001F4F7/0")";
    expect(mapOf(entry("a\\&quot;,&#9;&#127;é📷/0")),
           {"2: error: the value " + name +
                    " has the character U+007F in it, which is part of the name: no provider has "
                    "it; write the name in ASCII [odd-character-in-value]",
            "2: error: the value " + name +
                    " is one name and never split: no provider has it; write one entry for each "
                    "name [comma-in-value]"});
}

TEST_F(ChecksTest, CharactersThatLookLikeBlanksOrLettersAreErrors) {
    expect(mapOf(entry("external/0&#xA0;", "leg&#x200B;acy/0") + entry("\xD0\xB5xternal/0")),
           {"2: error: the key \"leg\\u200Bacy/0\" has the character U+200B in it, which is part "
            "of the name: no instance has it; write the name in ASCII [odd-character-in-key]",
            "2: error: the value \"external/0\\u00A0\" has the character U+00A0 in it, which is "
            "part of the name: no provider has it; write the name in ASCII "
            "[odd-character-in-value]",
            "3: error: the value \"\\u0435xternal/0\" has the character U+0435 in it, which is "
            "part of the name: no provider has it; write the name in ASCII "
            "[odd-character-in-value]"});
}

TEST_F(ChecksTest, AnOddCharacterDoesNotHideWhatEndsTheService) {
    expect(mapOf(entry("virtual&#xFEFF;")),
           {"2: error: the value \"virtual\\uFEFF\" has the character U+FEFF in it, which is part "
            "of the name: no provider has it; write the name in ASCII [odd-character-in-value]",
            "2: error: the value \"virtual\\uFEFF\" has no \"/\": the service ends whenever it is "
            "started for \"legacy/0\"; write a name such as \"external/0\" [fatal-value]"});
}

TEST_F(ChecksTest, EmptyPartsOfNamesAreErrors) {
    std::vector<std::string> lines = {
            "2: error: the value \"/0\" has nothing before its \"/\": no provider has it; write a "
            "name such as \"external/0\" [empty-part-in-value]",
            "3: error: the value \"/\" has nothing before its \"/\": no provider has it; write a "
            "name such as \"external/0\" [empty-part-in-value]"};
    std::string entries = entry("/0") + entry("/", "aggregate/0");
    for (const std::string key : {"/", "/0", "legacy/", "legacy//0"}) {
        lines.push_back(std::to_string(lines.size() + 2) + ": error: the key \"" + key +
                        "\" has an empty part: no instance has it; write a name such as "
                        "\"legacy/0\" [empty-part-in-key]");
        entries += entry("external/0", key);
    }
    expect(mapOf(entries), lines);
}

// With every entry compared with every other one, this would take hours.
TEST_F(ChecksTest, EveryOneOfThreeHundredThousandEntriesIsChecked) {
    std::string entries;
    for (int i = 0; i < 100000; ++i) {
        const std::string number = std::to_string(i);
        entries += entry("type" + number + "/0") + entry("type" + number + "/0") +
                   entry("external/0", "key" + number + "/0");
    }
    const std::string map = mDirectory.write("map.xml", mapOf(entries));
    const std::vector<JsonFinding> found = findingsOf(map);
    ASSERT_THAT(found, SizeIs(200000)) << "100,000 duplicates with a note each";
    EXPECT_EQ(found[199998].line, 300000);
    EXPECT_EQ(found[199999].line, 299999);
}

}  // namespace
}  // namespace orvo::test
