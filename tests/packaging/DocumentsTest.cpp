// SPDX-License-Identifier: Apache-2.0
// The documents say what the sources do: every line that is logged, every command that is named.

#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/packaging/SourceTexts.h"

namespace orvo::test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char kDeviceDocument[] = "docs/device.md";

// The lines of the tables of a document.
std::set<LoggedText> tableLines(const std::string& text) {
    static const std::regex kRow(R"re((?:^|\n)\| ([EWI]) \| `([^`]+)` \|)re");
    std::set<LoggedText> lines;
    for (std::sregex_iterator it(text.begin(), text.end(), kRow), end; it != end; ++it) {
        EXPECT_TRUE(lines.emplace((*it)[1].str()[0], (*it)[2]).second) << (*it)[2];
    }
    return lines;
}

std::string section(const std::string& text, const std::string& title) {
    const size_t start = text.find("\n## " + title + "\n");
    EXPECT_NE(start, std::string::npos) << title;
    return start == std::string::npos ? ""
                                      : text.substr(start, text.find("\n## ", start + 1) - start);
}

std::set<LoggedText> without(std::set<LoggedText> all, const std::set<LoggedText>& some) {
    for (const LoggedText& one : some) all.erase(one);
    return all;
}

TEST(DeviceDocumentTest, ExplainsEveryLineThatIsLoggedAndNoOther) {
    EXPECT_THAT(loggedTexts(), Contains(LoggedText('E', "Failed to get service %s")));
    const std::set<LoggedText> explained = tableLines(sourceText(kDeviceDocument));
    EXPECT_THAT(without(loggedTexts(), explained), IsEmpty())
            << "give each of these a row in " << kDeviceDocument;
    EXPECT_THAT(without(explained, loggedTexts()), IsEmpty())
            << "nothing logs these; remove their rows from " << kDeviceDocument;
}

TEST(DeviceDocumentTest, EveryFileThatGoesSomewhereIsThere) {
    static const std::regex kRow(R"re(\n\| `([^`]+)` \|)re");
    const std::string text = section(sourceText(kDeviceDocument), "What goes where");
    size_t files = 0;
    for (std::sregex_iterator it(text.begin(), text.end(), kRow), end; it != end; ++it, ++files) {
        EXPECT_TRUE(std::filesystem::exists(ORVO_SOURCE_DIR "/" + (*it)[1].str())) << (*it)[1];
    }
    EXPECT_GE(files, 8u);
}

class MakeTest : public ::testing::TestWithParam<std::string> {};

TEST_P(MakeTest, HasEveryTargetThatTheDocumentNames) {
    static const std::regex kCommand(R"re((?:`|\n    )(?:[A-Z_]+=\S+ )*make ([a-z0-9]+))re");
    const std::string makefile = sourceText("Makefile");
    const std::string text = sourceText(GetParam());
    for (std::sregex_iterator it(text.begin(), text.end(), kCommand), end; it != end; ++it) {
        EXPECT_THAT(makefile, HasSubstr("\n" + (*it)[1].str() + ": ")) << "make " << (*it)[1];
    }
}

std::vector<std::string> allDocuments() {
    const std::filesystem::path root = ORVO_SOURCE_DIR;
    std::vector<std::string> documents = {"README.md", "CONTRIBUTING.md", "fuzz/README.md"};
    for (const auto& entry : std::filesystem::directory_iterator(root / "docs")) {
        if (entry.path().extension() == ".md") {
            documents.push_back(entry.path().lexically_relative(root));
        }
    }
    return documents;
}

std::string testName(const ::testing::TestParamInfo<std::string>& info) {
    return std::regex_replace(info.param, std::regex("[^A-Za-z]"), "");
}

INSTANTIATE_TEST_SUITE_P(Documents, MakeTest, ::testing::ValuesIn(allDocuments()), testName);

TEST(ChangelogTest, TellsOfTheVersionThatIsBuilt) {
    EXPECT_THAT(sourceText("CHANGELOG.md"), HasSubstr("\n## [" ORVO_VERSION "]"));
}

}  // namespace
}  // namespace orvo::test
