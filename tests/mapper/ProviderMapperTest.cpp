// SPDX-License-Identifier: Apache-2.0
// The replacement map file: what the reader takes from it, what it refuses, what it logs.

#include "mapper/ProviderMapper.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <type_traits>

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/CapturedLog.h"
#include "tests/support/Fault.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/VirtualSlot.h"

namespace orvo::test {
namespace {

using camera::IProviderMapper;
using camera::ProviderMapper;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Names = std::vector<std::string>;

LogLine info(const std::string& text) {
    return {ANDROID_LOG_INFO, "ProviderMapper", text};
}

LogLine error(const std::string& text) {
    return {ANDROID_LOG_ERROR, "ProviderMapper", text};
}

LogLine loaded(const std::string& instance, const std::string& replacement) {
    return info("** ORVO Provider map loaded: '" + instance + "' -> '" + replacement + "'");
}

class ProviderMapperTest : public ::testing::Test {
  protected:
    void write(const std::string& text) { write(mPath, text); }

    static void write(const std::string& path, const std::string& text) {
        std::ofstream(path, std::ios::binary) << text;
    }

    bool load() { return mMapper.loadMapFromFile(mPath.c_str()); }

    bool load(const std::string& text) {
        write(text);
        return load();
    }

    Names ask(const char* name) { return mMapper.getReplacementProviderNames(name); }

