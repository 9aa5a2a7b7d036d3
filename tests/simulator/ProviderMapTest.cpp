// SPDX-License-Identifier: Apache-2.0
// Tests of ProviderMap: who stands behind an instance, and what the reader says of mistakes.

#include "simulator/description/ProviderMap.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/support/FreshDirectory.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class ProviderMapTest : public ::testing::Test {
  protected:
    ProviderMap read(const std::string& text) {
        mFile = mDirectory.write("map.xml", text);
        return ProviderMap::read(mFile);
    }
    /** The same, with nothing printed. */
    ProviderMap readQuietly(const std::string& text) {
        ::testing::internal::CaptureStderr();
        const ProviderMap map = read(text);
        EXPECT_EQ("", ::testing::internal::GetCapturedStderr());
        return map;
    }

    FreshDirectory mDirectory;
    std::string mFile;
};

TEST_F(ProviderMapTest, NamesAreSortedAndEachIsThereOnce) {
    const ProviderMap map =
            read("<any><instance replace='virtual/0'>legacy/0</instance><other>legacy/0</other>"
                 "<instance replace='external/0'>legacy/0</instance>"
                 "<instance replace='virtual/0'>legacy/0</instance>"
                 "<instance replace='third/0'> legacy/0 </instance></any>");
    EXPECT_THAT(map.behind("legacy/0"), ElementsAre("external/0", "virtual/0"));
    EXPECT_THAT(map.behind("default/0"), IsEmpty());
    EXPECT_THAT(map.warnings(), IsEmpty());
}

TEST_F(ProviderMapTest, WhatIsNotXmlIsEmptyAndTheReaderIsQuoted) {
    const std::string end = "; the reader says 'Failed to parse XML'";
    ProviderMap map = readQuietly("<any>\n<instance replace='a/0'>b/0</instanc>\n</any>");
    EXPECT_THAT(map.entries(), IsEmpty());
    EXPECT_THAT(map.warnings(),
                ElementsAre(mFile +
                            ":2: is not XML (Opening and ending tag mismatch: instance line 2 and"
                            " instanc)" +
                            end));
    map = readQuietly("<any>\n<instance replace='a/0'>b/0</instance>");
    EXPECT_THAT(map.entries(), IsEmpty());
    EXPECT_THAT(map.warnings(), ElementsAre(AllOf(StartsWith(mFile + ":2: "), EndsWith(end))));
}

TEST_F(ProviderMapTest, WhatFollowsTheRootElementMakesItNoXml) {
    const ProviderMap map =
            readQuietly("<any><instance replace='a/0'>b/0</instance></any>\ngarbage");
    EXPECT_THAT(map.entries(), IsEmpty());
    EXPECT_THAT(map.warnings(), ElementsAre(AllOf(StartsWith(mFile + ":2: is not XML ("),
                                                  EndsWith("'Failed to parse XML'"))));
}

TEST_F(ProviderMapTest, Utf16EndsAtItsFirstNulByte) {
    std::string text = "\xFF\xFE";
    for (const char c : std::string("<any><instance replace='a/0'>b/0</instance></any>")) {
        text += {c, '\0'};
    }
    const ProviderMap map = readQuietly(text);
    EXPECT_THAT(map.entries(), IsEmpty());
    EXPECT_THAT(map.warnings(), ElementsAre(EndsWith("'Failed to parse XML'")));
}

TEST_F(ProviderMapTest, AnAttributeOfANamespaceOrOfTheDocumentTypeCounts) {
    const ProviderMap map = readQuietly(
            "<!DOCTYPE any [<!ATTLIST instance replace CDATA 'usual/0'>]>"
            "<any xmlns:x='urn:x'><instance x:replace='a/0'>b/0</instance>"
            "<x:instance x:replace='c/0'>b/0</x:instance></any>");
    EXPECT_THAT(map.warnings(), IsEmpty());
    EXPECT_THAT(map.behind("b/0"), ElementsAre("a/0", "c/0"));
    EXPECT_THAT(readQuietly("<!DOCTYPE any [<!ATTLIST instance replace CDATA 'usual/0'>]>"
                            "<any><instance>b/0</instance></any>")
                        .behind("b/0"),
                ElementsAre("usual/0"));
}

TEST_F(ProviderMapTest, ACommentInsideATextIsNoPartOfIt) {
    const ProviderMap map =
            readQuietly("<any><instance replace='a/0'>leg<!-- half -->acy/0</instance></any>");
    EXPECT_THAT(map.behind("legacy/0"), ElementsAre("a/0"));
}

TEST_F(ProviderMapTest, AnEntryWithoutItsAttributeIsLeftOut) {
    const ProviderMap map = readQuietly(
            "<any>\n\n<instance>b/0</instance><instance replace='a/0'>b/0</instance></any>");
    EXPECT_THAT(map.behind("b/0"), ElementsAre("a/0"));
    EXPECT_THAT(
            map.warnings(),
            ElementsAre(mFile + ": the reader says 'Skipping instance 'b/0': it has no \"replace\""
                                " attribute'"));
}

TEST_F(ProviderMapTest, AMissingFileIsNamed) {
    const ProviderMap map = ProviderMap::read("/no/such.xml");
    EXPECT_THAT(map.entries(), IsEmpty());
    EXPECT_THAT(map.warnings(),
                ElementsAre("/no/such.xml: the reader says 'Failed to open /no/such.xml'"));
}

}  // namespace
}  // namespace orvo::simulator::testing
