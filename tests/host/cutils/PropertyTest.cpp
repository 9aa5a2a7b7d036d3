// SPDX-License-Identifier: Apache-2.0
// The functions of <cutils/properties.h> in one process.

#include <cutils/properties.h>

#include <limits.h>
#include <stdint.h>
#include <string.h>

#include <atomic>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/device/TemporaryDevice.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

/** What property_get yields, after proof that it touched nothing outside the 92 bytes. */
std::string get(const char* name, const char* defaultValue = nullptr) {
    char buffer[PROPERTY_VALUE_MAX + 8];
    memset(buffer, '#', sizeof(buffer));
    const int length = property_get(name, buffer, defaultValue);
    EXPECT_EQ("########", std::string(buffer + PROPERTY_VALUE_MAX, 8));
    EXPECT_EQ(strlen(buffer), static_cast<size_t>(length));
    return buffer;
}

std::map<std::string, std::string> list() {
    std::map<std::string, std::string> properties;
    const auto add = [](const char* name, const char* value, void* cookie) {
        auto* into = static_cast<std::map<std::string, std::string>*>(cookie);
        EXPECT_TRUE(into->emplace(name, value).second) << name << " was listed twice";
    };
    EXPECT_EQ(0, property_list(add, &properties));
    return properties;
}

class PropertyTest : public ::testing::Test {
  protected:
    const orvo::testing::TemporaryDevice mDevice;
};

TEST(PropertyLimitsTest, NamesHave31CharactersAndValues91) {
    EXPECT_EQ(32, PROPERTY_KEY_MAX);
    EXPECT_EQ(92, PROPERTY_VALUE_MAX);
}

TEST_F(PropertyTest, AValueThatWasSetIsRead) {
    EXPECT_EQ(0, property_set("camera.legacy.ids", "0,1"));
    EXPECT_EQ("0,1", get("camera.legacy.ids", "unused"));
    EXPECT_EQ(0, property_set("camera.legacy.ids", "2"));
    EXPECT_EQ("2", get("camera.legacy.ids"));
}

TEST_F(PropertyTest, AMissingPropertyYieldsTheDefault) {
    EXPECT_EQ("the default", get("a.b", "the default"));
    EXPECT_EQ("", get("a.b", nullptr));
    EXPECT_EQ("null name", get(nullptr, "null name"));
}

TEST_F(PropertyTest, AnEmptyPropertyYieldsTheDefaultButExists) {
    EXPECT_EQ(0, property_set("a.b", "x"));
    EXPECT_EQ(0, property_set("a.b", ""));
    EXPECT_EQ("the default", get("a.b", "the default"));
    EXPECT_EQ("", get("a.b", nullptr));
    EXPECT_THAT(list(), ElementsAre(Pair("a.b", "")));
}

TEST_F(PropertyTest, ANullValueMeansEmpty) {
    EXPECT_EQ(0, property_set("a.b", "x"));
    EXPECT_EQ(0, property_set("a.b", nullptr));
    EXPECT_EQ("", get("a.b"));
    EXPECT_THAT(list(), ElementsAre(Pair("a.b", "")));
}

TEST_F(PropertyTest, ADefaultIsCutAfter91Bytes) {
    EXPECT_EQ(std::string(91, 'd'), get("a.b", std::string(200, 'd').c_str()));
    EXPECT_EQ(std::string(91, 'd'), get("a.b", std::string(91, 'd').c_str()));
}

TEST_F(PropertyTest, AValueOf91BytesFitsAndOneOf92IsRefused) {
    EXPECT_EQ(0, property_set("a.b", std::string(91, 'v').c_str()));
    EXPECT_EQ(std::string(91, 'v'), get("a.b"));
    EXPECT_EQ(-1, property_set("a.b", std::string(92, 'w').c_str()));
    EXPECT_EQ(std::string(91, 'v'), get("a.b"));
}

TEST_F(PropertyTest, BytesCountNotCharacters) {
    std::string text;
    while (text.size() < 92) text += "\xC3\xA4";
    EXPECT_EQ(-1, property_set("a.b", text.c_str()));
    EXPECT_EQ(0, property_set("a.b", text.substr(2).c_str()));
}

