// SPDX-License-Identifier: Apache-2.0
// Tests of what the commands are made of: tables, log lines.

#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "simulator/camerasim/commands/LogLine.h"
#include "simulator/camerasim/commands/Output.h"
#include "simulator/camerasim/commands/Table.h"

namespace orvo::simulator {
namespace {

using ::testing::HasSubstr;
using Json = nlohmann::json;

std::string printed(const Table& table, bool colour = false) {
    std::ostringstream out;
    table.print(out, colour);
    return out.str();
}

TEST(TableTest, ColumnsAreAsWideAsTheirWidestTextAndTheLastIsNotPadded) {
    Table table({"NAME", "N"});
    table.addRow({"external/0", "1"});
    table.addRow({"a", "200"});
    EXPECT_EQ(
            "NAME        N\n"
            "external/0  1\n"
            "a           200\n",
            printed(table));
}

TEST(TableTest, WidthIsCountedInCharacters) {
    Table table({"A", "B"});
    table.addRow({"çé", "x"});
    table.addRow({"four", "y"});
    EXPECT_EQ("A     B\nçé    x\nfour  y\n", printed(table));
}

TEST(TableTest, WhatIsEmptyIsADash) {
    Table table({"A", "B"});
    table.addRow({"", ""});
    EXPECT_EQ("A  B\n-  -\n", printed(table));
}

TEST(TableTest, RemarksStandBelowTheirRowAndWidenNothing) {
    Table table({"A", "B"});
    table.addRow({"x", "1"});
    table.addRemark("why x is as it is");
    table.addRow({"y", "2"});
    EXPECT_EQ("A  B\nx  1\n    why x is as it is\ny  2\n", printed(table));
}

TEST(TableTest, PaintDoesNotMoveColumns) {
    Table table({"A", "B"});
    table.addRow({{"x", Paint::RED}, "1"});
    EXPECT_EQ("\033[1mA\033[0m  \033[1mB\033[0m\n\033[1;31mx\033[0m  1\n", printed(table, true));
}

TEST(OutputTest, DurationsAreReadable) {
    EXPECT_EQ("0.42 s", durationText(0.42));
    EXPECT_EQ("59 s", durationText(59.9));
    EXPECT_EQ("1 min 15 s", durationText(75.5));
    EXPECT_EQ("2 h 3 min", durationText(2 * 3600 + 3 * 60 + 1));
}

TEST(LogLineTest, AHeadIsTakenApart) {
    LogParser parser("camera_provider_service");
    const LogLine line = parser.parse(
            "OrvoCameraServiceImpl E 11-21 09:58:49.123456 14677 14684 Camera provider external/0 "
            "has "
            "died");
    EXPECT_EQ("camera_provider_service", line.program);
    EXPECT_EQ("OrvoCameraServiceImpl", line.tag);
    EXPECT_EQ("E", line.priority);
    EXPECT_EQ("11-21", line.date);
    EXPECT_EQ("09:58:49.123456", line.time);
    EXPECT_EQ(14677, line.pid);
    EXPECT_EQ(14684, line.tid);
    EXPECT_EQ("Camera provider external/0 has died", line.message);
}

TEST(LogLineTest, ShortProcessIdsArePadded) {
    LogParser parser("p");
    const LogLine line = parser.parse("A tag of words W 11-21 09:58:49   677     7   text");
    EXPECT_EQ("A tag of words", line.tag);
    EXPECT_EQ(677, line.pid);
    EXPECT_EQ(7, line.tid);
    EXPECT_EQ("  text", line.message);
}

TEST(LogLineTest, AMessageThatLooksLikeAHeadStaysAMessage) {
    LogParser parser("p");
    const LogLine line = parser.parse("Tag I 11-21 09:58:49 1 2 other E 11-21 09:58:50 3 4 words");
    EXPECT_EQ("Tag", line.tag);
    EXPECT_EQ("other E 11-21 09:58:50 3 4 words", line.message);
}

TEST(LogLineTest, TheNextLineOfAMessageBelongsToIt) {
    LogParser parser("p");
    parser.parse("Tag W 11-21 09:58:49 1 2 first");
    const LogLine second = parser.parse("second E not a head");
    EXPECT_EQ("Tag", second.tag);
    EXPECT_EQ("W", second.priority);
    EXPECT_EQ("11-21", second.date);
    EXPECT_EQ("09:58:49", second.time);
    EXPECT_EQ("second E not a head", second.message);
}

TEST(LogLineTest, ALineBeforeAnyHeadHasNeitherTimeNorTag) {
    const LogLine line = LogParser("p").parse("terminate called");
    EXPECT_EQ("", line.time);
    EXPECT_EQ("", line.tag);
    EXPECT_EQ("terminate called", line.message);
}

TEST(LogFilterTest, APriorityStandsForThoseAboveItToo) {
    LogParser parser("p");
    LogFilter filter;
    filter.priority = "W";
    for (const std::string letter : {"V", "D", "I"}) {
        EXPECT_FALSE(filter.accepts(parser.parse("T " + letter + " 11-21 09:58:49 1 2 m")));
    }
    for (const std::string letter : {"W", "E", "F"}) {
        EXPECT_TRUE(filter.accepts(parser.parse("T " + letter + " 11-21 09:58:49 1 2 m")));
    }
    EXPECT_FALSE(filter.accepts(LogParser("p").parse("no head")));
}

TEST(LogFilterTest, TagAndProgramMustBeEqual) {
    const LogLine line = LogParser("program").parse("Tag I 11-21 09:58:49 1 2 m");
    EXPECT_TRUE(LogFilter().accepts(line));
    EXPECT_TRUE((LogFilter{"Tag", "", "program"}.accepts(line)));
    EXPECT_FALSE((LogFilter{"Ta", "", ""}.accepts(line)));
    EXPECT_FALSE((LogFilter{"", "", "prog"}.accepts(line)));
}

}  // namespace
}  // namespace orvo::simulator
