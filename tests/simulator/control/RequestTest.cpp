// SPDX-License-Identifier: Apache-2.0
// Tests of Request: what is a request, and the one line that every other text is answered with.

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/control/Request.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;

std::string mistakeIn(const std::string& line) {
    const auto request = Request::parse(line);
    return request ? "none" : request.error().message();
}

TEST(RequestTest, OptionalMembersAreFilledIn) {
    const auto kill = Request::parse(R"({"command":"kill","provider":"external/0"})");
    ASSERT_TRUE(kill);
    EXPECT_EQ("kill", kill->command);
    EXPECT_EQ("external/0", kill->text("provider"));
    EXPECT_EQ("KILL", kill->text("signal"));
    const auto open = Request::parse(R"({"command":"open","camera":"c","hold":null})");
    ASSERT_TRUE(open);
    EXPECT_FALSE(open->flag("hold"));
    const auto tags = Request::parse(R"({"command":"tags"})");
    ASSERT_TRUE(tags);
    EXPECT_TRUE(tags->members["service"].is_null());
}

TEST(RequestTest, GivenMembersAreKept) {
    const auto events = Request::parse(R"({"command":"events","from":7,"follow":true})");
    ASSERT_TRUE(events);
    EXPECT_EQ(7, events->members["from"]);
    EXPECT_TRUE(events->flag("follow"));
}

TEST(RequestTest, WhatIsNoJsonObjectIsRefused) {
    for (const char* line : {"", "ps", "{", "[]", "7", "\"state\"", "{\"command\":\"state\"} x"}) {
        EXPECT_THAT(mistakeIn(line), HasSubstr("is no JSON object")) << line;
    }
}

TEST(RequestTest, BytesThatAreNoTextAreRefused) {
    EXPECT_THAT(mistakeIn("{\"command\":\"\xff\xfe\"}"), HasSubstr("is no JSON object"));
    EXPECT_THAT(mistakeIn(std::string(5000, '[')), HasSubstr("is no JSON object"));
}

TEST(RequestTest, AMissingOrUnknownCommandIsAnsweredWithAllCommands) {
    EXPECT_THAT(mistakeIn("{}"), HasSubstr("the request has no 'command'; it is one of close, "));
    EXPECT_THAT(mistakeIn(R"({"command":7})"), HasSubstr("has no 'command'"));
    EXPECT_THAT(mistakeIn(R"({"command":"fly"})"),
                HasSubstr("there is no command 'fly'; there are close, dump, events, exit, hang"));
}

TEST(RequestTest, AMissingMemberIsNamed) {
    EXPECT_EQ("hang: 'provider' is missing; send a text", mistakeIn(R"({"command":"hang"})"));
    EXPECT_EQ("torch: 'on' is missing; send true or false",
              mistakeIn(R"({"command":"torch","camera":"c"})"));
    EXPECT_EQ("wait: 'condition' is missing; send an object", mistakeIn(R"({"command":"wait"})"));
}

TEST(RequestTest, AMemberOfAnotherTypeIsNamed) {
    EXPECT_EQ("open: 'hold' is not true or false; send true or false",
              mistakeIn(R"({"command":"open","camera":"c","hold":"yes"})"));
    EXPECT_EQ("events: 'from' is not a number; send a number",
              mistakeIn(R"({"command":"events","from":"1"})"));
}

TEST(RequestTest, EveryCommandOfTheListIsKnown) {
    for (const std::string& command : Request::commands()) {
        EXPECT_EQ(std::string::npos,
                  mistakeIn(R"({"command":")" + command + "\"}").find("there is no command"))
                << command;
    }
    EXPECT_EQ(17u, Request::commands().size());
}

}  // namespace
}  // namespace orvo::simulator::testing
