// SPDX-License-Identifier: Apache-2.0
// Tests of Condition: what can be waited for, and when it is met.

#include <string>

#include <android-base/strings.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/control/Complaint.h"
#include "simulator/control/Condition.h"

namespace orvo::simulator::testing {
namespace {

using android::base::Result;
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

    /** Of a condition without blanks in its words. */
    static Result<Condition> parse(const std::string& text) {
        return Condition::parse(android::base::Split(text, " "));
    }

    bool met(const std::string& text) const {
        const auto condition = parse(text);
        EXPECT_TRUE(condition) << text;
        return condition && condition->met(mFacts);
    }

    ConditionFacts mFacts;
};

TEST_F(ConditionTest, ACameraIsPresentWhileItsLastReportSaysSo) {
    EXPECT_FALSE(met("camera a PRESENT"));
    addCamera("a", "ENUMERATING");
    EXPECT_FALSE(met("camera a PRESENT"));
    EXPECT_TRUE(met("camera a NOT_PRESENT"));
    mFacts.cameras[0].status = "PRESENT";
    EXPECT_TRUE(met("camera a PRESENT"));
    EXPECT_FALSE(met("camera a NOT_PRESENT"));
}

TEST_F(ConditionTest, ACameraThatWasNeverReportedIsNotAbsentEither) {
    EXPECT_FALSE(met("camera a NOT_PRESENT"));
}

TEST_F(ConditionTest, ACameraWhoseServiceIsGoneIsAbsent) {
    mFacts.everReported.insert("a");
    EXPECT_TRUE(met("camera a NOT_PRESENT"));
}

TEST_F(ConditionTest, AProviderIsWhatItsStateSays) {
    EXPECT_FALSE(met("provider p dead")) << "nobody of that name";
    ProviderState& provider = addProvider("p");
    EXPECT_TRUE(met("provider p dead"));
    EXPECT_TRUE(met("provider p disconnected"));
    provider.running = true;
    EXPECT_TRUE(met("provider p running"));
    EXPECT_FALSE(met("provider p dead"));
    EXPECT_FALSE(met("provider p connected"));
    provider.connected = true;
    EXPECT_TRUE(met("provider p connected"));
    EXPECT_FALSE(met("provider p disconnected"));
}

TEST_F(ConditionTest, APropertyHasAValueOrContainsAText) {
    EXPECT_TRUE(
            Condition::parse({"property", "camera.external.ids", "is", "100, 101"})->met(mFacts));
    EXPECT_FALSE(met("property camera.external.ids is 100"));
    EXPECT_TRUE(met("property camera.external.ids contains 101"));
    EXPECT_FALSE(met("property camera.external.ids contains 102"));
    EXPECT_TRUE(met("property unset is "));
}

TEST_F(ConditionTest, CamerasAreCountedWhilePresent) {
    EXPECT_TRUE(met("cameras 0"));
    addCamera("a", "PRESENT");
    addCamera("b", "NOT_PRESENT");
    EXPECT_TRUE(met("cameras 1"));
    EXPECT_FALSE(met("cameras 2"));
}

TEST_F(ConditionTest, KnowsWhatItIsAbout) {
    const auto provider = parse("provider p dead");
    EXPECT_EQ("p", provider->provider());
    EXPECT_FALSE(provider->isAboutProperty());
    EXPECT_TRUE(parse("property p is x")->isAboutProperty());
}

TEST_F(ConditionTest, AnythingElseIsABadUseThatIsToldTheForms) {
    for (const char* words :
         {"", "camera c", "camera c present", "provider external/0 alive", "property p has x",
          "property p is", "cameras four", "cameras -1", "cameras 4 5", "weather fine now"}) {
        const auto refused = parse(words);
        ASSERT_FALSE(refused) << words;
        EXPECT_EQ(kBadUse, refused.error().code());
        EXPECT_THAT(refused.error().message(),
                    HasSubstr(std::string("'") + words + "' is no condition; write 'camera NAME"));
    }
}

}  // namespace
}  // namespace orvo::simulator::testing
