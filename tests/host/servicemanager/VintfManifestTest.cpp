// SPDX-License-Identifier: Apache-2.0
// What manifest files declare, and what becomes of malformed ones.

#include "host/vintf/VintfManifest.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/device/TemporaryDevice.h"

namespace orvo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Transport = VintfManifest::Transport;

constexpr char kProvider24[] = "android.hardware.camera.provider@2.4::ICameraProvider";

/** A manifest with these elements; the first is on line 2. */
std::string manifestWith(const std::string& elements) {
    return "<manifest version=\"1.0\" type=\"device\">\n" + elements + "\n</manifest>\n";
}

std::string halOf(const std::string& elements) {
    return manifestWith("<hal format=\"hidl\"><name>a.b</name><transport>hwbinder</transport>\n" +
                        elements + "\n</hal>");
}

/** Empty if there is none, otherwise a line for each. */
std::string messageOf(const ManifestMistakes& mistakes) {
    std::string text;
    for (const ManifestMistake& mistake : mistakes) {
        text += (text.empty() ? "" : "\n") + mistake.toText();
    }
    return text;
}

VintfManifest parsed(const std::string& text) {
    VintfManifest manifest;
    EXPECT_EQ("", messageOf(manifest.addText(text, "m.xml")));
    return manifest;
}

std::string errorOf(const std::string& text) {
    VintfManifest manifest;
    const std::string error = messageOf(manifest.addText(text, "m.xml"));
    EXPECT_NE("", error);
    EXPECT_EQ(std::string::npos, error.find('\n')) << error;
    return error;
}

TEST(InterfaceNameTest, PackageVersionAndInterfaceAreTakenApart) {
    const auto name = InterfaceName::parse(kProvider24);
    ASSERT_TRUE(name);
    EXPECT_EQ("android.hardware.camera.provider", name->package);
    EXPECT_EQ(2u, name->major);
    EXPECT_EQ(4u, name->minor);
    EXPECT_EQ("ICameraProvider", name->interface);
}

TEST(InterfaceNameTest, AnythingElseIsNoInterfaceName) {
    for (const char* text :
         {"", "a.b", "a.b@1.0", "a.b::IFoo", "a.b@1::IFoo", "a.b@1.::IFoo", "a.b@.0::IFoo",
          "a.b@1.0::", "@1.0::IFoo", "a.b@1.0::IFoo/x", "a.b@1.x::IFoo", "a.b@-1.0::IFoo",
          "a.b@99999999999.0::IFoo", "a b@1.0::IFoo", "a.b@1.0:IFoo"}) {
        EXPECT_FALSE(InterfaceName::parse(text)) << text;
    }
}

