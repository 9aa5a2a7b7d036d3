// SPDX-License-Identifier: Apache-2.0
// Tests of ProviderMap: who stands behind an instance, and one clear line for each mistake.

#include "simulator/description/ProviderMap.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/support/FreshDirectory.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ProviderMapTest : public ::testing::Test {
  protected:
    android::base::Result<ProviderMap> read(const std::string& text) {
        mFile = mDirectory.write("map.xml", text);
        return ProviderMap::read(mFile);
    }

    FreshDirectory mDirectory;
    std::string mFile;
};

TEST_F(ProviderMapTest, NamesAreSortedAndEachIsThereOnce) {
    const auto map =
            read("<any><instance replace='virtual/0'>legacy/0</instance><other>legacy/0</other>"
                 "<instance replace='external/0'>legacy/0</instance>"
                 "<instance replace='virtual/0'>legacy/0</instance>"
                 "<instance replace='third/0'> legacy/0 </instance></any>");
    ASSERT_TRUE(map) << map.error().message();
    EXPECT_THAT(map->behind("legacy/0"), ElementsAre("external/0", "virtual/0"));
    EXPECT_THAT(map->behind("default/0"), IsEmpty());
}

TEST_F(ProviderMapTest, TextThatIsNoXmlIsRefusedAtItsLine) {
    const auto map = read("<any>\n<instance replace='a/0'>b/0</instanc>\n</any>");
    ASSERT_FALSE(map.has_value());
    EXPECT_EQ(0u, map.error().message().find(mFile + ":2: is not XML (")) << map.error().message();
}

TEST_F(ProviderMapTest, AnEntryWithoutItsAttributeIsRefusedAtItsLine) {
    const auto map = read("<any>\n\n<instance>b/0</instance></any>");
    ASSERT_FALSE(map.has_value());
    EXPECT_EQ(mFile + ":3: an instance has no 'replace'; name the provider that stands behind it",
              map.error().message());
}

TEST_F(ProviderMapTest, AMissingFileIsNamed) {
    const auto map = ProviderMap::read("/no/such.xml");
    ASSERT_FALSE(map.has_value());
    EXPECT_EQ(
            "/no/such.xml: cannot be read (No such file or directory); add the provider map to"
            " the vendor tree",
            map.error().message());
}

}  // namespace
}  // namespace orvo::simulator::testing
