// SPDX-License-Identifier: Apache-2.0
// A map that changes between the library's reading and the one for the lines.

#include "mapcheck/MapFile.h"

#include <stdio.h>

#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/support/FreshDirectory.h"
#include "tests/support/CapturedLog.h"

namespace {

std::function<void()> gBeforeSecondOpen;
int gOpens = 0;

}  // namespace

// The linker sends the calls of the program's own objects here.
extern "C" {

FILE* __real_fopen(const char* path, const char* mode);

FILE* __wrap_fopen(const char* path, const char* mode) {
    if (++gOpens == 2 && gBeforeSecondOpen) gBeforeSecondOpen();
    return __real_fopen(path, mode);
}

}  // extern "C"

namespace orvo::test {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kBefore[] = "<map><instance replace=\"a/0\">legacy/0</instance></map>";

class MapFileTest : public ::testing::Test {
  protected:
    ~MapFileTest() override { gBeforeSecondOpen = nullptr; }

    // What is found in a map that becomes `after` once it was read for the first time.
    std::vector<mapcheck::Finding> readWhileItBecomes(const std::string& after) {
        const std::string path = mDirectory.write("map.xml", kBefore);
        gOpens = 0;
        gBeforeSecondOpen = [&] { mDirectory.write("map.xml", after); };
        mapcheck::Findings findings(path);
        mUsable = mapcheck::MapFile::read(path, &findings).usable;
        EXPECT_EQ(gOpens, 2);
        return findings.byLine();
    }

    CapturedLog mLog;
    simulator::testing::FreshDirectory mDirectory;
    bool mUsable = false;
};

TEST_F(MapFileTest, AMapThatStaysIsUsable) {
    EXPECT_THAT(readWhileItBecomes(kBefore), IsEmpty());
    EXPECT_TRUE(mUsable);
}

TEST_F(MapFileTest, AMapThatChangesIsNot) {
    for (const char* after :
         {"", "<map/>", "<map><instance replace=\"b/0\">legacy/0</instance></map>",
          "<map><instance replace=\"a/0\">legacy/1</instance></map>"}) {
        const auto findings = readWhileItBecomes(after);
        ASSERT_THAT(findings, SizeIs(1)) << after;
        EXPECT_EQ(findings[0].code, "changed");
        EXPECT_EQ(findings[0].line, mapcheck::kWholeFile);
        EXPECT_EQ(findings[0].message,
                  "is not what the library read a moment later; check it again when nobody writes "
                  "it");
        EXPECT_FALSE(mUsable);
    }
}

}  // namespace
}  // namespace orvo::test
