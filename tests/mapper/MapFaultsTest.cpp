// SPDX-License-Identifier: Apache-2.0
// The map reader when the file is huge, cannot be read to its end, or the memory runs out.

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <new>

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlmemory.h>

#include "mapper/ProviderMapper.h"
#include "tests/support/Allocations.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/Fault.h"

namespace orvo::test {
namespace {

using camera::ProviderMapper;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kStreamPath[] = "/a stream of the test's own";
constexpr char kMap[] = R"(<map>
    <instance replace="external/0">legacy/0</instance>
    <instance replace="virtual/0">legacy/0</instance>
</map>)";

// Fills the buffer of a read of the stream at kStreamPath; answers like read().
std::function<ssize_t(char* buffer, size_t size)> gRead;
size_t gPosition = 0;  // In that stream.

ssize_t readStream(void* /* cookie */, char* buffer, size_t size) {
    const ssize_t count = gRead(buffer, size);
    if (count > 0) gPosition += count;
    return count;
}

int rewindStream(void* /* cookie */, off64_t* /* offset */, int /* whence */) {
    gPosition = 0;
    return 0;
}

LogLine error(const std::string& text) {
    return {ANDROID_LOG_ERROR, "ProviderMapper", text};
}

class MapFaultsTest : public ::testing::Test {
  protected:
    MapFaultsTest() {
        std::string directory = ::testing::TempDir() + "mapper.XXXXXX";
        mDirectory = mkdtemp(directory.data());
        mPath = mDirectory + "/map.xml";
        std::ofstream(mPath) << kMap;
        xmlInitParser();
    }

    ~MapFaultsTest() override {
        gRead = nullptr;
        std::filesystem::remove_all(mDirectory);
    }

    // What was read of the map above.
    std::vector<std::string> replacements() {
        return mMapper.getReplacementProviderNames("legacy/0");
    }

