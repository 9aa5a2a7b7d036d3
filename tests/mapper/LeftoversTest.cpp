// SPDX-License-Identifier: Apache-2.0
// The map reader leaves nothing of a load behind: no open file, and no memory of the parser's.

#include <dirent.h>
#include <stdlib.h>
#include <string.h>

#include <fstream>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlmemory.h>

#include "mapper/ProviderMapper.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvo::test {
namespace {

using camera::ProviderMapper;

constexpr int kLoads = 100;

// The parser's pieces of memory that are in use.
int gPieces;

void* counted(void* piece) {
    if (piece != nullptr) ++gPieces;
    return piece;
}

void* countedMalloc(size_t size) {
    return counted(malloc(size));
}

void* countedRealloc(void* piece, size_t size) {
    return piece == nullptr ? countedMalloc(size) : realloc(piece, size);
}

char* countedStrdup(const char* text) {
    return static_cast<char*>(counted(strdup(text)));
}

void countedFree(void* piece) {
    if (piece != nullptr) --gPieces;
    free(piece);
}

int openFiles() {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir("/proc/self/fd"), closedir);
    int count = 0;
    while (directory != nullptr && readdir(directory.get()) != nullptr) ++count;
    EXPECT_GT(count, 0);
    return count;
}

void dropParserError(void* /* context */, const char* /* format */, ...) {}

class LeftoversTest : public ::testing::Test {
  protected:
    LeftoversTest() {
        xmlInitParser();
        xmlSetGenericErrorFunc(nullptr, dropParserError);
        EXPECT_EQ(xmlMemSetup(countedFree, countedMalloc, countedRealloc, countedStrdup), 0);
    }

    ~LeftoversTest() override {
        // What it keeps of an error has to go by the function that counts.
        xmlResetLastError();
        xmlMemSetup(free, malloc, realloc, strdup);
        xmlSetGenericErrorFunc(nullptr, nullptr);
    }

    // Loads a file of that text again and again. The first time may set something up for good.
    void expectNothingLeft(const std::string& text, bool loads) {
        std::ofstream(mPath, std::ios::binary) << text;
        EXPECT_EQ(mMapper.loadMapFromFile(mPath.c_str()), loads);
        const int files = openFiles();
        const int pieces = gPieces;
        for (int i = 0; i < kLoads; ++i) {
            ASSERT_EQ(mMapper.loadMapFromFile(mPath.c_str()), loads);
        }
        EXPECT_EQ(openFiles(), files);
        EXPECT_EQ(gPieces, pieces);
    }

    const TemporaryDirectory mDirectory;
    const std::string mPath = mDirectory.path() + "/map.xml";
    const CapturedLog mLog;
    ProviderMapper mMapper;
};

TEST_F(LeftoversTest, AreNoneOfALoad) {
    expectNothingLeft(R"(<map>
        <instance replace="external/0">legacy/0</instance>
        <instance replace="virtual/0">legacy/0</instance>
    </map>)",
                      true);
}

TEST_F(LeftoversTest, AreNoneOfAnEntryThatIsSkipped) {
    expectNothingLeft("<map><instance>legacy/0</instance></map>", true);
}

TEST_F(LeftoversTest, AreNoneOfAMalformedDocument) {
    expectNothingLeft("<map><instance replace=\"external/0\">legacy/0</instance>", false);
}

TEST_F(LeftoversTest, AreNoneOfAnEmptyFile) {
    expectNothingLeft("", false);
}

}  // namespace
}  // namespace orvo::test
