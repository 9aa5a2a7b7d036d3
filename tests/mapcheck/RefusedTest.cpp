// SPDX-License-Identifier: Apache-2.0
// What the library serves and the framework refuses, or takes in part.

#include "tests/mapcheck/MapCheckTest.h"

namespace orvo::test {
namespace {

using RefusedTest = MapCheckTest;

TEST_F(RefusedTest, KeysThatAreNotNumberedAreErrorsAndNothingElse) {
    std::vector<std::string> lines;
    std::string entries;
    for (const std::string key : {"legacy/x", "legacy/-1", "legacy/0x1", "legacy/0/1", "a.b/1a"}) {
        lines.push_back(std::to_string(lines.size() + 2) + ": error: the key \"" + key +
                        "\" is not of the form TYPE/NUMBER: the framework ignores an instance of "
                        "that name, with all of its cameras; write a name such as \"legacy/0\" "
                        "[not-numbered]");
        entries += entry("external/0", key);
    }
    expect(mapOf(entries), lines,
           {"--manifest", mDirectory.write("manifest.xml", manifestText({"external/0"})),
            "--devices", "external/0=device@3.2/external/7"});
    expectClean(mapOf(entry("external/0", "legacy/007") + entry("external/0", "a.b/12")));
}

TEST_F(RefusedTest, CamerasThatTheFrameworkCannotReadAreErrorsAndNothingElse) {
    for (const std::string name :
         {"device@3/usb/7", "device@3./usb/7", "device@.2/usb/7", "device@3.x/usb/7",
          "device@-3.2/usb/7", "device@3.2.1/usb/7", "device@3.65536/usb/7", "device@65536.2/usb/7",
          "device@3.99999999999999999999/usb/7", "camera@3.2/usb/7", "Device@3.2/usb/7", "usb"}) {
        expect(mapOf(entry("usb/0") + entry("virtual/0")),
               {"2: error: \"usb/0\" has " + name +
                ", which is not of the form device@MAJOR.MINOR/TYPE/ID with decimal numbers below "
                "65536: the framework refuses the camera, and all of \"legacy/0\" if the provider "
                "lists it; write a name such as device@3.2/external/100 [device-name]"},
               {"--devices", "usb/0=" + name, "--devices", "virtual/0=device@3.2/virtual/7"});
    }
}

TEST_F(RefusedTest, CamerasOfOtherMajorVersionsThanOneAndThreeAreErrorsAndNothingElse) {
    for (const std::string name : {"device@0.1/usb/7", "device@2.0/usb/7", "device@4.0/usb/7"}) {
        expect(mapOf(entry("usb/0") + entry("virtual/0")),
               {"2: error: \"usb/0\" has " + name +
                ": the framework refuses cameras of other major versions than 1 and 3; give it one "
                "of these [device-version]"},
               {"--devices", "usb/0=" + name, "--devices", "virtual/0=device@3.2/virtual/7"});
    }
}

TEST_F(RefusedTest, ACameraOfVersionOneDotZeroIsAWarning) {
    expect(mapOf(entry("usb/0")),
           {"2: warning: \"usb/0\" has device@01.00/usb/8: the conformance test of a device whose "
            "first level is 29 refuses cameras of version 1.0; give it version 3 "
            "[device-version-1]"},
           {"--devices", "usb/0=device@1.1/usb/7,device@01.00/usb/8"});
}

TEST_F(RefusedTest, NamesThatTheFrameworkReadsAreClean) {
    expectClean(
            mapOf(entry("usb/0")),
            {"--devices", "usb/0=device@3.2/usb/7,device@3.65535/usb/8,device@03.02/usb/a/b c"});
}

TEST_F(RefusedTest, AVendorTagThatTwoDescriptionsShareIsAWarning) {
    const auto describe = [this](const std::string& type, const std::string& tags) {
        return mDirectory.write(type + ".yaml", descriptionText(type, tags));
    };
    const std::string shared = "{ id: 0x8001000a, name: gain, type: BYTE }";
    const std::vector<std::string> descriptions = {
            "--description", describe("external", shared), "--description",
            describe("virtual", "{ id: 0x80000001, name: mood, type: BYTE }, " + shared)};
    const auto warning = [](const std::string& providers, const std::string& tags) {
        return "3: warning: " + providers + " both have the vendor tag 0x8001000A, " + tags +
               ": of all tags with one id the framework knows only that of the provider whose name "
               "sorts last; give one of them another id [vendor-tag-collision]";
    };
    expect(mapOf(entry("external/0") + entry("virtual/0")),
           {warning("\"virtual/0\" and \"external/0\"", "com.virtual.gain and com.external.gain"),
            "2: note: the first provider with this tag"},
           descriptions);
    expect(mapOf(entry("virtual/0") + entry("external/0")),
           {warning("\"external/0\" and \"virtual/0\"", "com.external.gain and com.virtual.gain"),
            "2: note: the first provider with this tag"},
           descriptions);
    expectClean(mapOf(entry("external/0") + entry("virtual/0", "aggregate/0")), descriptions);
}

}  // namespace
}  // namespace orvo::test
