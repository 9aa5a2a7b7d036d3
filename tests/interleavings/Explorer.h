// SPDX-License-Identifier: Apache-2.0
// Tries the orders in which the threads of a scenario can go on.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/interleavings/Machine.h"
#include "tests/interleavings/Scenario.h"

namespace orvo::interleavings {

/** One order that was tried, and what came of it. */
struct Run {
    std::vector<Step> steps;
    std::vector<Step> pending;
    std::string outcome;
    std::vector<std::string> findings;
    std::map<int, std::string> names;  // Key: thread.
    std::map<int, std::string> kinds;  // Key: thread.

    /** As a list of steps that a person can read. */
    std::string story() const;
    /** As what `replay` takes: numbers of threads, each with how many steps it goes on. */
    std::string order() const;
};

/** The thread that runs, if it can go on. */
int stay(const std::vector<int>& enabled, int running);

Run runOnce(const Scenario& scenario, const Machine::Choose& choose);
Run replay(const Scenario& scenario, const std::string& order);

/** Where an operation was interrupted, and by what, so that this could be seen afterwards. */
struct Interruption {
    std::string victim;               ///< The kind of the operation,
    std::string step;                 ///< before that step of it,
    std::set<std::string> intruders;  ///< by operations of these kinds.
};

/** Those of the order with the fewest, of all that are the same as a run. */
std::vector<Interruption> fewestInterruptions(const Run& run);

/** An outcome that no order of whole operations has. */
struct Exception {
    std::string scenario;
    Run run;                                  ///< The first one that was found,
    std::vector<Interruption> interruptions;  ///< and the fewest that lead to the outcome.
};

struct Exploration {
    size_t orders = 0;
    size_t deepest = 0;
    double seconds = 0;
    bool all = false;              ///< Every order, or one that is the same, was tried;
    int interruptions = 0;         ///< or all with up to so many interruptions, and random ones.
    std::set<std::string> serial;  ///< Outcomes of whole operations.
    std::map<std::string, Exception> exceptions;  // Key: outcome.
    std::set<std::string> outcomes;               ///< All of them.
    std::vector<Run> failures;                    ///< The first run with findings; it is the last.
};

struct Limits {
    size_t orders = 1000;  ///< Before they are too many,
    size_t others = 1000;  ///< and then of each other way to choose them.
    unsigned seed = 1;
};

/** Enough for all orders of nearly every two operations. */
constexpr Limits kInTheTests = {600, 300, 1};

/**
 * Tries all orders. If they are too many: all with one interruption, with two and with three, as
 * far as they are not too many, and random ones.
 */
Exploration explore(const Scenario& scenario, const Limits& limits);

/** Of orders that are the same, too: for small scenarios, to prove the above. */
std::set<std::string> outcomesOfAllOrders(const Scenario& scenario);

}  // namespace orvo::interleavings
