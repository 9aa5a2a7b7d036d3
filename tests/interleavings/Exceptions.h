// SPDX-License-Identifier: Apache-2.0
// The outcomes that no order of whole operations has, and that the required behaviour brings along.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/interleavings/Explorer.h"

namespace orvo::interleavings {

/** One kind of them. */
struct KnownException {
    std::string title;
    std::string what;  ///< Happens, in a sentence.
    std::string seen;  ///< By a user.
    std::string rule;  ///< Of the required behaviour, that brings it along.
    /** Victims, steps and intruders, each "a|b" or "*"; "!" in front: only if the process ends. */
    std::vector<std::string> patterns;
};

const std::vector<KnownException>& knownExceptions();

/** What exploring scenarios came to. */
class Findings {
  public:
    void add(const Scenario& scenario, const Exploration& exploration);

    /** Runs that broke a rule, and outcomes that are not in the list: story and order. */
    std::vector<std::string> broken;
    /** Key: title. Value: the one with the fewest interruptions and steps. */
    std::map<std::string, Exception> seen;
    size_t scenarios = 0;
    /** Scenarios of which not every order was tried, by Exploration::interruptions. */
    std::map<int, size_t> incomplete;
    size_t orders = 0;
    size_t deepest = 0;
    double seconds = 0;
};

/** The known ones with their shortest orders, as a chapter of a document. */
std::string chapter(const Findings& findings);

}  // namespace orvo::interleavings
