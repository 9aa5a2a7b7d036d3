// SPDX-License-Identifier: Apache-2.0
// hidl_string: ownership, the final NUL, and comparisons.

#include <sstream>
#include <utility>

#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>

namespace {

using android::hardware::hidl_string;

TEST(HidlStringTest, AnEmptyStringHasText) {
    const hidl_string text;
    EXPECT_STREQ("", text.c_str());
    EXPECT_EQ(0u, text.size());
    EXPECT_TRUE(text.empty());
}

TEST(HidlStringTest, NullGivesAnEmptyString) {
    hidl_string text(static_cast<const char*>(nullptr));
    EXPECT_STREQ("", text.c_str());
    text = "something";
    text = static_cast<const char*>(nullptr);
    EXPECT_STREQ("", text.c_str());
}

TEST(HidlStringTest, APartOfATextEndsWithANul) {
    const hidl_string text("camera", 3);
    EXPECT_EQ(3u, text.size());
    EXPECT_STREQ("cam", text.c_str());
}

TEST(HidlStringTest, CopiesAreDeep) {
    const hidl_string original("device@3.2/internal/0");
    const hidl_string copy(original);
    hidl_string assigned("other");
    assigned = original;
    EXPECT_NE(original.c_str(), copy.c_str());
    EXPECT_NE(original.c_str(), assigned.c_str());
    EXPECT_EQ(original, copy);
    EXPECT_EQ(original, assigned);
}

TEST(HidlStringTest, AStringMovedFromIsEmptyAndItsTextIsHandedOver) {
    hidl_string source("device");
    const char* address = source.c_str();
    hidl_string target(std::move(source));
    EXPECT_EQ(address, target.c_str());
    EXPECT_STREQ("", source.c_str());
    EXPECT_EQ(0u, source.size());

    hidl_string assigned("old");
    assigned = std::move(target);
    EXPECT_EQ(address, assigned.c_str());
    EXPECT_TRUE(target.empty());
}

TEST(HidlStringTest, AssigningAStringToItselfOrAPartOfItKeepsTheText) {
    hidl_string text("abcdef");
    const hidl_string& alias = text;
    text = alias;
    EXPECT_STREQ("abcdef", text.c_str());
    text = text.c_str() + 2;
    EXPECT_STREQ("cdef", text.c_str());
}

TEST(HidlStringTest, StdStringsGoInAndOutWithTheirNuls) {
    const std::string original("a\0b", 3);
    const hidl_string text(original);
    EXPECT_EQ(3u, text.size());
    EXPECT_EQ(original, std::string(text));
    hidl_string assigned;
    assigned = original;
    EXPECT_EQ(original, std::string(assigned));
}

TEST(HidlStringTest, ClearLeavesAnEmptyString) {
    hidl_string text("something");
    text.clear();
    EXPECT_STREQ("", text.c_str());
    EXPECT_EQ(0u, text.size());
}

TEST(HidlStringTest, ExternalTextIsShownAndNotCopied) {
    const char data[] = "external";
    hidl_string text("old");
    text.setToExternal(data, 8);
    EXPECT_EQ(data, text.c_str());
    EXPECT_EQ(8u, text.size());
    const hidl_string copy(text);
    EXPECT_NE(data, copy.c_str());
}

TEST(HidlStringDeathTest, ExternalTextMustEndWithANul) {
    const char data[] = "external";
    hidl_string text;
    EXPECT_DEATH(text.setToExternal(data, 4), "does not end with a NUL");
    EXPECT_DEATH(text.setToExternal(nullptr, 0), "does not end with a NUL");
}

TEST(HidlStringDeathTest, TextOfFourGigabytesIsTooLong) {
    const char data[] = "";
    EXPECT_DEATH(hidl_string(data, UINT32_MAX), "limited to");
    hidl_string text;
    EXPECT_DEATH(text.setToExternal(data, UINT32_MAX), "limited to");
}

TEST(HidlStringTest, StringsAreComparedLikeText) {
    const hidl_string a("a");
    const hidl_string b("b");
    EXPECT_TRUE(a == hidl_string("a"));
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(a < b && a <= b && b > a && b >= a);
    EXPECT_FALSE(a > b || a >= b || b < a || b <= a || a == b);
}

TEST(HidlStringTest, StringsAreComparedWithPlainTextOnEitherSide) {
    const hidl_string b("b");
    EXPECT_TRUE(b == "b" && "b" == b);
    EXPECT_TRUE(b != "a" && "a" != b);
    EXPECT_TRUE(b > "a" && "a" < b && b < "c" && "c" > b);
    EXPECT_TRUE(b >= "b" && "b" >= b && b <= "b" && "b" <= b);
    EXPECT_FALSE("a" >= b || b <= "a");
}

TEST(HidlStringTest, ComparisonsStopAtANul) {
    const hidl_string whole("a\0b", 3);
    EXPECT_TRUE(whole == "a");
    EXPECT_TRUE(whole == hidl_string("a\0c", 3));
    EXPECT_EQ(3u, whole.size());
}

TEST(HidlStringTest, StreamsPrintTheText) {
    std::ostringstream stream;
    stream << hidl_string("text");
    EXPECT_EQ("text", stream.str());
}

}  // namespace