    const TemporaryDirectory mDirectory;
    const std::string mPath = mDirectory.path() + "/map.xml";
    CapturedLog mLog;
    ProviderMapper mMapper;
};

TEST_F(ProviderMapperTest, IsEmptyAtFirst) {
    EXPECT_THAT(mMapper.mProviderMap, IsEmpty());
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(ProviderMapperTest, TwoEntriesOfOneInstanceAddUpInDocumentOrder) {
    EXPECT_TRUE(load(R"(<map>
        <instance replace="external/0">legacy/0</instance>
        <instance replace="virtual/0">legacy/0</instance>
    </map>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0", "virtual/0"));
    EXPECT_THAT(mLog.lines(),
                ElementsAre(loaded("legacy/0", "external/0"), loaded("legacy/0", "virtual/0")));
}

TEST_F(ProviderMapperTest, ListsWhatItLoadedByKeyAndThenInDocumentOrder) {
    EXPECT_TRUE(load(R"(<map>
        <instance replace="z/0">legacy/0</instance>
        <instance replace="c/0">external/0</instance>
        <instance replace="a/0">legacy/0</instance>
        <instance replace="b/0">external/0</instance>
    </map>)"));
    EXPECT_THAT(mLog.lines(), ElementsAre(loaded("external/0", "c/0"), loaded("external/0", "b/0"),
                                          loaded("legacy/0", "z/0"), loaded("legacy/0", "a/0")));
}

TEST_F(ProviderMapperTest, RepeatedValuesAreKept) {
    EXPECT_TRUE(load(R"(<map>
        <instance replace="external/0">legacy/0</instance>
        <instance replace="external/0">legacy/0</instance>
    </map>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0", "external/0"));
}

TEST_F(ProviderMapperTest, TheNameOfTheRootElementDoesNotMatter) {
    EXPECT_TRUE(load(R"(<whatever><instance replace="external/0">legacy/0</instance></whatever>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
}

TEST_F(ProviderMapperTest, ARootElementNamedInstanceIsNoEntry) {
    EXPECT_TRUE(load(R"(<instance replace="external/0">legacy/0</instance>)"));
    EXPECT_THAT(mMapper.mProviderMap, IsEmpty());
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(ProviderMapperTest, ChildrenOfARootElementNamedInstanceAreEntries) {
    EXPECT_TRUE(load(R"(<instance><instance replace="external/0">legacy/0</instance></instance>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
}

TEST_F(ProviderMapperTest, ADeeperInstanceElementIsIgnored) {
    EXPECT_TRUE(load(R"(<map><group>
        <instance replace="external/0">legacy/0</instance>
    </group></map>)"));
    EXPECT_THAT(mMapper.mProviderMap, IsEmpty());
}

TEST_F(ProviderMapperTest, OtherChildrenTextAndCommentsAreIgnored) {
    EXPECT_TRUE(load(R"(<map> text
        <!-- <instance replace="comment/0">legacy/0</instance> -->
        <?instance replace="pi/0" legacy/0?>
        <Instance replace="upper/0">legacy/0</Instance>
        <instances replace="plural/0">legacy/0</instances>
        <instance replace="external/0">legacy/0</instance>
    </map>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
    EXPECT_THAT(mMapper.mProviderMap, SizeIs(1));
}

TEST_F(ProviderMapperTest, OnlyElementsAreEntriesWhateverElseIsNamedAlike) {
    EXPECT_TRUE(load(R"(<map><![CDATA[instance]]><?instance replace="pi/0"?><?instance?>
        <![CDATA[<instance replace="cdata/0">legacy/0</instance>]]><!--instance-->
        <instance replace="external/0">legacy/0</instance></map>)"));
    EXPECT_THAT(mLog.lines(), ElementsAre(loaded("legacy/0", "external/0")));
}

TEST_F(ProviderMapperTest, ANamespacePrefixDoesNotHideAnEntry) {
    EXPECT_TRUE(load(R"(<m:map xmlns:m="urn:m">
        <m:instance replace="external/0">legacy/0</m:instance>
    </m:map>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
}

TEST_F(ProviderMapperTest, OtherAttributesAreIgnored) {
    EXPECT_TRUE(load(R"(<map><instance name="x" replace="external/0" Replace="y">legacy/0</instance>
        </map>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
}

TEST_F(ProviderMapperTest, ANamespacePrefixDoesNotHideTheAttribute) {
    EXPECT_TRUE(load(R"(<map xmlns:m="urn:m">
        <instance m:replace="external/0">legacy/0</instance>
    </map>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
}

TEST_F(ProviderMapperTest, BlanksAndLineBreaksInTheTextArePartOfTheKey) {
    EXPECT_TRUE(load("<map><instance replace=\"external/0\">\n  legacy/0\n</instance></map>"));
    EXPECT_THAT(ask("legacy/0"), IsEmpty());
    EXPECT_THAT(ask("\n  legacy/0\n"), ElementsAre("external/0"));
    EXPECT_THAT(mLog.lines()[0], loaded("\n  legacy/0\n", "external/0"));
}

TEST_F(ProviderMapperTest, TheKeyIsAllTextInsideTheElement) {
    EXPECT_TRUE(load(R"(<map><instance replace="external/0">leg<b>a</b><!-- c -->cy<![CDATA[/0]]>)"
                     R"(</instance></map>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
}

TEST_F(ProviderMapperTest, BlanksAloneAreAKeyOrAPartOfOne) {
    EXPECT_TRUE(load(R"(<map>
        <instance replace="external/0">  </instance>
        <instance replace="virtual/0">  <b>legacy</b> <i>/0</i></instance>
    </map>)"));
    EXPECT_THAT(ask("  "), ElementsAre("external/0"));
    EXPECT_THAT(ask("  legacy /0"), ElementsAre("virtual/0"));
}

TEST_F(ProviderMapperTest, AnEmptyElementHasTheEmptyKey) {
    EXPECT_TRUE(load(R"(<map><instance replace="external/0"/></map>)"));
    EXPECT_THAT(ask(""), ElementsAre("external/0"));
}

TEST_F(ProviderMapperTest, AValueWithACommaIsOneName) {
    EXPECT_TRUE(load(R"(<map><instance replace="external/0,virtual/0">legacy/0</instance></map>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0,virtual/0"));
}

TEST_F(ProviderMapperTest, AValueIsNotTrimmedAndMayBeEmpty) {
    EXPECT_TRUE(load(R"(<map>
        <instance replace=" external/0 ">legacy/0</instance>
        <instance replace="">legacy/0</instance>
    </map>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre(" external/0 ", ""));
}

TEST_F(ProviderMapperTest, PredefinedAndInternalEntitiesAreRead) {
    EXPECT_TRUE(load(R"(<!DOCTYPE map [<!ENTITY type "external">]>
        <map><instance replace="&type;/0">legacy&amp;/0</instance></map>)"));
    EXPECT_THAT(ask("legacy&/0"), ElementsAre("external/0"));
}

TEST_F(ProviderMapperTest, AnEntryWithoutReplaceIsSkippedWithAnErrorThatNamesIt) {
    recordFault("map file", "an entry lacks its attribute",
                "an error line names it; the other entries are read");
    EXPECT_TRUE(load(R"(<map>
        <instance>legacy/0</instance>
        <instance replace="external/0">legacy/0</instance>
        <instance>virtual/0</instance>
    </map>)"));
    EXPECT_THAT(mMapper.mProviderMap, SizeIs(1));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
    EXPECT_THAT(mLog.lines(),
                ElementsAre(error("Skipping instance 'legacy/0': it has no \"replace\" attribute"),
                            error("Skipping instance 'virtual/0': it has no \"replace\" attribute"),
                            loaded("legacy/0", "external/0")));
}

TEST_F(ProviderMapperTest, AMissingFileCannotBeOpened) {
    EXPECT_FALSE(load());
    EXPECT_THAT(mLog.lines(), ElementsAre(error("Failed to open " + mPath)));
}

TEST_F(ProviderMapperTest, AFileThatIsThereButUnreadableCannotBeOpened) {
    recordFault("map file", "the file cannot be opened", "an error line; the load fails");
    // A link to itself, because root may open a file without permissions.
    ASSERT_EQ(symlink(mPath.c_str(), mPath.c_str()), 0);
    EXPECT_FALSE(load());
    EXPECT_THAT(mLog.lines(), ElementsAre(error("Failed to open " + mPath)));
}

TEST_F(ProviderMapperTest, AnEmptyFileCannotBeRead) {
    recordFault("map file", "the file is empty", "an error line; the load fails");
    EXPECT_FALSE(load(""));
    EXPECT_THAT(mLog.lines(), ElementsAre(error("Failed to read " + mPath)));
}

TEST_F(ProviderMapperTest, ADirectoryCannotBeRead) {
    EXPECT_FALSE(mMapper.loadMapFromFile(mDirectory.path().c_str()));
    EXPECT_THAT(mLog.lines(), ElementsAre(error("Failed to read " + mDirectory.path())));
}

TEST_F(ProviderMapperTest, AFileThatStartsWithANulByteCannotBeRead) {
    using namespace std::string_literals;
    EXPECT_FALSE(load("\0<map><instance replace=\"external/0\">legacy/0</instance></map>"s));
    EXPECT_THAT(mLog.lines(), ElementsAre(error("Failed to read " + mPath)));
}

TEST_F(ProviderMapperTest, WhatFollowsANulByteIsNotPartOfTheDocument) {
    using namespace std::string_literals;
    EXPECT_TRUE(load("<map><instance replace=\"external/0\">legacy/0</instance></map>\0<<<"s));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
}

TEST_F(ProviderMapperTest, MuchThatFollowsANulByteIsNotPartOfTheDocumentEither) {
    std::string text = R"(<map><instance replace="external/0">legacy/0</instance></map>)";
    text.push_back('\0');
    EXPECT_TRUE(load(text + std::string(100000, '<')));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
}

// The file is read in pieces of 4096 bytes.
TEST_F(ProviderMapperTest, ANulByteAtTheEndOfAPieceOrAtTheStartOfTheNextEndsTheDocument) {
    const std::string document = R"(<map><instance replace="external/0">legacy/0</instance></map>)";
    for (const size_t size : {4094, 4095, 4096, 4097, 8191, 8192}) {
        SCOPED_TRACE(size);
        std::string text = document + std::string(size - document.size(), ' ');
        text.push_back('\0');
        EXPECT_TRUE(load(text + std::string(10000, '<')));
        EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
    }
}

TEST_F(ProviderMapperTest, ADocumentCutOffByANulByteIsMalformed) {
    using namespace std::string_literals;
    EXPECT_FALSE(load("<map>\0</map>"s));
    EXPECT_THAT(mLog.lines(), ElementsAre(error("Failed to parse XML")));
}

TEST_F(ProviderMapperTest, MalformedDocumentsAreRefused) {
    recordFault("map file", "the document is malformed",
                "an error line; the load fails, the map stays empty");
    const char* const documents[] = {
            "plain text",
            "x",
            "<",
            "<map>",
            "<map></mapp>",
            "<map/><map/>",
            "   ",
            "<map><instance replace=external/0>legacy/0</instance></map>",
            "<map>&unknown;</map>",
            "<?xml version=\"1.0\"?>",
    };
    for (const char* document : documents) {
        SCOPED_TRACE(document);
        EXPECT_FALSE(load(document));
        EXPECT_THAT(mLog.take(), ElementsAre(error("Failed to parse XML")));
        EXPECT_THAT(mMapper.mProviderMap, IsEmpty());
    }
}

TEST_F(ProviderMapperTest, ADocumentWithoutEntriesIsLoadedSilently) {
    EXPECT_TRUE(load("<map/>"));
    EXPECT_THAT(mMapper.mProviderMap, IsEmpty());
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(ProviderMapperTest, AFileLargerThanOneReadIsReadWhole) {
    std::string text = "<map>" + std::string(100000, ' ');
    text += R"(<instance replace="external/0">legacy/0</instance></map>)";
    EXPECT_TRUE(load(text));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
}

TEST_F(ProviderMapperTest, AnUnknownInstanceHasNoReplacements) {
    EXPECT_TRUE(load(R"(<map><instance replace="external/0">legacy/0</instance></map>)"));
    mLog.take();
    EXPECT_THAT(ask("virtual/0"), IsEmpty());
    EXPECT_THAT(mLog.take(),
                ElementsAre(error("Failed to find replacement provider for 'virtual/0'")));
    EXPECT_THAT(ask("legacy/00"), IsEmpty());
    EXPECT_THAT(ask("Legacy/0"), IsEmpty());
    EXPECT_THAT(ask("legacy"), IsEmpty());
    EXPECT_THAT(mMapper.mProviderMap, SizeIs(1)) << "asking must not add entries";
}

TEST_F(ProviderMapperTest, AKnownInstanceIsAnsweredSilentlyWithACopy) {
    EXPECT_TRUE(load(R"(<map><instance replace="external/0">legacy/0</instance></map>)"));
    mLog.take();
    Names names = ask("legacy/0");
    names.clear();
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(ProviderMapperTest, LoadingAgainStartsFromAnEmptyMap) {
    EXPECT_TRUE(load(R"(<map><instance replace="external/0">legacy/0</instance></map>)"));
    EXPECT_TRUE(load(R"(<map><instance replace="virtual/0">legacy/0</instance></map>)"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("virtual/0"));
}

TEST_F(ProviderMapperTest, AFailedLoadForgetsTheFirstOne) {
    EXPECT_TRUE(load(R"(<map><instance replace="external/0">legacy/0</instance></map>)"));
    EXPECT_FALSE(load("<map>"));
    EXPECT_THAT(mMapper.mProviderMap, IsEmpty());
}

TEST_F(ProviderMapperTest, LoadXmlAloneAddsToTheMap) {
    EXPECT_TRUE(load(R"(<map><instance replace="external/0">legacy/0</instance></map>)"));
    write(R"(<map><instance replace="virtual/0">legacy/0</instance></map>)");
    EXPECT_TRUE(mMapper.loadXml(mPath.c_str()));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0", "virtual/0"));
}

// A mapper for a format of its own.
class OtherFormatMapper : public ProviderMapper {
  public:
    bool loadXml(const char* path) override {
        mProviderMap["read from"].push_back(path);
        return mResult;
    }
    bool mResult = true;
};

TEST_F(ProviderMapperTest, ADerivedMapperCanReplaceTheFileFormat) {
    OtherFormatMapper mapper;
    mapper.mProviderMap["left over"].push_back("x");
    EXPECT_TRUE(mapper.loadMapFromFile("some path"));
    EXPECT_THAT(mapper.mProviderMap, SizeIs(1)) << "the map is emptied before the load";
    EXPECT_THAT(mapper.getReplacementProviderNames("read from"), ElementsAre("some path"));

    mapper.mResult = false;
    EXPECT_FALSE(mapper.loadMapFromFile("some path"));
}

TEST(ProviderMapperTypeTest, CanBeHeldAndDestroyedThroughTheInterface) {
    static_assert(std::has_virtual_destructor_v<IProviderMapper>);
    const std::shared_ptr<IProviderMapper> mapper = std::make_shared<ProviderMapper>();
    CapturedLog log;
    EXPECT_THAT(mapper->getReplacementProviderNames("legacy/0"), IsEmpty());
}

TEST(ProviderMapperTypeTest, ItsVirtualFunctionsAreInTheirOrder) {
    EXPECT_EQ(virtualSlot(&IProviderMapper::loadMapFromFile), 0u);
    EXPECT_EQ(virtualSlot(&IProviderMapper::getReplacementProviderNames), 1u);
    EXPECT_EQ(virtualSlot(&ProviderMapper::loadXml), 4u) << "behind the destructor's two slots";
}

// A document must not make the reader open another file, reach for the network or eat the memory.

TEST_F(ProviderMapperTest, AnExternalEntityIsNotLoaded) {
    write(mDirectory.path() + "/secret", "secret");
    EXPECT_TRUE(load("<!DOCTYPE map [<!ENTITY file SYSTEM \"file://" + mDirectory.path() +
                     "/secret\">]>\n"
                     "<map><instance replace=\"external/0\">legacy/0&file;</instance></map>"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
    EXPECT_THAT(ask("legacy/0secret"), IsEmpty());
}

TEST_F(ProviderMapperTest, AnExternalDtdIsNotLoaded) {
    write(mDirectory.path() + "/map.dtd",
          "<!ATTLIST instance replace CDATA \"from the dtd\">\n<!ENTITY text \"legacy/0\">");
    EXPECT_TRUE(load("<!DOCTYPE map SYSTEM \"file://" + mDirectory.path() + "/map.dtd\">\n" +
                     "<map><instance>legacy/0</instance></map>"));
    EXPECT_THAT(mMapper.mProviderMap, IsEmpty());
}

// A listening socket that tells whether anybody tried to connect.
class Listener {
  public:
    Listener() : mSocket(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(bind(mSocket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(mSocket, 8), 0);
        socklen_t size = sizeof address;
        EXPECT_EQ(getsockname(mSocket, reinterpret_cast<sockaddr*>(&address), &size), 0);
        mPort = ntohs(address.sin_port);
    }
    ~Listener() { close(mSocket); }

    std::string url() const { return "http://127.0.0.1:" + std::to_string(mPort) + "/map"; }

    bool wasReached() const {
        const int connection = accept(mSocket, nullptr, nullptr);
        if (connection >= 0) close(connection);
        return connection >= 0;
    }

  private:
    int mSocket;
    int mPort = 0;
};

TEST_F(ProviderMapperTest, TheNetworkIsNotReached) {
    const Listener listener;
    EXPECT_TRUE(load("<!DOCTYPE map SYSTEM \"" + listener.url() + ".dtd\" [<!ENTITY e SYSTEM \"" +
                     listener.url() +
                     ".txt\">]>\n"
                     "<map><instance replace=\"external/0\">legacy/0&e;</instance></map>"));
    EXPECT_THAT(ask("legacy/0"), ElementsAre("external/0"));
    EXPECT_FALSE(listener.wasReached());
}

// Entities of which each stands for ten of the one before it.
std::string entityBomb() {
    std::string text = "<!DOCTYPE map [<!ENTITY e0 \"0123456789\">";
    for (int i = 1; i <= 12; ++i) {
        text += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) text += "&e" + std::to_string(i - 1) + ";";
        text += "\">";
    }
    return text + "]>\n";
}

TEST_F(ProviderMapperTest, AnEntityBombInTheTextIsRefused) {
    EXPECT_FALSE(
            load(entityBomb() + "<map><instance replace=\"external/0\">&e12;</instance></map>"));
    EXPECT_THAT(mLog.lines(), ElementsAre(error("Failed to parse XML")));
}

TEST_F(ProviderMapperTest, AnEntityBombInTheAttributeIsRefused) {
    EXPECT_FALSE(load(entityBomb() + "<map><instance replace=\"&e12;\">legacy/0</instance></map>"));
    EXPECT_THAT(mLog.lines(), ElementsAre(error("Failed to parse XML")));
}

TEST_F(ProviderMapperTest, AnEntityThatHoldsItselfIsRefused) {
    EXPECT_FALSE(
            load("<!DOCTYPE map [<!ENTITY a \"&b;\"><!ENTITY b \"&a;\">]>\n"
                 "<map><instance replace=\"external/0\">&a;</instance></map>"));
    EXPECT_THAT(mLog.lines(), ElementsAre(error("Failed to parse XML")));
}

TEST_F(ProviderMapperTest, DeepNestingIsRefused) {
    std::string text = "<map>";
    for (int i = 0; i < 100000; ++i) text += "<a>";
    EXPECT_FALSE(load(text));
    EXPECT_THAT(mLog.lines(), ElementsAre(error("Failed to parse XML")));
}

}  // namespace
}  // namespace orvo::test
