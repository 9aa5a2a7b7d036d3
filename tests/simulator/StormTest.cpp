// SPDX-License-Identifier: Apache-2.0
// A test with a whole device whose providers are killed at random, as often as is asked for.

#include <stdlib.h>

#include <chrono>
#include <iostream>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "tests/simulator/Storm.h"
#include "tests/simulator/support/InsideDevice.h"

namespace orvo::simulator::testing {
namespace {

/**
 * Say another in the environment to have another storm, or a longer one. The same seed gives the
 * same acts with the same pauses; what meets what in the processes is up to the machine.
 */
constexpr char kSeedVariable[] = "ORVO_STORM_SEED";
constexpr char kKillsVariable[] = "ORVO_STORM_KILLS";
constexpr uint64_t kKills = 60;  ///< `make storm` asks for more

uint64_t fromEnvironment(const char* variable, uint64_t otherwise) {
    const char* value = getenv(variable);
    if (value == nullptr || *value == '\0') return otherwise;
    char* end = nullptr;
    const uint64_t number = strtoull(value, &end, 10);
    EXPECT_EQ('\0', *end) << variable << " must be a number, and is '" << value << "'";
    return number;
}

TEST(StormTest, AfterEachCalmTheDeviceIsAsTheModelSays) {
    const uint64_t seed = fromEnvironment(kSeedVariable, std::random_device()());
    const uint64_t kills = fromEnvironment(kKillsVariable, kKills);
    const std::string repeat = std::string(kSeedVariable) + "=" + std::to_string(seed);
    SCOPED_TRACE("repeat this storm with " + repeat);
    std::cout << repeat << std::endl;
    const auto begin = std::chrono::steady_clock::now();

    auto model = StormModel::read(device().description(), "legacy");
    ASSERT_TRUE(model) << model.error().message();
    Storm storm(device(), *model, seed);
    storm.begin();
    while (!HasFailure() && storm.kills() < kills) {
        storm.burst();
        if (!HasFatalFailure()) storm.calm();
    }
    if (HasFailure()) {
        std::cout << storm.endOfServiceLog();
    } else {
        storm.end();
    }

    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    std::cout << storm.summary() << took.count() << " seconds" << std::endl;
}

}  // namespace
}  // namespace orvo::simulator::testing
