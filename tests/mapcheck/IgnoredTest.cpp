// SPDX-License-Identifier: Apache-2.0
// What the library ignores in a map.

#include "tests/mapcheck/MapCheckTest.h"

namespace orvo::test {
namespace {

using IgnoredTest = MapCheckTest;

constexpr char kGood[] = R"(<instance replace="external/0">legacy/0</instance>)";

// A map of the good entry on line 2, and `text` from line 3 on.
std::string mapWith(const std::string& text) {
    return std::string("<providers>\n") + kGood + "\n" + text + "\n</providers>\n";
}

TEST_F(IgnoredTest, AMapOfGoodEntriesIsClean) {
    expectClean(mapWith(R"(<!-- <instance/> --> <instance replace="virtual/0">legacy/0</instance>
        <instance replace="external/0">aggregate/1</instance>)"));
}

TEST_F(IgnoredTest, TheRootElementsNameAndNamespacesDoNotMatter) {
    expectClean(R"(<m:map xmlns:m="urn:m">
        <m:instance replace="external/0">legacy/0</m:instance></m:map>)");
}

TEST_F(IgnoredTest, AnEntryWithoutReplaceIsAnError) {
    expect(mapWith("\n<instance Replace=\"virtual/0\">legacy/0</instance>"),
           {"4: error: the entry \"legacy/0\" is ignored, it has no \"replace\" attribute; name "
            "the provider that stands behind it [no-replace]"});
}

TEST_F(IgnoredTest, AnEntryBelowAnotherElementIsAnErrorAndTheElementIsNone) {
    expect(mapWith("<group>\n<deeper>\n<instance replace=\"a/0\">legacy/0</instance>\n</deeper>\n"
                   "<instance replace=\"b/0\">legacy/0</instance></group>"),
           {"5: error: <instance> is ignored, it is nested too deep; make it a child of the root "
            "element [nested]",
            "7: error: <instance> is ignored, it is nested too deep; make it a child of the root "
            "element [nested]"});
}

TEST_F(IgnoredTest, AnEntryInAnEntryIsIgnoredAndSpoilsTheKey) {
    expect(mapWith("<instance replace=\"a/0\">legacy/0\n<instance replace=\"b/0\">x/0</instance>"
                   "</instance>"),
           {"3: error: the key \"legacy/0\\nx/0\" is one name and never split: no instance has it; "
            "write one entry for each name [blanks-in-key]",
            "4: error: <instance> is ignored, it is nested too deep; make it a child of the root "
            "element; its text becomes part of the key of the entry around it [nested]"});
}

TEST_F(IgnoredTest, AnElementThatLooksLikeAnEntryIsAnError) {
    for (const char* name : {"Instance", "INSTANCE", "instanse", "m:instance"}) {
        const std::string element(name);
        expect(mapWith("<" + element + " replace=\"a/0\">legacy/0</" + element + ">"),
               {"3: error: <" + element +
                "> is ignored; only elements named <instance>, in lower case, are entries "
                "[other-element]"});
    }
    expect(mapWith("<Instance>legacy/0</Instance>"),
           {"3: error: <Instance> is ignored; only elements named <instance>, in lower case, are "
            "entries [other-element]"});
}

TEST_F(IgnoredTest, AnyOtherElementIsAWarning) {
    expect(mapWith("<version>1.0</version>"),
           {"3: warning: <version> is ignored; only elements named <instance>, in lower case, are "
            "entries [other-element]"});
}

TEST_F(IgnoredTest, AnElementsNameIsWrittenSoThatEveryCharacterShows) {
    expect(mapWith("<instance\u200d replace=\"a/0\">legacy/0</instance\u200d>"),
           {"3: error: <instance\\u200D> is ignored; only elements named <instance>, in lower "
            "case, "
            "are entries [other-element]"});
}

TEST_F(IgnoredTest, TextThatNamesAnInstanceIsAnError) {
    expect(mapWith("\n  legacy/0 = external/0\r\n\n<!-- a comment -->\n\n"
                   "<![CDATA[\n<instance replace=\"a/0\">b/0</instance>\n\n]]>"),
           {"4: error: the text \"legacy/0 = external/0\" is ignored; only elements such as "
            "<instance replace=\"external/0\">legacy/0</instance> are entries [stray-text]",
            "9: error: the text \"<instance replace=\\\"a/0\\\">b/0</instance>\" is ignored; only "
            "elements such as <instance replace=\"external/0\">legacy/0</instance> are entries "
            "[stray-text]"});
}

TEST_F(IgnoredTest, AnyOtherTextIsAWarning) {
    expect(mapWith("&amp;\n-->\n\u00a0;"),
           {"3: warning: the text \"&\" and what follows it is ignored; only elements such as "
            "<instance replace=\"external/0\">legacy/0</instance> are entries [stray-text]"});
    expect(mapWith("<![CDATA[ \n ]]>\n\u200b"),
           {"5: warning: the text \"\\u200B\" is ignored; only elements such as "
            "<instance replace=\"external/0\">legacy/0</instance> are entries [stray-text]"});
}

TEST_F(IgnoredTest, BlankTextAndTextInOtherElementsIsNoMistakeOfItsOwn) {
    expectClean(mapWith("<![CDATA[ \n\t ]]>&#32;&#10;"));
    expect(mapWith("<group>legacy/0 = external/0</group>"),
           {"3: warning: <group> is ignored; only elements named <instance>, in lower case, are "
            "entries [other-element]"});
}

TEST_F(IgnoredTest, EncodingsThatADeviceMayNotKnowAreErrors) {
    for (const char* encoding : {"windows-1252", "GB2312", "ISO-8859-15", "latin1"}) {
        expect(std::string(R"(<?xml version="1.0" encoding=")") + encoding + "\"?>\n" + mapWith(""),
               {std::string("1: error: the encoding \"") + encoding +
                "\" is unknown to a device's XML reader, which refuses the whole file: with this "
                "map no instance but \"default/0\" is served; write the file as UTF-8 "
                "[encoding]"});
    }
}

TEST_F(IgnoredTest, EncodingsThatEveryDeviceKnowsAreClean) {
    for (const char* encoding : {"UTF-8", "utf-8", "UTF8", "ISO-8859-1", "us-ascii", "ASCII"}) {
        expectClean(std::string(R"(<?xml version="1.0" encoding=")") + encoding + "\"?>\n" +
                    mapWith(""));
    }
    expectClean("\xEF\xBB\xBF" + mapWith(""));
}

TEST_F(IgnoredTest, EntriesThatAnEntityStandsForAreAnError) {
    expect(R"(<!DOCTYPE map [<!ENTITY more '<instance replace="a/0">legacy/0</instance>'>]>)" +
                   mapWith("&more;"),
           {"3: error: &more; is ignored, entries that an entity stands for are not read; write "
            "them out [entity-reference]"});
}

TEST_F(IgnoredTest, NamesThatAnEntityStandsForAreRead) {
    expectClean(R"(<!DOCTYPE map [<!ENTITY type "external">]>
        <map><instance replace="&type;/0">leg&#97;cy/0</instance></map>)");
}

TEST_F(IgnoredTest, ARootElementThatIsAnEntryIsAnError) {
    expect(R"(<instance replace="external/0">legacy/0</instance>)",
           {"1: error: the root element is ignored, only its children are entries; put it into a "
            "root element such as <providers> [root-is-entry]",
            "1: error: the map is empty, so no instance but \"default/0\" is served; write entries "
            "such as <instance replace=\"external/0\">legacy/0</instance> as children of the root "
            "element <instance> [no-entry]"});
    expectClean(R"(<instance><instance replace="external/0">legacy/0</instance></instance>)");
}

TEST_F(IgnoredTest, AnEmptyMapIsAnError) {
    expect("\n<manifest>\n</manifest>",
           {"2: error: the map is empty, so no instance but \"default/0\" is served; write entries "
            "such as <instance replace=\"external/0\">legacy/0</instance> as children of the root "
            "element <manifest> [no-entry]"});
}

TEST_F(IgnoredTest, WhatFollowsANulByteIsAWarning) {
    using namespace std::string_literals;
    expect(mapWith("") + "\n\0<<<"s,
           {"6: warning: what follows the NUL byte is ignored; remove the byte [nul-byte]"});
}

TEST_F(IgnoredTest, AnEntryOverSeveralLinesIsFoundWhereItsStartTagEnds) {
    expect(mapWith("<instance\n  replace=\"a,b/0\"\n  >legacy/0</instance>"),
           {"5: error: the value \"a,b/0\" is one name and never split: no provider has it; write "
            "one entry for each name [comma-in-value]"});
}

TEST_F(IgnoredTest, LinesBeyondWhatATreeKeepsAreTold) {
    std::string text;
    for (int i = 0; i < 70000; ++i) text += "\n";
    expect(mapWith(text + "<instance>a/0</instance>\n<instance>\nb/0</instance>\n" + text +
                   "c/0\n"),
           {"70003: error: the entry \"a/0\" is ignored, it has no \"replace\" attribute; name the "
            "provider that stands behind it [no-replace]",
            "70005: error: the entry \"\\nb/0\" is ignored, it has no \"replace\" attribute; name "
            "the provider that stands behind it [no-replace]",
            "140006: error: the text \"c/0\" is ignored; only elements such as <instance "
            "replace=\"external/0\">legacy/0</instance> are entries [stray-text]"});
}

}  // namespace
}  // namespace orvo::test
