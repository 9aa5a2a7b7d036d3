// SPDX-License-Identifier: Apache-2.0
// Files of which the library, or the checker, can make nothing.

#include <sys/stat.h>

#include <filesystem>

#include "tests/mapcheck/MapCheckTest.h"

namespace orvo::test {
namespace {

constexpr char kGood[] = "<map><instance replace=\"external/0\">legacy/0</instance></map>";
constexpr char kNotServed[] = "; with this map no instance but \"default/0\" is served";

class UnusableTest : public MapCheckTest {
  protected:
    void expectUnusable(const std::string& what) { expectOfFile({what}, {}, 2); }
};

TEST_F(UnusableTest, AMissingFile) {
    expectUnusable(std::string(" error: cannot be opened (No such file or directory)") +
                   kNotServed + " [unreadable]");
}

TEST_F(UnusableTest, AFileThatCannotBeOpened) {
    // A link to itself, because root may open a file without permissions.
    std::filesystem::create_symlink(mMap, mMap);
    expectUnusable(std::string(" error: cannot be opened (Too many levels of symbolic links)") +
                   kNotServed + " [unreadable]");
}

TEST_F(UnusableTest, ADirectory) {
    std::filesystem::create_directory(mMap);
    expectUnusable(std::string(" error: is not a regular file") + kNotServed + " [unreadable]");
}

TEST_F(UnusableTest, APipeThatNobodyWritesInto) {
    ASSERT_EQ(mkfifo(mMap.c_str(), 0600), 0);
    expectUnusable(std::string(" error: is not a regular file") + kNotServed + " [unreadable]");
}

TEST_F(UnusableTest, AnEmptyFile) {
    expect("", {std::string(" error: is empty") + kNotServed + " [empty-file]"}, {}, 2);
}

TEST_F(UnusableTest, AFileThatBeginsWithANulByte) {
    expect(std::string(1, '\0') + kGood,
           {std::string("1: error: begins with a NUL byte, which ends the document; write the file "
                        "as UTF-8, without such bytes") +
            kNotServed + " [empty-file]"},
           {}, 2);
}

TEST_F(UnusableTest, ANulByteInTheDocumentIsNamed) {
    using namespace std::string_literals;
    expect("<map>\n<instance replace=\"external/0\">legacy/0</instance>\n\0</map>\n"s,
           {"3: error: is not XML (Premature end of data in tag map line 1): a NUL byte on line 3 "
            "ends the document; write the file as UTF-8, without such bytes" +
            std::string(kNotServed) + " [not-xml]"},
           {}, 2);
}

TEST_F(UnusableTest, AFileInUtf16IsTold) {
    std::string text = "\xFF\xFE";
    for (const char c : std::string(kGood)) text += {c, '\0'};
    expect(text,
           {"1: error: is not XML (Start tag expected, '<' not found): a NUL byte on line 1 ends "
            "the document; write the file as UTF-8, without such bytes" +
            std::string(kNotServed) + " [not-xml]"},
           {}, 2);
}

TEST_F(UnusableTest, AMistakeBeforeANulByteIsToldInstead) {
    using namespace std::string_literals;
    expect("<map>\n</mop>\n\0"s,
           {"2: error: is not XML (Opening and ending tag mismatch: map line 1 and mop)" +
            std::string(kNotServed) + " [not-xml]"},
           {}, 2);
}

TEST_F(UnusableTest, AFileThatIsTooLargeIsNotReadAtAll) {
    mDirectory.write("map.xml", kGood);
    std::filesystem::resize_file(mMap, uintmax_t{1} << 31);  // Without taking that much space.
    expectUnusable(std::string(" error: is larger than the parser can take") + kNotServed +
                   " [not-xml]");
}

TEST_F(UnusableTest, MalformedXmlHasTheLineOfTheFirstMistake) {
    expect("<map>\n<instance>\n</map>\n",
           {"3: error: is not XML (Opening and ending tag mismatch: instance line 2 and map)" +
            std::string(kNotServed) + " [not-xml]"},
           {}, 2);
}

TEST_F(UnusableTest, TextIsNotXml) {
    expect("legacy/0 = external/0\n",
           {"1: error: is not XML (Start tag expected, '<' not found)" + std::string(kNotServed) +
            " [not-xml]"},
           {}, 2);
}

TEST_F(UnusableTest, AnEntityBombIsNotXml) {
    std::string bomb = "<!DOCTYPE map [<!ENTITY e0 \"0123456789\">";
    for (int i = 1; i <= 12; ++i) {
        bomb += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) bomb += "&e" + std::to_string(i - 1) + ";";
        bomb += "\">";
    }
    mDirectory.write("map.xml", bomb + "]>\n<map><instance replace=\"&e12;\">a/0</instance></map>");
    expectUnusable("2: error: is not XML (Detected an entity reference loop)" +
                   std::string(kNotServed) + " [not-xml]");
}

TEST_F(UnusableTest, TheOtherFilesAreCheckedAllTheSame) {
    const std::string missing = mDirectory.path() + "/missing.xml";
    const std::string empty = mDirectory.write("empty.xml", "<map/>");
    const std::string good = mDirectory.write("good.xml", kGood);
    const ProgramEnd end = run({missing, good, empty});
    EXPECT_EQ(end.out, missing + ": error: cannot be opened (No such file or directory)" +
                               kNotServed + " [unreadable]\n" + empty +
                               ":1: error: the map is empty, so no instance but \"default/0\" is "
                               "served; write entries such as <instance replace=\"external/0\">"
                               "legacy/0</instance> as children of the root element <map> "
                               "[no-entry]\n");
    EXPECT_EQ(end.status, 2);
}

TEST_F(UnusableTest, AnEncodingThatNobodyKnowsIsNotXml) {
    expect("<?xml version=\"1.0\" encoding=\"none\"?>\n" + std::string(kGood),
           {"1: error: is not XML (Unsupported encoding none)" + std::string(kNotServed) +
            " [not-xml]"},
           {}, 2);
}

TEST_F(UnusableTest, AManifestThatADeviceRefusesStopsTheCheck) {
    const std::string manifest = mDirectory.write("manifest.xml", R"(<manifest version="2.0">
        <hal><name>android.hardware.camera.provider</name>
            <fqname>ICameraProvider/external/0</fqname></hal></manifest>)");
    const ProgramEnd end = run({mDirectory.write("map.xml", kGood), "--manifest", manifest});
    EXPECT_EQ(end.out,
              manifest +
                      ":2: error: unknown transport \"\"; <transport> is hwbinder or passthrough "
                      "[wrong-manifest]\n" +
                      manifest +
                      ":3: error: \"ICameraProvider/external/0\" is no instance; <fqname> is one "
                      "such as @2.4::IFoo/default [wrong-manifest]\n");
    EXPECT_EQ(end.status, 2);
}

TEST_F(UnusableTest, AManifestThatIsNoneStopsTheCheck) {
    const std::string map = mDirectory.write("bad.xml", "<map/>");
    const std::string missing = mDirectory.path() + "/missing.xml";
    const std::string broken = mDirectory.write("broken.xml", "<manifest>");
    const std::string other = mDirectory.write("other.xml", "\n<compatibility-matrix/>");
    const ProgramEnd end =
            run({map, "--manifest", missing, "--manifest", broken, "--manifest", other});
    EXPECT_EQ(end.out,
              missing +
                      ": error: cannot be opened (No such file or directory); name a manifest "
                      "file [unreadable]\n" +
                      broken +
                      ":1: error: is not XML (Premature end of data in tag manifest line "
                      "1); name a manifest file [not-xml]\n" +
                      other +
                      ":2: error: the root element is <compatibility-matrix>, that of a "
                      "manifest is <manifest>; name a manifest file [wrong-root]\n");
    EXPECT_EQ(end.err, "");
    EXPECT_EQ(end.status, 2);
}

}  // namespace
}  // namespace orvo::test
