// SPDX-License-Identifier: Apache-2.0
// The checker of the documents' links: it finds what leads nowhere, and nothing else.

#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <android-base/file.h>
#include <gtest/gtest.h>

namespace orvo::test {
namespace {

struct Check {
    int status = -1;
    std::string output;
};

// Runs the checker in a directory of its own over a.md, beside which there is b.md.
Check check(const std::string& text) {
    const TemporaryDir directory;
    const std::string path = directory.path;
    std::ofstream(path + "/a.md") << text;
    std::ofstream(path + "/b.md") << "# Here `it` is!\n\n## Twice\n\n## Twice\n";
    const std::string command = "cd " + path + " && python3 " ORVO_CHECK_LINKS " a.md >output 2>&1";
    const int status = system(command.c_str());
    Check check;
    if (WIFEXITED(status)) check.status = WEXITSTATUS(status);
    EXPECT_TRUE(android::base::ReadFileToString(path + "/output", &check.output));
    std::filesystem::remove_all(path);
    return check;
}

void expectNoComplaint(const std::string& text) {
    const Check found = check(text);
    EXPECT_EQ(found.output, "");
    EXPECT_EQ(found.status, 0);
}

void expectComplaint(const std::string& text, const std::string& complaint) {
    const Check found = check(text);
    EXPECT_EQ(found.output, complaint + "\n");
    EXPECT_EQ(found.status, 1);
}

TEST(CheckLinksTest, FilesAndHeadingsThatExistAreFine) {
    expectNoComplaint("# One *thing*\n\n[a](b.md) [b](b.md#here-it-is) [c](#one-thing) [d](.)\n");
    expectNoComplaint("[a](b.md#twice) [b](b.md#twice-1) [a text over\ntwo lines](b.md)\n");
}

TEST(CheckLinksTest, OtherMachinesAreNotAsked) {
    expectNoComplaint("[a](https://nowhere.invalid/x) [b](mailto:a@b.invalid)\n");
}

TEST(CheckLinksTest, CodeHoldsNoLinks) {
    expectNoComplaint("`[a](x.md)`\n\n```\n[a](x.md)\n```\n\n    [a](x.md)\n");
}

TEST(CheckLinksTest, AMissingFileIsNamedWithItsLine) {
    expectComplaint("\n[a](x.md)\n", "a.md:2: the link x.md leads nowhere: there is no x.md");
}

TEST(CheckLinksTest, AMissingHeadingIsNamedWithItsLine) {
    expectComplaint("[a](b.md#where)\n",
                    "a.md:1: the link b.md#where leads nowhere: b.md has no heading for #where");
    expectComplaint("[a](b.md#twice-2)\n",
                    "a.md:1: the link b.md#twice-2 leads nowhere: b.md has no heading for "
                    "#twice-2");
}

TEST(CheckLinksTest, ADefinitionIsALink) {
    expectComplaint("[a]\n\n[a]: x.md\n", "a.md:3: the link x.md leads nowhere: there is no x.md");
}

TEST(CheckLinksTest, ALinkFromTheRootIsNotPortable) {
    expectComplaint("[a](/b.md)\n",
                    "a.md:1: the link /b.md leads nowhere: write it relative to this file");
}

}  // namespace
}  // namespace orvo::test
