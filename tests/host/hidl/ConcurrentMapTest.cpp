// SPDX-License-Identifier: Apache-2.0
// ConcurrentMap: its operations, alone and from several threads.

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <hidl/ConcurrentMap.h>

namespace {

using Map = android::hardware::ConcurrentMap<std::string, int>;

TEST(ConcurrentMapTest, ValuesAreSetReplacedAndErased) {
    Map map;
    EXPECT_EQ(-1, map.get("a", -1));
    map.set("a", 1);
    map.set("a", 2);
    EXPECT_EQ(2, map.get("a", -1));
    EXPECT_EQ(1u, map.erase("a"));
    EXPECT_EQ(0u, map.erase("a"));
    EXPECT_EQ(-1, map.get("a", -1));
}

TEST(ConcurrentMapTest, EraseIfEqualSparesOtherValues) {
    Map map;
    map.set("a", 1);
    EXPECT_EQ(0u, map.eraseIfEqual("a", 2));
    EXPECT_EQ(0u, map.eraseIfEqual("b", 1));
    EXPECT_EQ(1, map.get("a", -1));
    EXPECT_EQ(1u, map.eraseIfEqual("a", 1));
}

TEST(ConcurrentMapTest, TheHolderOfTheLockSeesAndChangesEverything) {
    Map map;
    map.set("b", 2);
    const std::unique_lock<std::mutex> lock = map.lock();
    EXPECT_EQ(2, map.getLocked("b", -1));
    map.setLocked("a", 1);
    std::string keys;
    for (const auto& [key, value] : map) keys += key;
    EXPECT_EQ("ab", keys);
    EXPECT_EQ(1u, map.eraseLocked("a"));
}

TEST(ConcurrentMapTest, ThreadsMayWriteAtOnce) {
    Map map;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++) {
        threads.emplace_back([&map, t] {
            for (int i = 0; i < 100; i++) {
                map.set(std::to_string(t) + "/" + std::to_string(i), int{i});
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(400, std::distance(map.begin(), map.end()));
}

}  // namespace