TEST_F(PropertyTest, IllegalNamesAreRefused) {
    for (const char* name : {"", ".a", "a.", "a..b", "a b", "a/b", "a=b", "\xC3\xA4"}) {
        EXPECT_EQ(-1, property_set(name, "x")) << name;
    }
    EXPECT_EQ(-1, property_set(nullptr, "x"));
    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(PropertyTest, NamesLongerThan31CharactersAreAccepted) {
    const std::string name(100, 'n');
    EXPECT_EQ(0, property_set(name.c_str(), "x"));
    EXPECT_EQ("x", get(name.c_str()));
}

TEST_F(PropertyTest, NamesLongerThanTheStoreCanKeepAreRefused) {
    const std::string name(512, 'n');
    EXPECT_EQ(-1, property_set(name.c_str(), "x"));
    EXPECT_EQ("the default", get(name.c_str(), "the default"));
    EXPECT_EQ(0, property_set(name.substr(1).c_str(), "x"));
}

TEST_F(PropertyTest, AValueThatIsNotUtf8IsRefusedAndTheOldOneStays) {
    EXPECT_EQ(0, property_set("a.b", "K\xC3\xA4mera"));
    EXPECT_EQ(-1, property_set("a.b", "K\xC3mera"));
    EXPECT_EQ("K\xC3\xA4mera", get("a.b"));
}

TEST_F(PropertyTest, AReadOnlyPropertyIsSetOnce) {
    EXPECT_EQ(0, property_set("ro.board", "one"));
    EXPECT_EQ(-1, property_set("ro.board", "two"));
    EXPECT_EQ(-1, property_set("ro.board", "one"));
    EXPECT_EQ("one", get("ro.board"));
}

TEST_F(PropertyTest, AnEmptyReadOnlyPropertyIsSetForGood) {
    EXPECT_EQ(0, property_set("ro.board", ""));
    EXPECT_EQ(-1, property_set("ro.board", "one"));
    EXPECT_EQ("", get("ro.board"));
}

TEST_F(PropertyTest, OnlyThePrefixWithItsDotMakesReadOnly) {
    EXPECT_EQ(0, property_set("rot", "one"));
    EXPECT_EQ(0, property_set("rot", "two"));
    EXPECT_EQ(0, property_set("persist.ro.x", "one"));
    EXPECT_EQ(0, property_set("persist.ro.x", "two"));
    EXPECT_EQ("two", get("persist.ro.x"));
}

TEST_F(PropertyTest, ALongReadOnlyValueIsListedWholeAndReadAsAFixedText) {
    const std::string value(4000, 'v');
    EXPECT_EQ(0, property_set("ro.long", value.c_str()));
    EXPECT_EQ("(too long for property_get, property_list has all)", get("ro.long", "unused"));
    EXPECT_EQ(50u, get("ro.long").size());
    EXPECT_THAT(list(), ElementsAre(Pair("ro.long", value)));
}

TEST_F(PropertyTest, AReadOnlyValueOf91BytesIsReadAsItIs) {
    EXPECT_EQ(0, property_set("ro.fits", std::string(91, 'v').c_str()));
    EXPECT_EQ(0, property_set("ro.long", std::string(92, 'v').c_str()));
    EXPECT_EQ(std::string(91, 'v'), get("ro.fits"));
    EXPECT_EQ(50u, get("ro.long").size());
}

TEST_F(PropertyTest, ALongReadOnlyValueMustBeUtf8Too) {
    EXPECT_EQ(-1, property_set("ro.long", (std::string(200, 'v') + "\xFF").c_str()));
    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(PropertyTest, ACommandIsAcceptedAndNotStored) {
    EXPECT_EQ(0, property_set("ctl.start", "camera"));
    EXPECT_EQ("", get("ctl.start"));
    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(PropertyTest, ACommandKeepsTheRulesForValues) {
    EXPECT_EQ(-1, property_set("ctl.start", std::string(92, 'v').c_str()));
    EXPECT_EQ(-1, property_set("ctl.start", "\xFF"));
}

TEST_F(PropertyTest, EveryPropertyIsListedOnce) {
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_EQ(0, property_set("b", "2"));
    EXPECT_EQ(0, property_set("a", "1"));
    EXPECT_EQ(0, property_set("c", ""));
    EXPECT_EQ(0, property_set("a", "3"));
    EXPECT_THAT(list(), ElementsAre(Pair("a", "3"), Pair("b", "2"), Pair("c", "")));
}

TEST_F(PropertyTest, TheListedFunctionMaySetProperties) {
    EXPECT_EQ(0, property_set("a", "1"));
    EXPECT_EQ(0, property_set("b", "2"));
    const auto copy = [](const char* name, const char* value, void*) {
        EXPECT_EQ(0, property_set((std::string("copy.") + name).c_str(), value));
    };
    EXPECT_EQ(0, property_list(copy, nullptr));
    EXPECT_EQ("1", get("copy.a"));
    EXPECT_EQ("2", get("copy.b"));
}

TEST_F(PropertyTest, BooleansHaveFiveSpellingsEach) {
    for (const char* text : {"1", "y", "yes", "on", "true"}) {
        ASSERT_EQ(0, property_set("flag", text));
        EXPECT_EQ(1, property_get_bool("flag", 0)) << text;
    }
    for (const char* text : {"0", "n", "no", "off", "false"}) {
        ASSERT_EQ(0, property_set("flag", text));
        EXPECT_EQ(0, property_get_bool("flag", 1)) << text;
    }
}

TEST_F(PropertyTest, AnythingElseIsNoBoolean) {
    for (const char* text : {"", "2", "Y", "True", "TRUE", " on", "on ", "enabled", "00"}) {
        ASSERT_EQ(0, property_set("flag", text));
        EXPECT_EQ(1, property_get_bool("flag", 1)) << text;
        EXPECT_EQ(0, property_get_bool("flag", 0)) << text;
    }
    EXPECT_EQ(7, property_get_bool("missing", 7));
    EXPECT_EQ(7, property_get_bool(nullptr, 7));
}

TEST_F(PropertyTest, IntegersAreReadInTheBaseTheyShow) {
    const std::map<std::string, int64_t> values = {
            {"42", 42}, {"-42", -42}, {"+42", 42}, {"0x1F", 31},  {"-0x10", -16}, {"010", 8},
            {"0", 0},   {" 12", 12},  {"12 ", 12}, {"12abc", 12}, {"0x1Fz", 31},  {"089", 0},
    };
    for (const auto& [text, number] : values) {
        ASSERT_EQ(0, property_set("number", text.c_str()));
        EXPECT_EQ(number, property_get_int32("number", 99)) << text;
        EXPECT_EQ(number, property_get_int64("number", 99)) << text;
    }
}

TEST_F(PropertyTest, WhatHasNoLeadingDigitsIsNoInteger) {
    for (const char* text : {"", "abc", "-", "+", " ", "x1"}) {
        ASSERT_EQ(0, property_set("number", text));
        EXPECT_EQ(99, property_get_int32("number", 99)) << text;
        EXPECT_EQ(-99, property_get_int64("number", -99)) << text;
    }
    EXPECT_EQ(99, property_get_int32("missing", 99));
    EXPECT_EQ(99, property_get_int32(nullptr, 99));
    EXPECT_EQ(99, property_get_int64(nullptr, 99));
}

TEST_F(PropertyTest, IntegersOutOfRangeYieldTheDefault) {
    ASSERT_EQ(0, property_set("number", "2147483647"));
    EXPECT_EQ(INT32_MAX, property_get_int32("number", 99));
    ASSERT_EQ(0, property_set("number", "2147483648"));
    EXPECT_EQ(99, property_get_int32("number", 99));
    EXPECT_EQ(2147483648, property_get_int64("number", 99));
    ASSERT_EQ(0, property_set("number", "-2147483648"));
    EXPECT_EQ(INT32_MIN, property_get_int32("number", 99));
    ASSERT_EQ(0, property_set("number", "-2147483649"));
    EXPECT_EQ(99, property_get_int32("number", 99));
    ASSERT_EQ(0, property_set("number", "9223372036854775807"));
    EXPECT_EQ(INT64_MAX, property_get_int64("number", 99));
    ASSERT_EQ(0, property_set("number", "9223372036854775808"));
    EXPECT_EQ(99, property_get_int64("number", 99));
    ASSERT_EQ(0, property_set("number", "-9223372036854775809"));
    EXPECT_EQ(99, property_get_int64("number", 99));
}

TEST_F(PropertyTest, ThreadsMayReadAndWriteAtOnce) {
    std::atomic<bool> torn{false};
    std::vector<std::thread> threads;
    for (char letter : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back([letter] {
            const std::string value(91, letter);
            for (int i = 0; i < 300; ++i) EXPECT_EQ(0, property_set("shared", value.c_str()));
        });
        threads.emplace_back([&torn] {
            for (int i = 0; i < 300; ++i) {
                const std::string value = get("shared");
                if (!value.empty() && value != std::string(91, value[0])) torn = true;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_FALSE(torn);
}

TEST(PropertyDevicesTest, EveryDeviceHasItsOwnProperties) {
    {
        const orvo::testing::TemporaryDevice first;
        EXPECT_EQ(0, property_set("a.b", "first"));
    }
    const orvo::testing::TemporaryDevice second;
    EXPECT_EQ("", get("a.b"));
}

/** Everything logged during its life. */
class LogLines {
  public:
    LogLines() {
        lines().clear();
        __android_log_set_logger([](const __android_logger_data* data, const char* message) {
            lines().push_back(std::string(data->tag) + ": " + message);
        });
    }
    ~LogLines() { __android_log_set_logger(__android_log_stderr_logger); }
    static std::vector<std::string>& lines() {
        static std::vector<std::string> all;
        return all;
    }
};

TEST(PropertyWithoutDeviceTest, SettingFailsWithOneLineAndReadingYieldsTheDefault) {
    unsetenv("ORVO_DEVICE_DIR");
    const LogLines log;
    EXPECT_EQ("the default", get("a.b", "the default"));
    EXPECT_EQ(-1, property_list([](const char*, const char*, void*) { FAIL(); }, nullptr));
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_EQ(-1, property_set("a.b", "x"));
    EXPECT_EQ(-1, property_set("a.c", "x"));
    EXPECT_EQ("the default", get("a.b", "the default"));
    EXPECT_THAT(log.lines(),
                ElementsAre("properties: properties cannot be set: there is no property store; set "
                            "ORVO_DEVICE_DIR to the directory of a device"));
}

TEST(PropertyWithoutDeviceTest, AMissingDirectoryIsNamed) {
    const orvo::testing::TemporaryDevice device;
    const std::string missing = device.path() / "missing";
    setenv("ORVO_DEVICE_DIR", missing.c_str(), 1);
    const LogLines log;
    EXPECT_EQ(-1, property_set("a.b", "x"));
    EXPECT_EQ(-1, property_set("a.b", "x"));
    EXPECT_THAT(
            log.lines(),
            ElementsAre("properties: properties cannot be set: cannot open the property store " +
                        missing + "/properties (No such file or directory); ORVO_DEVICE_DIR " +
                        "must name a writable directory of a device"));
}

TEST(PropertyWithoutDeviceTest, ADirectoryThatAppearsLaterIsUsed) {
    const orvo::testing::TemporaryDevice device;
    const std::filesystem::path later = device.path() / "later";
    setenv("ORVO_DEVICE_DIR", later.c_str(), 1);
    const LogLines log;
    EXPECT_EQ(-1, property_set("a.b", "x"));
    ASSERT_TRUE(std::filesystem::create_directory(later));
    EXPECT_EQ(0, property_set("a.b", "x"));
    EXPECT_EQ("x", get("a.b"));
}

TEST(PropertyWithoutDeviceTest, AFileThatIsNoStoreIsRefused) {
    const orvo::testing::TemporaryDevice device;
    std::ofstream(device.path() / "properties") << std::string(100000, '?');
    const LogLines log;
    EXPECT_EQ(-1, property_set("a.b", "x"));
    EXPECT_EQ("the default", get("a.b", "the default"));
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_THAT(log.lines()[0], ::testing::HasSubstr("cannot open the property store"));
}

TEST_F(PropertyTest, AFullStoreRefusesWritesAndKeepsWhatItHas) {
    ASSERT_EQ(0, property_set("a.b", "kept"));
    const std::string big(48u << 20, 'v');
    int refused = 0;
    for (int i = 0; i < 8 && refused == 0; ++i) {
        refused = property_set(("ro.big." + std::to_string(i)).c_str(), big.c_str());
    }
    EXPECT_EQ(-1, refused);
    EXPECT_EQ("kept", get("a.b"));
    EXPECT_EQ(0, property_set("a.b", "still writable"));
    EXPECT_EQ("still writable", get("a.b"));
}

}  // namespace
