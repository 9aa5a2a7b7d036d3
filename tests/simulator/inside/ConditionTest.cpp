// SPDX-License-Identifier: Apache-2.0
// Tests of Condition: what can be waited for, and when it is met.

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "simulator/camerasim/inside/Condition.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::HasSubstr;

class ConditionTest : public ::testing::Test {
  protected:
    ConditionTest() {
        mFacts.property = [](const std::string& name) {
            return name == "camera.external.ids" ? "100, 101" : "";
        };
    }

    void addCamera(const std::string& name, const std::string& status) {
        mFacts.cameras.push_back({name, "legacy/0", status, "", false});
        mFacts.everReported.insert(name);
    }

    ProviderState& addProvider(const std::string& instance) {
        ProviderState state{};
        state.instance = instance;
        mFacts.providers.push_back(state);
        return mFacts.providers.back();
    }

    bool met(const char* text) const {
        const auto condition = Condition::parse(nlohmann::json::parse(text));
        EXPECT_TRUE(condition) << text;
        return condition && condition->met(mFacts);
    }

    static std::string mistakeIn(const char* text) {
        const auto condition = Condition::parse(nlohmann::json::parse(text));
        return condition ? "none" : condition.error().message();
    }

    ConditionFacts mFacts;
};

TEST_F(ConditionTest, ACameraIsPresentWhileItsLastReportSaysSo) {
    EXPECT_FALSE(met(R"({"camera":"a","status":"PRESENT"})"));
    addCamera("a", "ENUMERATING");
    EXPECT_FALSE(met(R"({"camera":"a","status":"PRESENT"})"));
    EXPECT_TRUE(met(R"({"camera":"a","status":"NOT_PRESENT"})"));
    mFacts.cameras[0].status = "PRESENT";
    EXPECT_TRUE(met(R"({"camera":"a","status":"PRESENT"})"));
    EXPECT_FALSE(met(R"({"camera":"a","status":"NOT_PRESENT"})"));
}

TEST_F(ConditionTest, ACameraThatWasNeverReportedIsNotAbsentEither) {
    EXPECT_FALSE(met(R"({"camera":"a","status":"NOT_PRESENT"})"));
}

TEST_F(ConditionTest, ACameraWhoseServiceIsGoneIsAbsent) {
    mFacts.everReported.insert("a");
    EXPECT_TRUE(met(R"({"camera":"a","status":"NOT_PRESENT"})"));
}

TEST_F(ConditionTest, AProviderIsWhatItsStateSays) {
    EXPECT_FALSE(met(R"({"provider":"p","is":"dead"})")) << "nobody of that name";
    ProviderState& provider = addProvider("p");
    EXPECT_TRUE(met(R"({"provider":"p","is":"dead"})"));
    EXPECT_TRUE(met(R"({"provider":"p","is":"disconnected"})"));
    provider.running = true;
    EXPECT_TRUE(met(R"({"provider":"p","is":"running"})"));
    EXPECT_FALSE(met(R"({"provider":"p","is":"dead"})"));
    EXPECT_FALSE(met(R"({"provider":"p","is":"connected"})"));
    provider.connected = true;
    EXPECT_TRUE(met(R"({"provider":"p","is":"connected"})"));
    EXPECT_FALSE(met(R"({"provider":"p","is":"disconnected"})"));
}

TEST_F(ConditionTest, APropertyHasAValueOrContainsAText) {
    EXPECT_TRUE(met(R"({"property":"camera.external.ids","value":"100, 101"})"));
    EXPECT_FALSE(met(R"({"property":"camera.external.ids","value":"100"})"));
    EXPECT_TRUE(met(R"({"property":"camera.external.ids","contains":"101"})"));
    EXPECT_FALSE(met(R"({"property":"camera.external.ids","contains":"102"})"));
    EXPECT_TRUE(met(R"({"property":"unset","value":""})"));
}

TEST_F(ConditionTest, CamerasAreCountedWhilePresent) {
    EXPECT_TRUE(met(R"({"cameras":0})"));
    addCamera("a", "PRESENT");
    addCamera("b", "NOT_PRESENT");
    EXPECT_TRUE(met(R"({"cameras":1})"));
    EXPECT_FALSE(met(R"({"cameras":2})"));
}

TEST_F(ConditionTest, KnowsWhatItIsAbout) {
    const auto provider = Condition::parse({{"provider", "p"}, {"is", "dead"}});
    EXPECT_EQ("p", provider->provider());
    EXPECT_FALSE(provider->isAboutProperty());
    EXPECT_TRUE(Condition::parse({{"property", "p"}, {"value", ""}})->isAboutProperty());
}

TEST_F(ConditionTest, WhatIsNoConditionIsRefusedWithWhatIsOne) {
    EXPECT_THAT(mistakeIn("{}"), HasSubstr("it is {camera, status}, {provider, is}"));
    EXPECT_THAT(mistakeIn("[]"), HasSubstr("it is {camera, status}"));
    EXPECT_THAT(mistakeIn(R"({"camera":7})"), HasSubstr("it is {camera, status}"));
    EXPECT_THAT(mistakeIn(R"({"camera":"a"})"), HasSubstr("'status' is PRESENT or NOT_PRESENT"));
    EXPECT_THAT(mistakeIn(R"({"provider":"p","is":"well"})"),
                HasSubstr("to be 'well'; 'is' is connected, disconnected, running or dead"));
    EXPECT_THAT(mistakeIn(R"({"property":"p"})"), HasSubstr("needs 'value' or 'contains'"));
    EXPECT_THAT(mistakeIn(R"({"cameras":-1})"), HasSubstr("'cameras' is no number"));
    EXPECT_THAT(mistakeIn(R"({"cameras":"all"})"), HasSubstr("'cameras' is no number"));
}

}  // namespace
}  // namespace orvo::simulator::testing
