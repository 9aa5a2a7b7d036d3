// SPDX-License-Identifier: Apache-2.0
// The map reader when the file is huge, cannot be read to its end, or the memory runs out.

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <limits>
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
#include "tests/support/OlderGoogleTest.h"
#include "tests/support/TemporaryDirectory.h"

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

void rewindStream() {
    gPosition = 0;
}

// A stream over these two, by whatever the C library has for that.
FILE* openStream() {
    rewindStream();
#ifdef __BIONIC__
    return funopen(
            nullptr,
            [](void* cookie, char* buffer, int size) {
                return static_cast<int>(readStream(cookie, buffer, size));
            },
            nullptr,
            [](void*, fpos_t, int) {
                rewindStream();
                return fpos_t{0};
            },
            nullptr);
#else
    cookie_io_functions_t functions = {};
    functions.read = readStream;
    functions.seek = [](void*, off64_t*, int) {
        rewindStream();
        return 0;
    };
    return fopencookie(nullptr, "r", functions);
#endif
}

LogLine error(const std::string& text) {
    return {ANDROID_LOG_ERROR, "ProviderMapper", text};
}

class MapFaultsTest : public ::testing::Test {
  protected:
    MapFaultsTest() {
        std::ofstream(mPath) << kMap;
        xmlInitParser();
    }

    ~MapFaultsTest() override { gRead = nullptr; }

    // What was read of the map above.
    std::vector<std::string> replacements() {
        return mMapper.getReplacementProviderNames("legacy/0");
    }

    const TemporaryDirectory mDirectory;
    const std::string mPath = mDirectory.path() + "/map.xml";
    ProviderMapper mMapper;
};

TEST_F(MapFaultsTest, AHugeFileWhoseDocumentEndsEarlyCostsNoMemory) {
    recordFault("map file", "the file has 3 GiB, with a NUL byte behind the document",
                "the document is read, and nothing behind it");
    // A hole, which reads as NUL bytes.
    ASSERT_EQ(truncate64(mPath.c_str(), off64_t{3} << 30), 0);
    const CapturedLog log;
    const Allocations allocations;
    EXPECT_TRUE(mMapper.loadMapFromFile(mPath.c_str()));
    EXPECT_LT(allocations.largest(), 1u << 20);
    EXPECT_THAT(replacements(), ElementsAre("external/0", "virtual/0"));
}

TEST_F(MapFaultsTest, MuchTextBehindTheDocumentCostsNoMemory) {
    recordFault("map file", "64 MiB of text follow a NUL byte behind the document",
                "the document is read, and nothing behind it");
    constexpr size_t kSize = 64u << 20;
    // The file is read in pieces of 4096 bytes: the NUL byte is inside one, its last or its first.
    for (const size_t nul : {sizeof kMap - 1, size_t{4095}, size_t{4096}}) {
        SCOPED_TRACE(nul);
        std::string document = kMap;
        document.resize(nul, ' ');
        document.push_back('\0');
        gRead = [&document](char* buffer, size_t space) {
            const size_t count = std::min(space, kSize - gPosition);
            memset(buffer, '<', count);
            if (gPosition < document.size()) document.copy(buffer, count, gPosition);
            return static_cast<ssize_t>(count);
        };
        const CapturedLog log;
        const Allocations allocations;
        EXPECT_TRUE(mMapper.loadMapFromFile(kStreamPath));
        EXPECT_LT(allocations.largest(), 1u << 20);
        EXPECT_THAT(replacements(), ElementsAre("external/0", "virtual/0"));
    }
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

TEST_F(MapFaultsTest, AFileThatGetsShorterIsReadAsFarAsItGoes) {
    recordFault("map file", "the file gets shorter while it is read",
                "what is left counts: the document is read if it is whole");
    const std::string whole = kMap + std::string(1000, ' ');
    size_t size = whole.size();
    gRead = [&](char* buffer, size_t space) {
        const size_t count = std::min(space, size - gPosition);
        memcpy(buffer, &whole[gPosition], count);
        // The first read finds out how much there is; the one that follows finds the map alone.
        if (count == 0) size = sizeof kMap - 1;
        return static_cast<ssize_t>(count);
    };
    const CapturedLog log;
    EXPECT_TRUE(mMapper.loadMapFromFile(kStreamPath));
    EXPECT_THAT(replacements(), ElementsAre("external/0", "virtual/0"));
}

size_t gSkipped;  // Entries that the reader said it left out.

void countSkipped(const char* text) {
    if (strncmp(text, "Skipping ", 9) == 0) ++gSkipped;
}

class ExhaustedMemoryTest : public MapFaultsTest {
  protected:
    const UnkeptLog mLog{countSkipped};
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
    EXPECT_GT(allowed, 3u) << "there were points to fail at";
}

// The parser takes as much; one byte more is refused before memory is asked for.
TEST_F(ExhaustedMemoryTest, IsFoundOutOnlyForADocumentThatTheParserCouldTake) {
    if (!Allocations::kWatched) GTEST_SKIP() << "operator new belongs to the sanitizer";
    for (const bool takeable : {true, false}) {
        SCOPED_TRACE(takeable);
        const size_t document = std::numeric_limits<int>::max() + (takeable ? 0u : 1u);
        gRead = [document](char* buffer, size_t size) {
            const size_t count = std::min(size, document - gPosition);
            memset(buffer, ' ', count);
            return static_cast<ssize_t>(count);
        };
        bool thrown = false;
        const Allocations none(0);
        try {
            EXPECT_FALSE(mMapper.loadMapFromFile(kStreamPath));
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
        EXPECT_EQ(thrown, takeable);
    }
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
    return orvo::test::openStream();
}
