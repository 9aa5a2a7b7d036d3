// SPDX-License-Identifier: Apache-2.0
// What may be the name and the value of a property.

#include "PropertyRules.h"

#include <string>

#include <gtest/gtest.h>

namespace orvo {
namespace {

TEST(PropertyNameTest, LettersDigitsAndFivePunctuationMarksAreLegal) {
    for (const char* name : {"a", "Z", "7", "a.b", "camera.legacy.ids", "a-b", "a@1.0", "a:b", "_",
                             "-", "ro.x", "A1_b-c@d:e.f"}) {
        EXPECT_TRUE(isLegalPropertyName(name)) << name;
    }
}

TEST(PropertyNameTest, AnyOtherCharacterIsIllegal) {
    const std::string legal = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-@:_.";
    for (int code = 0; code < 256; ++code) {
        const char c = static_cast<char>(code);
        const std::string name = std::string("a") + c + "b";
        EXPECT_EQ(legal.find(c) != std::string::npos, isLegalPropertyName(name)) << code;
    }
}

TEST(PropertyNameTest, DotsMayNotLeadTrailOrMeet) {
    for (const char* name : {"", ".", ".a", "a.", "a..b", ".."}) {
        EXPECT_FALSE(isLegalPropertyName(name)) << name;
    }
}

TEST(PropertyNameTest, LongNamesAreLegal) {
    EXPECT_TRUE(isLegalPropertyName(std::string(31, 'a')));
    EXPECT_TRUE(isLegalPropertyName(std::string(300, 'a')));
}

TEST(Utf8Test, EveryLengthOfSequenceIsValidAtItsLimits) {
    for (const char* text : {"", "plain", "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80",
                             "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80",
                             "\xF4\x8F\xBF\xBF", "K\xC3\xA4mera \xE2\x82\xAC"}) {
        EXPECT_TRUE(isValidUtf8(text)) << text;
    }
}

TEST(Utf8Test, StrayAndMissingContinuationBytesAreInvalid) {
    for (const char* text : {"\x80", "a\xBF", "\xC3", "\xC3z", "\xE2\x82", "\xE2\x82z",
                             "\xF0\x9F\x98", "\xC3\xA4\xA4"}) {
        EXPECT_FALSE(isValidUtf8(text)) << text;
    }
}

TEST(Utf8Test, OverlongFormsSurrogatesAndTooLargeCodePointsAreInvalid) {
    for (const char* text :
         {"\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
          "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"}) {
        EXPECT_FALSE(isValidUtf8(text)) << text;
    }
}

}  // namespace
}  // namespace orvo
