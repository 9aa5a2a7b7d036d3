// SPDX-License-Identifier: Apache-2.0
// Explores by hand.
//
//     interleavings explore [COUNT PART PARTS]  every two (COUNT) operations, or a part of them
//     interleavings scenario "2cp +01 D0"       one scenario
//     interleavings replay "2cp +01 D0" ORDER   one order of it, step by step
//     interleavings chapter                     what docs/reliability.md says of the exceptions
//     interleavings corpus DIRECTORY            the shortest order of each for the fuzzer

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "tests/interleavings/Exceptions.h"
#include "tests/interleavings/Input.h"
#include "tests/support/OneProcessor.h"

namespace {

using namespace orvo::interleavings;

int report(const Findings& findings) {
    for (const std::string& one : findings.broken) printf("%s\n\n", one.c_str());
    for (const auto& [title, example] : findings.seen) {
        printf("%-40s %s  %s\n", title.c_str(), example.scenario.c_str(),
               example.run.order().c_str());
    }
    for (const auto& [interruptions, scenarios] : findings.incomplete) {
        printf("%zu scenarios not in every order: all with up to %d interruptions, random ones\n",
               scenarios, interruptions);
    }
    printf("%zu scenarios, %zu orders, the deepest of %zu steps, in %.0f s: %zu findings\n",
           findings.scenarios, findings.orders, findings.deepest, findings.seconds,
           findings.broken.size());
    return findings.broken.empty() ? 0 : 1;
}

Findings exploreAll(int count, size_t part, size_t parts, const Limits& limits) {
    Findings findings;
    const std::vector<Scenario> all = scenariosOf(count);
    for (size_t i = part; i < all.size(); i += parts) findings.add(all[i], explore(all[i], limits));
    return findings;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.empty()) return 2;
    const bool isPart = words[0] == "explore" && words.size() == 4;
    if (isPart) {
        orvo::test::runOnOneProcessor(atoi(words[2].c_str()));
    } else {
        orvo::test::runOnOneProcessor();
    }
    if (words[0] == "chapter") {
        printf("%s", chapter(exploreAll(2, 0, 1, kInTheTests)).c_str());
        return 0;
    }
    if (words[0] == "corpus" && words.size() == 2) {
        for (const auto& [title, example] : exploreAll(2, 0, 1, kInTheTests).seen) {
            std::string name = title;
            std::transform(name.begin(), name.end(), name.begin(), tolower);
            std::replace(name.begin(), name.end(), ' ', '-');
            name.erase(std::remove(name.begin(), name.end(), ','), name.end());
            std::ofstream(words[1] + "/" + name)
                    << inputOf(*Scenario::fromText(example.scenario), example.run);
        }
        return 0;
    }
    if (isPart) {
        const int count = atoi(words[1].c_str());
        return report(exploreAll(count, atoi(words[2].c_str()), atoi(words[3].c_str()),
                                 count == 2 ? Limits{20000, 5000, 1} : Limits{2500, 2500, 1}));
    }
    const auto scenario = words.size() > 1 ? Scenario::fromText(words[1]) : std::nullopt;
    if (!scenario) {
        fprintf(stderr, "interleavings: explore, scenario, replay or chapter; see Main.cpp\n");
        return 2;
    }
    if (words[0] == "scenario") {
        Findings findings;
        findings.add(*scenario, explore(*scenario, {20000, 5000, 1}));
        return report(findings);
    }
    const Run run = replay(*scenario, words.size() > 2 ? words[2] : "");
    printf("%s%s", run.story().c_str(), run.outcome.c_str());
    for (const std::string& finding : run.findings) printf("%s\n", finding.c_str());
    return run.findings.empty() ? 0 : 1;
}
