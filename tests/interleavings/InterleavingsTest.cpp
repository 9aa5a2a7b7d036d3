// SPDX-License-Identifier: Apache-2.0
// What can happen when things happen at once is what the list of exceptions says, and the explorer
// finds what it is there for.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "tests/interleavings/Exceptions.h"
#include "tests/interleavings/Faults.h"
#include "tests/interleavings/Input.h"
#include "tests/interleavings/World.h"
#include "tests/support/OneProcessor.h"

namespace orvo::interleavings {
namespace {

TEST(InterleavingsTest, EveryTwoOperationsDoWhatSomeOrderOfThemDoesOrWhatTheListSays) {
    test::runOnOneProcessor();
    Findings findings;
    for (const Scenario& scenario : scenariosOf(2))
        findings.add(scenario, explore(scenario, kInTheTests));
    for (const std::string& broken : findings.broken) ADD_FAILURE() << broken;
    for (const KnownException& known : knownExceptions()) {
        EXPECT_EQ(findings.seen.count(known.title), 1u) << known.title << ": does not occur";
    }
    std::cout << findings.orders << " orders of " << findings.scenarios << " scenarios in "
              << findings.seconds << " s\n";
    for (const auto& [interruptions, scenarios] : findings.incomplete) {
        std::cout << scenarios << " not in every order: all with up to " << interruptions
                  << " interruptions, random ones\n";
    }
}

TEST(InterleavingsTest, WhatIsLeftOutIsTheSame) {
    test::runOnOneProcessor();
    for (const char* const text : {"1cp *01 B", "1cp B N", "1 +01 N", "1cp L B", "1c *01 T"}) {
        const Scenario scenario = *Scenario::fromText(text);
        const Exploration reduced = explore(scenario, {});
        EXPECT_TRUE(reduced.all);
        EXPECT_EQ(outcomesOfAllOrders(scenario), reduced.outcomes) << text;
    }
}

// Every kind of operation but the loading of another object, next to which orders are too many.
const char* const kNextToChanges[] = {"+01", "-01", "*01", "B",  "N", "L",
                                      "V",   "T",   "I1",  "i1", "M"};

std::set<std::string> outcomesOf(const Scenario& scenario, bool touchAnything) {
    gTouchAnything = touchAnything;
    const Exploration found = explore(scenario, {20000, 0, 1});
    gTouchAnything = false;
    EXPECT_TRUE(found.all) << scenario.text();
    return found.outcomes;
}

TEST(InterleavingsTest, NoOperationReadsAMemberThatItIsNotKnownToTouch) {
    test::runOnOneProcessor();
    for (const std::string change : {"B ", "D0 "}) {
        for (const char* const other : kNextToChanges) {
            const Scenario scenario = *Scenario::fromText("1cp " + change + other);
            EXPECT_EQ(outcomesOf(scenario, false), outcomesOf(scenario, true)) << scenario.text();
        }
    }
    // That this would show.
    const Scenario scenario = *Scenario::fromText("1cp N T");
    gFault = Fault::kReadUnexpectedly;
    EXPECT_NE(outcomesOf(scenario, false), outcomesOf(scenario, true));
    gFault = Fault::kNone;
}

TEST(InterleavingsTest, AnOrderCanBeReplayed) {
    const Scenario scenario = *Scenario::fromText("1cp +01 -01 D0");
    for (const auto& [outcome, exception] : explore(scenario, {}).exceptions) {
        const auto again = replay(scenario, exception.run.order());
        EXPECT_EQ(again.outcome, outcome);
        EXPECT_EQ(again.order(), exception.run.order());
    }
}

TEST(InterleavingsTest, TheInputsOfTheFuzzerFindNothing) {
    size_t inputs = 0;
    for (const auto& file : std::filesystem::directory_iterator(ORVO_CORPUS)) {
        std::ifstream stream(file.path(), std::ios::binary);
        const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
        const auto run = runInput(bytes.data(), bytes.size());
        EXPECT_TRUE(run.findings.empty()) << file.path() << run.story();
        ++inputs;
    }
    EXPECT_GT(inputs, 10u);
}

TEST(InterleavingsTest, AnOrderIsAnInputOfTheFuzzer) {
    const Scenario scenario = *Scenario::fromText("2cpsf1 +01 -11 D0 L");
    for (const auto& [outcome, exception] : explore(scenario, {}).exceptions) {
        const std::string bytes = inputOf(scenario, exception.run);
        const auto again = runInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        EXPECT_EQ(again.outcome, outcome);
    }
}

struct Planted {
    Fault fault;
    const char* scenario;
    const char* finding;
};

/** What GoogleTest calls the case. */
std::ostream& operator<<(std::ostream& out, const Planted& planted) {
    return out << planted.finding;
}

class PlantedFaultTest : public ::testing::TestWithParam<Planted> {
  protected:
    ~PlantedFaultTest() override { gFault = Fault::kNone; }

    static Findings explored(const char* text) {
        const Scenario scenario = *Scenario::fromText(text);
        Findings findings;
        findings.add(scenario, explore(scenario, {}));
        return findings;
    }
};

TEST_P(PlantedFaultTest, IsFoundAndNothingIsFoundWithoutIt) {
    test::runOnOneProcessor();
    EXPECT_TRUE(explored(GetParam().scenario).broken.empty());
    gFault = GetParam().fault;
    const std::vector<std::string> broken = explored(GetParam().scenario).broken;
    ASSERT_FALSE(broken.empty());
    EXPECT_NE(broken.front().find(GetParam().finding), std::string::npos);
    std::cout << broken.front() << "\n";
}

INSTANTIATE_TEST_SUITE_P(
        , PlantedFaultTest,
        ::testing::Values(
                Planted{Fault::kNoLock, "1cp +01 -01",
                        "changes the active devices without the lock"},
                Planted{Fault::kLockHeldDuringCall, "1c +01 *01", "calls outside under the lock"},
                Planted{Fault::kToldBeforeRecorded, "1cp +01 -01", "not in the list: report"},
                Planted{Fault::kReferenceDropped, "1c *01 B", "uses a reference of nobody"},
                Planted{Fault::kServiceNotHeld, "1cp V D0", "uses a reference of nobody"},
                Planted{Fault::kThreadNotDetached, "1c D0", "a thread is left"},
                Planted{Fault::kAnsweredTwice, "1c T", "was given 2 times"},
                Planted{Fault::kLockTakenTwice, "1c +01 *01", "a deadlock"}));

}  // namespace
}  // namespace orvo::interleavings