TEST(VintfManifestTest, InstancesOfAnInterfaceAreListedSorted) {
    const VintfManifest manifest = parsed(manifestWith(R"(
        <hal format="hidl">
            <name>android.hardware.camera.provider</name>
            <transport>hwbinder</transport>
            <version>2.4</version>
            <interface>
                <name>ICameraProvider</name>
                <instance>legacy/0</instance>
                <instance>external/0</instance>
            </interface>
            <fqname>@2.4::ICameraProvider/virtual/0</fqname>
        </hal>)"));
    EXPECT_THAT(manifest.instancesOf(kProvider24),
                ElementsAre("external/0", "legacy/0", "virtual/0"));
    EXPECT_EQ(Transport::HWBINDER, manifest.transportOf(kProvider24, "legacy/0"));
    EXPECT_EQ(Transport::HWBINDER, manifest.transportOf(kProvider24, "virtual/0"));
}

TEST(VintfManifestTest, WhatIsNotDeclaredIsUnknown) {
    const VintfManifest manifest = parsed(halOf("<fqname>@1.0::IFoo/default</fqname>"));
    EXPECT_EQ(Transport::HWBINDER, manifest.transportOf("a.b@1.0::IFoo", "default"));
    EXPECT_EQ(std::nullopt, manifest.transportOf("a.b@1.0::IFoo", "other"));
    EXPECT_EQ(std::nullopt, manifest.transportOf("a.b@1.0::IBar", "default"));
    EXPECT_EQ(std::nullopt, manifest.transportOf("a.c@1.0::IFoo", "default"));
    EXPECT_EQ(std::nullopt, manifest.transportOf("nonsense", "default"));
    EXPECT_THAT(manifest.instancesOf("a.b@1.0::IBar"), IsEmpty());
    EXPECT_THAT(manifest.instancesOf("nonsense"), IsEmpty());
}

TEST(VintfManifestTest, AVersionAnswersForSmallerMinorOnesOfItsMajor) {
    const VintfManifest manifest = parsed(halOf(R"(
        <fqname>@2.4::IFoo/four</fqname>
        <fqname>@2.5::IFoo/five</fqname>
        <fqname>@3.9::IFoo/three-nine</fqname>)"));
    EXPECT_THAT(manifest.instancesOf("a.b@2.0::IFoo"), ElementsAre("five", "four"));
    EXPECT_THAT(manifest.instancesOf("a.b@2.4::IFoo"), ElementsAre("five", "four"));
    EXPECT_THAT(manifest.instancesOf("a.b@2.5::IFoo"), ElementsAre("five"));
    EXPECT_THAT(manifest.instancesOf("a.b@2.6::IFoo"), IsEmpty());
    EXPECT_THAT(manifest.instancesOf("a.b@1.0::IFoo"), IsEmpty());
    EXPECT_EQ(Transport::HWBINDER, manifest.transportOf("a.b@2.4::IFoo", "five"));
    EXPECT_EQ(std::nullopt, manifest.transportOf("a.b@2.5::IFoo", "four"));
}

TEST(VintfManifestTest, AnInstanceDeclaredForTwoVersionsIsListedOnce) {
    const VintfManifest manifest = parsed(halOf(R"(
        <version>2.4</version><version>2.5</version>
        <interface><name>IFoo</name><instance>x</instance><instance>x</instance></interface>)"));
    EXPECT_THAT(manifest.instancesOf("a.b@2.4::IFoo"), ElementsAre("x"));
    EXPECT_THAT(manifest.instancesOf("a.b@2.5::IFoo"), ElementsAre("x"));
}

TEST(VintfManifestTest, PassthroughIsTheOtherTransport) {
    const VintfManifest manifest = parsed(manifestWith(R"(
        <hal><name>a.b</name><transport arch="32+64">passthrough</transport>
        <fqname>@1.0::IFoo/default</fqname></hal>)"));
    EXPECT_EQ(Transport::PASSTHROUGH, manifest.transportOf("a.b@1.0::IFoo", "default"));
}

TEST(VintfManifestTest, TheFrameworkIsAskedBeforeTheDevice) {
    VintfManifest manifest = parsed(halOf("<fqname>@1.0::IFoo/x</fqname>"));
    ASSERT_EQ("", messageOf(manifest.addText(R"(<manifest version="2.0" type="framework">
        <hal format="hidl"><name>a.b</name><transport>passthrough</transport>
        <fqname>@1.0::IFoo/x</fqname><fqname>@1.0::IFoo/y</fqname></hal></manifest>)",
                                             "framework.xml")));
    EXPECT_EQ(Transport::PASSTHROUGH, manifest.transportOf("a.b@1.0::IFoo", "x"));
    EXPECT_THAT(manifest.instancesOf("a.b@1.0::IFoo"), ElementsAre("x", "y"));
}

TEST(VintfManifestTest, BlanksAroundTextsDoNotCount) {
    const VintfManifest manifest = parsed(manifestWith(R"(
        <hal format="hidl"><name> a.b
        </name><transport>
        hwbinder </transport><version> 1.0 </version>
        <interface><name> IFoo </name><instance> x </instance></interface></hal>)"));
    EXPECT_THAT(manifest.instancesOf("a.b@1.0::IFoo"), ElementsAre("x"));
}

TEST(VintfManifestTest, OtherElementsAndOtherKindsOfServicesArePassedOver) {
    const VintfManifest manifest = parsed(manifestWith(R"(
        <!-- a comment -->
        <hal format="aidl"><name>a.b</name></hal>
        <hal format="native"><name>netutils-wrapper</name></hal>
        <sepolicy><version>29.0</version></sepolicy>
        <hal format="hidl"><name>a.b</name><transport>hwbinder</transport>
        <extension/><fqname>@1.0::IFoo/x</fqname></hal>)"));
    EXPECT_THAT(manifest.instancesOf("a.b@1.0::IFoo"), ElementsAre("x"));
}

TEST(VintfManifestTest, AManifestMayDeclareNothing) {
    EXPECT_THAT(parsed("<manifest version=\"1.0\"/>").instancesOf(kProvider24), IsEmpty());
}

TEST(MalformedManifestTest, BrokenXmlIsRefusedWithItsPosition) {
    EXPECT_EQ(
            "m.xml:2: is not XML (Opening and ending tag mismatch: hal line 2 and manifest); name "
            "a "
            "manifest file",
            errorOf("<manifest version=\"1.0\">\n  <hal></manifest>"));
    EXPECT_THAT(errorOf("<manifest version=\"1.0\""), StartsWith("m.xml:1: is not XML ("));
    EXPECT_EQ("m.xml: is empty; name a manifest file", errorOf(""));
    EXPECT_THAT(errorOf("just text"), StartsWith("m.xml:1: is not XML ("));
}

TEST(MalformedManifestTest, TheRootElementIsChecked) {
    EXPECT_EQ(
            "m.xml:1: the root element is <service>, that of a manifest is <manifest>; name a "
            "manifest "
            "file",
            errorOf("<service/>"));
    EXPECT_EQ("m.xml:1: unknown manifest version \"7.0\"; use version=\"1.0\"",
              errorOf("<manifest version=\"7.0\"/>"));
    EXPECT_EQ("m.xml:1: unknown manifest version \"\"; use version=\"1.0\"",
              errorOf("<manifest/>"));
    EXPECT_EQ(
            "m.xml:1: unknown manifest type \"pocket\"; use type=\"device\" or "
            "type=\"framework\"",
            errorOf("<manifest version=\"1.0\" type=\"pocket\"/>"));
}

TEST(MalformedManifestTest, AHalNeedsANameAndATransport) {
    EXPECT_EQ("m.xml:2: <hal> without a <name>; name the package, such as a.b.c",
              errorOf(manifestWith("  <hal/>")));
    EXPECT_EQ("m.xml:2: unknown transport \"\"; <transport> is hwbinder or passthrough",
              errorOf(manifestWith("<hal><name>a.b</name></hal>")));
    EXPECT_EQ("m.xml:3: unknown transport \"pigeon\"; <transport> is hwbinder or passthrough",
              errorOf(manifestWith("<hal><name>a.b</name>\n<transport>pigeon</transport></hal>")));
}

TEST(MalformedManifestTest, VersionsAndInterfacesAreChecked) {
    EXPECT_EQ("m.xml:3: \"a.b@2\" is no package with a version such as a.b@2.4",
              errorOf(halOf("<version>2</version>")));
    EXPECT_EQ("m.xml:3: <interface> in a <hal> without a <version>; add one such as 2.4",
              errorOf(halOf("<interface><name>IFoo</name></interface>")));
    EXPECT_EQ("m.xml:4: \"\" is no interface name; <name> is one such as IFoo",
              errorOf(halOf("<version>2.4</version>\n<interface/>")));
    EXPECT_EQ("m.xml:4: empty instance name; give one such as default",
              errorOf(halOf("<version>2.4</version>\n"
                            "<interface><name>I</name><instance/></interface>")));
}

TEST(MalformedManifestTest, FqNamesAreChecked) {
    for (const std::string text :
         {"", "@1.0::IFoo", "1.0::IFoo/x", "@1.0/x", "a.b@1.0::IFoo/x", "@1::IFoo/x", "x@y/z"}) {
        EXPECT_EQ("m.xml:3: \"" + text +
                          "\" is no instance; <fqname> is one such as @2.4::IFoo/default",
                  errorOf(halOf("<fqname>" + text + "</fqname>")));
    }
    EXPECT_EQ("m.xml:3: empty instance name; give one such as default",
              errorOf(halOf("<fqname>@1.0::IFoo/</fqname>")));
}

TEST(MalformedManifestTest, OneInstanceHasOneTransport) {
    const std::string twice = manifestWith(
            "<hal><name>a.b</name><transport>hwbinder</transport>"
            "<fqname>@1.0::IFoo/x</fqname></hal>\n"
            "<hal><name>a.b</name><transport>passthrough</transport>"
            "<fqname>@1.0::IFoo/x</fqname></hal>");
    EXPECT_EQ("m.xml:3: instance \"x\" of IFoo is declared with two transports; remove one",
              errorOf(twice));
}

TEST(MalformedManifestTest, AnErrorThatQuotesLineBreaksIsStillOneLine) {
    EXPECT_EQ("m.xml:3: \"a b\" is no instance; <fqname> is one such as @2.4::IFoo/default",
              errorOf(halOf("<fqname>a\nb</fqname>")));
}

TEST(MalformedManifestTest, AllMistakesAreTold) {
    VintfManifest manifest;
    const auto mistakes = manifest.addText(halOf("<version>2</version>\n<fqname>x</fqname>\n"
                                                 "<fqname>@1.0::IFoo/good</fqname>\n<fqname/>") +
                                                   "\n",
                                           "m.xml");
    EXPECT_EQ(
            "m.xml:3: \"a.b@2\" is no package with a version such as a.b@2.4\n"
            "m.xml:4: \"x\" is no instance; <fqname> is one such as @2.4::IFoo/default\n"
            "m.xml:6: \"\" is no instance; <fqname> is one such as @2.4::IFoo/default",
            messageOf(mistakes));
    EXPECT_THAT(manifest.instancesOf("a.b@1.0::IFoo"), ElementsAre("good"));
}

TEST(MalformedManifestTest, ACommentInsideATextIsNoPartOfIt) {
    const VintfManifest manifest = parsed(halOf("<fqname>@1.0::IFoo/<!-- which -->x</fqname>"));
    EXPECT_THAT(manifest.instancesOf("a.b@1.0::IFoo"), ElementsAre("x"));
}

class ManifestFilesTest : public ::testing::Test {
  protected:
    void write(const std::string& file, const std::string& text) {
        const std::filesystem::path path = mDevice.path() / file;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << text;
    }
    std::string pathOf(const std::string& file) const { return mDevice.path() / file; }

    const testing::TemporaryDevice mDevice;
    VintfManifest mManifest;
};

TEST_F(ManifestFilesTest, AFileThatCannotBeReadIsNamed) {
    EXPECT_EQ(pathOf("none.xml") +
                      ": cannot be opened (No such file or directory); name a manifest file",
              messageOf(mManifest.addFile(pathOf("none.xml"))));
    write("empty.xml", "");
    EXPECT_EQ(pathOf("empty.xml") + ": is empty; name a manifest file",
              messageOf(mManifest.addFile(pathOf("empty.xml"))));
    EXPECT_EQ(mDevice.path().string() + ": is not a regular file; name a manifest file",
              messageOf(mManifest.addFile(mDevice.path())));
}

TEST_F(ManifestFilesTest, ADirectoryIsItsManifestAndItsFragments) {
    write("manifest.xml", halOf("<fqname>@1.0::IFoo/main</fqname>"));
    write("manifest/a.xml", halOf("<fqname>@1.0::IFoo/a</fqname>"));
    write("manifest/b.xml", halOf("<fqname>@1.0::IFoo/b</fqname>"));
    write("manifest/readme.txt", "not XML");
    ASSERT_EQ("", messageOf(mManifest.addDirectory(mDevice.path())));
    EXPECT_THAT(mManifest.instancesOf("a.b@1.0::IFoo"), ElementsAre("a", "b", "main"));
}

TEST_F(ManifestFilesTest, ADirectoryWithoutManifestsDeclaresNothing) {
    EXPECT_EQ("", messageOf(mManifest.addDirectory(mDevice.path())));
    EXPECT_EQ("", messageOf(mManifest.addDirectory(pathOf("missing"))));
    EXPECT_THAT(mManifest.instancesOf("a.b@1.0::IFoo"), IsEmpty());
}

TEST_F(ManifestFilesTest, AMalformedFragmentIsNamed) {
    write("manifest.xml", halOf(""));
    write("manifest/a.xml", "<manifest version=\"1.0\">");
    EXPECT_THAT(messageOf(mManifest.addDirectory(mDevice.path())),
                StartsWith(pathOf("manifest/a.xml") + ":1:"));
}

}  // namespace
}  // namespace orvo
