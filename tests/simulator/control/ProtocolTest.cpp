// SPDX-License-Identifier: Apache-2.0
// Tests of Protocol: requests survive the way over the socket, and what is none is refused.

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "simulator/control/Complaint.h"
#include "simulator/control/ControlClient.h"
#include "simulator/control/Protocol.h"

namespace orvo::simulator::testing {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

/** The request after its way to the headset; the test fails if it does not arrive. */
template <typename Kind>
Kind arrived(const Kind& request) {
    const auto parsed = parseRequest(lineOf(request));
    EXPECT_TRUE(parsed) << parsed.error().message();
    EXPECT_TRUE(parsed && std::holds_alternative<Kind>(*parsed)) << lineOf(request);
    return parsed ? std::get<Kind>(*parsed) : Kind();
}

std::string mistakeIn(const std::string& line, int status = kBadUse) {
    const auto request = parseRequest(line);
    if (request) return "none";
    EXPECT_EQ(status, request.error().code()) << line;
    EXPECT_EQ(std::string::npos, request.error().message().find('\n'));
    return request.error().message();
}

TEST(ProtocolTest, EveryMemberOfARequestArrives) {
    arrived(StateRequest());
    EXPECT_EQ("legacy/0", arrived(TagsRequest{"legacy/0"}).service);
    EXPECT_TRUE(arrived(OpenRequest{"c", true}).hold);
    EXPECT_EQ("TERM", arrived(KillRequest{"external/0", "TERM"}).signal);
    EXPECT_FALSE(arrived(PlugRequest{"external/0", "100", false}).present);
    EXPECT_EQ(7, arrived(EventsRequest{7, true}).from);
    const auto wait = arrived(WaitRequest{{"property", "p", "is", "a \"b\"\n"}, 2.5});
    EXPECT_THAT(wait.condition, ElementsAre("property", "p", "is", "a \"b\"\n"));
    EXPECT_EQ(2.5, wait.timeout);
}

TEST(ProtocolTest, WhatARequestLeavesOutIsAsItIsDeclared) {
    const auto kill = parseRequest(R"({"command":"kill","provider":"external/0"})");
    ASSERT_TRUE(kill);
    EXPECT_EQ("KILL", std::get<KillRequest>(*kill).signal);
    EXPECT_TRUE(std::get<PlugRequest>(*parseRequest(R"({"command":"plug"})")).present);
    EXPECT_EQ(1, std::get<EventsRequest>(*parseRequest(R"({"command":"events"})")).from);
}

TEST(ProtocolTest, WhatIsNoJsonObjectIsRefused) {
    for (const char* line : {"", "ps", "{", "[]", "7", "\"state\"", "{\"command\":\"state\"} x"}) {
        EXPECT_THAT(mistakeIn(line), HasSubstr("is no JSON object")) << line;
    }
    EXPECT_THAT(mistakeIn("{\"command\":\"\xff\xfe\"}"), HasSubstr("is no JSON object"));
    EXPECT_THAT(mistakeIn(std::string(5000, '[')), HasSubstr("is no JSON object"));
}

TEST(ProtocolTest, AMissingOrUnknownCommandIsAnsweredWithAllCommands) {
    const std::string all = "there are state, tags, dump, list, props, open, close, torch, kill, ";
    EXPECT_THAT(mistakeIn("{}"), HasSubstr("there is no command ''; " + all));
    EXPECT_THAT(mistakeIn(R"({"command":"fly\n"})"),
                HasSubstr("there is no command 'fly '; " + all));
}

TEST(ProtocolTest, AMemberOfAnotherTypeIsRefused) {
    for (const char* line : {R"({"command":7})", R"({"command":"open","hold":"yes"})",
                             R"({"command":"events","from":"1"})",
                             R"({"command":"wait","condition":{"cameras":1}})"}) {
        EXPECT_THAT(mistakeIn(line), HasSubstr("a member of the request is of a wrong type ("))
                << line;
    }
}

TEST(ProtocolTest, ARequestOfAnotherBuildIsToldSo) {
    EXPECT_EQ(kOtherBuild,
              mistakeIn(R"({"command":"state","protocol":"00000000"})", kNotAsExpected));
    EXPECT_EQ(8u, protocolId().size());
}

TEST(ProtocolTest, AReplyOfAnotherBuildIsToldSo) {
    const auto reply = messageIn<WaitReply>(json{{"met", true}});
    ASSERT_FALSE(reply);
    EXPECT_EQ(kOtherBuild, reply.error().message());
    EXPECT_FALSE(messageIn<WaitReply>(json{{"met", true}, {"seconds", "long"}}));
    EXPECT_TRUE(messageIn<WaitReply>(json{{"met", true}, {"seconds", 1.5}}));
}

}  // namespace
}  // namespace orvo::simulator::testing
