// SPDX-License-Identifier: Apache-2.0
// The checker's own reading of a map, held against that of the library's reader.

#include "mapcheck/MapFile.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mapper/ProviderMapper.h"
#include "tests/support/CapturedLog.h"

namespace orvo::test {
namespace {

TEST(MapFileTest, TheEntriesAreThoseOfTheLibrarysReader) {
    const CapturedLog log;
    size_t usable = 0;
    size_t refused = 0;
    for (const auto& file : std::filesystem::directory_iterator(ORVO_MAP_FILES)) {
        const std::string path = file.path();
        mapcheck::Findings findings(path);
        const mapcheck::MapFile map = mapcheck::MapFile::read(path, &findings);
        std::map<std::string, std::vector<std::string>> entries;
        for (const auto& entry : map.entries) entries[entry.key].push_back(entry.value);

        camera::ProviderMapper mapper;
        EXPECT_EQ(map.usable, mapper.loadMapFromFile(path.c_str())) << path;
        EXPECT_EQ(entries, mapper.mProviderMap) << path;
        ++(map.usable ? usable : refused);
    }
    EXPECT_GT(usable, 5u);
    EXPECT_GT(refused, 5u);
}

}  // namespace
}  // namespace orvo::test