    std::string mDirectory;
    std::string mPath;
    ProviderMapper mMapper;
};

TEST_F(MapFaultsTest, AHugeFileWhoseDocumentEndsEarlyCostsNoMemory) {
    recordFault("map file", "the file has 3 GiB, with a NUL byte behind the document",
                "the document is read, and nothing behind it");
    std::filesystem::resize_file(mPath, 3ull << 30);  // A hole, which reads as NUL bytes.
    const CapturedLog log;
    const Allocations allocations;
    EXPECT_TRUE(mMapper.loadMapFromFile(mPath.c_str()));
    EXPECT_LT(allocations.largest(), 1u << 20);
    EXPECT_THAT(replacements(), ElementsAre("external/0", "virtual/0"));
}

TEST_F(MapFaultsTest, ADocumentTooLargeForTheParserIsUnparsableAndCostsNoMemory) {
    recordFault("map file", "the document has more than 2 GiB",
                "an error line; the load fails, without reading it into memory");
    gRead = [](char* buffer, size_t size) {
        memset(buffer, ' ', size);
        return static_cast<ssize_t>(size);
    };
    CapturedLog log;
    const Allocations allocations;
    EXPECT_FALSE(mMapper.loadMapFromFile(kStreamPath));
    EXPECT_LT(allocations.largest(), 1u << 20);
    EXPECT_THAT(log.lines(), ElementsAre(error("Failed to parse XML")));
}

TEST_F(MapFaultsTest, AFileThatCannotBeReadAtAllCountsAsEmpty) {
    recordFault("map file", "the first read fails", "an error line; the load fails");
    gRead = [](char*, size_t) {
        errno = EIO;
        return static_cast<ssize_t>(-1);
    };
    CapturedLog log;
    EXPECT_FALSE(mMapper.loadMapFromFile(kStreamPath));
    EXPECT_THAT(log.lines(), ElementsAre(error("Failed to read " + std::string(kStreamPath))));
}

TEST_F(MapFaultsTest, AFileThatCannotBeReadToItsEndIsCutOffThere) {
    recordFault("map file", "a later read fails",
                "what was read counts: it does not parse, the load fails");
    constexpr size_t kReadable = 40;
    gRead = [](char* buffer, size_t) {
        if (gPosition == 0) {
            memcpy(buffer, kMap, kReadable);
            return static_cast<ssize_t>(kReadable);
        }
        errno = EIO;
        return static_cast<ssize_t>(-1);
    };
    CapturedLog log;
    EXPECT_FALSE(mMapper.loadMapFromFile(kStreamPath));
    EXPECT_THAT(log.lines(), ElementsAre(error("Failed to parse XML")));
    EXPECT_THAT(replacements(), IsEmpty());
}

class ExhaustedMemoryTest : public MapFaultsTest {
  protected:
    // Lines are dropped, because keeping them takes memory.
    ExhaustedMemoryTest() {
        __android_log_set_logger([](const __android_logger_data*, const char*) {});
    }
    ~ExhaustedMemoryTest() override { __android_log_set_logger(__android_log_stderr_logger); }
};

TEST_F(ExhaustedMemoryTest, OfTheProcessLeavesAsTheStandardLibrarysErrorAtEveryPoint) {
    recordFault("memory", "none is left for the map, at any point of the load",
                "the standard library's error leaves the load; a later load succeeds");
    if (!Allocations::kWatched) GTEST_SKIP() << "operator new belongs to the sanitizer";
    size_t allowed = 0;
    for (bool exhausted = true; exhausted; ++allowed) {
        bool thrown = false;
        {
            const Allocations allocations(allowed);
            try {
                EXPECT_TRUE(mMapper.loadMapFromFile(mPath.c_str()));
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            exhausted = allocations.exhausted();
        }
        EXPECT_EQ(thrown, exhausted) << "after " << allowed << " allocations";
        ASSERT_TRUE(mMapper.loadMapFromFile(mPath.c_str())) << "the next load is not disturbed";
        EXPECT_THAT(replacements(), ElementsAre("external/0", "virtual/0"));
    }
    EXPECT_GT(allowed, 5u) << "there were points to fail at";
}

size_t gSkipped;  // Entries that the reader said it left out.

void countSkipped(const __android_logger_data*, const char* message) {
    if (strncmp(message, "Skipping ", 9) == 0) ++gSkipped;
}

void dropParserError(void* /* context */, const char* /* format */, ...) {}

// The parser's memory: the first gParserAllowance allocations succeed.
size_t gParserAllowance;

bool parserMayAllocate() {
    if (gParserAllowance == 0) return false;
    --gParserAllowance;
    return true;
}

void* parserMalloc(size_t size) {
    return parserMayAllocate() ? malloc(size) : nullptr;
}

void* parserRealloc(void* memory, size_t size) {
    return parserMayAllocate() ? realloc(memory, size) : nullptr;
}

char* parserStrdup(const char* text) {
    return parserMayAllocate() ? strdup(text) : nullptr;
}

TEST_F(ExhaustedMemoryTest, OfTheParserNeverMakesAnEntryUp) {
    recordFault("memory", "none is left for the parser, at any point of the load",
                "the load fails, or entries are missing; none is made up");
    ASSERT_EQ(xmlMemSetup(free, parserMalloc, parserRealloc, parserStrdup), 0);
    xmlSetGenericErrorFunc(nullptr, dropParserError);
    __android_log_set_logger(countSkipped);
    size_t refusals = 0;
    bool complete = false;
    for (size_t allowed = 0; !complete; ++allowed) {
        SCOPED_TRACE(allowed);
        gParserAllowance = allowed;
        gSkipped = 0;
        const bool loaded = mMapper.loadMapFromFile(mPath.c_str());
        complete = gParserAllowance > 0;
        if (!loaded) {
            ++refusals;
            EXPECT_THAT(mMapper.mProviderMap, IsEmpty());
            continue;
        }
        size_t entries = 0;
        for (const auto& [instance, names] : mMapper.mProviderMap) {
            EXPECT_EQ(instance, "legacy/0");
            entries += names.size();
            for (const std::string& name : names) {
                EXPECT_TRUE(name == "external/0" || name == "virtual/0") << name;
            }
        }
        EXPECT_LE(entries + gSkipped, 2u) << "the parser may lose one without a word";
        if (complete) {
            EXPECT_EQ(entries, 2u);
        }
        ASSERT_LT(allowed, 10000u);
    }
    EXPECT_GT(refusals, 5u) << "there were points to fail at";
    xmlMemSetup(free, malloc, realloc, strdup);
    xmlSetGenericErrorFunc(nullptr, nullptr);
    xmlResetLastError();
}

}  // namespace
}  // namespace orvo::test

// The linker sends the calls of the program's own objects here.
extern "C" FILE* __real_fopen(const char* path, const char* mode);
extern "C" FILE* __wrap_fopen(const char* path, const char* mode) {
    if (strcmp(path, orvo::test::kStreamPath) != 0) return __real_fopen(path, mode);
    cookie_io_functions_t functions = {};
    functions.read = orvo::test::readStream;
    functions.seek = orvo::test::rewindStream;
    orvo::test::gPosition = 0;
    return fopencookie(nullptr, mode, functions);
}
