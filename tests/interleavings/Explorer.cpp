// SPDX-License-Identifier: Apache-2.0
// Depth first, by replay, leaving out what is provably the same.
//
// Two steps that do not conflict can change places, next to each other, without anybody seeing it:
// each reads what it would have read, and leaves what it would have left. Orders that differ only
// in such changes are the same, and one of them is enough. Which ones to try is found as in dynamic
// partial order reduction: wherever a step conflicts with an earlier one of another thread, and
// nothing else put them in that order, the other order is tried, too; and what was tried from some
// point on is not tried again until something conflicts with it ("sleep sets").
//
// What a call touches outside, its fake says. What the library touches of its own between two calls
// is taken to be all unlocked members that an operation of its kind may touch; a change of any
// other one is a finding, and a test compares this with what comes of it if all may be touched. The
// active devices are touched under the lock only: a change without it is a finding, and locks
// conflict. Whether somebody holds what is called is read by the call, and written where the last
// one lets go. The rest of what a thread touches is its own.

#include "tests/interleavings/Explorer.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <sstream>

#include "tests/interleavings/World.h"

namespace orvo::interleavings {
namespace {

/** What is known of the orders that begin with the steps before this one. */
struct Node {
    int chosen = -1;
    Threads enabled;
    Threads wanted;                ///< To be tried from here.
    std::map<int, Step> tried;     // Key: thread. Value: its step from here.
    std::map<int, Step> sleeping;  // The same, of those that need not be tried.
};

class Search {
  public:
    explicit Search(const Scenario& scenario) : mScenario(scenario) {}

    /** Runs the next order; false when it was the last one. */
    template <typename OnRun>
    bool next(const OnRun& onRun) {
        size_t depth = 0;
        bool redundant = false;
        Run run = runOnce(mScenario, [&](const std::vector<int>& enabled, int running,
                                         const std::vector<Step>& steps) {
            if (depth < mNodes.size()) return mNodes[depth++].chosen;
            if (!redundant) {
                const int chosen = extend(enabled, running, steps);
                if (chosen >= 0) {
                    ++depth;
                    return chosen;
                }
                redundant = true;
            }
            return stay(enabled, running);
        });
        for (size_t i = 0; i < mNodes.size(); ++i) {
            mNodes[i].tried[mNodes[i].chosen] = run.steps[i];
        }
        findConflicts(run);
        onRun(run);
        return advance();
    }

  private:
    int extend(const std::vector<int>& enabled, int running, const std::vector<Step>& steps) {
        Node node;
        if (!mNodes.empty()) {
            const Node& last = mNodes.back();
            const Step& taken = steps.back();
            for (const auto* const asleep : {&last.sleeping, &last.tried}) {
                for (const auto& [thread, step] : *asleep) {
                    if (thread != last.chosen && !conflict(step, taken)) {
                        node.sleeping[thread] = step;
                    }
                }
            }
        }
        std::vector<int> awake;
        for (const int thread : enabled) {
            node.enabled.set(thread);
            if (node.sleeping.count(thread) == 0) awake.push_back(thread);
        }
        if (awake.empty()) return -1;
        node.chosen = stay(awake, running);
        node.wanted.set(node.chosen);
        mNodes.push_back(std::move(node));
        return mNodes.back().chosen;
    }

    // Asks for the other order of each pair that is in this one by chance.
    void findConflicts(const Run& run) {
        using Clock = std::vector<int>;  // Of each thread: how many of its steps.
        std::map<int, size_t> columns;   // Key: thread. Value: its place in a clock.
        for (const auto& [thread, name] : run.names) columns.emplace(thread, columns.size());
        std::vector<Clock> clocks(columns.size(), Clock(columns.size()));  // What was before.
        std::vector<Clock> after;                                          // Of each step.
        std::vector<size_t> column;  // Of each step: its thread's,
        std::vector<int> place;      // and its number among those of the thread, from 1.
        for (size_t i = 0; i < run.steps.size() + run.pending.size(); ++i) {
            const bool taken = i < run.steps.size();
            const Step& step = taken ? run.steps[i] : run.pending[i - run.steps.size()];
            const size_t own = columns.at(step.thread);
            Clock& clock = clocks[own];
            for (size_t j = after.size(); j-- > 0;) {
                const Step& earlier = run.steps[j];
                if (column[j] == own || !conflict(earlier, step)) continue;
                if (earlier.releases != nullptr || place[j] <= clock[column[j]]) continue;
                if (j < mNodes.size()) want(mNodes[j], step.thread);
                break;
            }
            if (!taken) continue;
            for (size_t j = 0; j < i; ++j) {
                if (!conflict(run.steps[j], step)) continue;
                for (size_t k = 0; k < clock.size(); ++k) {
                    clock[k] = std::max(clock[k], after[j][k]);
                }
            }
            column.push_back(own);
            place.push_back(++clock[own]);
            after.push_back(clock);
            if (step.started >= 0) clocks[columns.at(step.started)] = clock;
        }
    }

    static void want(Node& node, int thread) {
        if (node.enabled.test(thread)) {
            node.wanted.set(thread);
        } else {
            node.wanted |= node.enabled;
        }
    }

    bool advance() {
        while (!mNodes.empty()) {
            Node& node = mNodes.back();
            for (size_t thread = 0; thread < node.wanted.size(); ++thread) {
                const int number = static_cast<int>(thread);
                if (!node.wanted.test(thread) || node.tried.count(number) > 0 ||
                    node.sleeping.count(number) > 0) {
                    continue;
                }
                node.chosen = number;
                return true;
            }
            mNodes.pop_back();
        }
        return false;
    }

    const Scenario& mScenario;
    std::vector<Node> mNodes;
};

// Every order with so many interruptions, up to a number of orders. A thread is interrupted after
// steps that others could see only: anywhere else it makes no difference. -1: any number of them,
// anywhere.
template <typename OnRun>
bool tryAll(const Scenario& scenario, int interruptions, size_t most, const OnRun& onRun) {
    std::vector<std::pair<size_t, size_t>> choices;  // Which one, of how many.
    for (size_t orders = 0; orders < most; ++orders) {
        size_t depth = 0;
        int left = interruptions;
        onRun(runOnce(scenario,
                      [&](std::vector<int> enabled, int running, const std::vector<Step>& steps) {
                          const auto own = std::find(enabled.begin(), enabled.end(), running);
                          if (own != enabled.end()) {
                              const bool isSeen = (steps.back().reads | steps.back().writes) != 0;
                              if (left == 0 || (left > 0 && !isSeen)) return running;
                              std::iter_swap(enabled.begin(), own);
                          }
                          if (depth == choices.size()) choices.emplace_back(0, enabled.size());
                          const int chosen = enabled[choices[depth++].first];
                          if (own != enabled.end() && chosen != running) --left;
                          return chosen;
                      }));
        while (!choices.empty() && ++choices.back().first == choices.back().second) {
            choices.pop_back();
        }
        if (choices.empty()) return true;
    }
    return false;
}

void judge(const Scenario& scenario, const Run& run, Exploration& found) {
    if (!run.findings.empty()) found.failures.push_back(run);
    if (found.serial.count(run.outcome) > 0) return;
    const auto known = found.exceptions.find(run.outcome);
    if (known != found.exceptions.end() && known->second.interruptions.size() <= 1) return;
    const std::vector<Interruption> interruptions = fewestInterruptions(run);
    if (known != found.exceptions.end() &&
        known->second.interruptions.size() <= interruptions.size()) {
        return;
    }
    found.exceptions[run.outcome] = {scenario.text(), run, interruptions};
}

}  // namespace

std::string Run::story() const {
    std::string text;
    for (const Step& step : steps) {
        if (step.kind == "go on") continue;
        text += "  " + names.at(step.thread) + ": " + step.kind;
        if (!step.detail.empty()) text += " " + step.detail;
        text += "\n";
    }
    return text;
}

std::string Run::order() const {
    std::string text;
    for (size_t i = 0; i < steps.size();) {
        size_t end = i;
        while (end < steps.size() && steps[end].thread == steps[i].thread) ++end;
        if (!text.empty()) text += ",";
        text += std::to_string(steps[i].thread) + "x" + std::to_string(end - i);
        i = end;
    }
    return text;
}

int stay(const std::vector<int>& enabled, int running) {
    const bool can = std::find(enabled.begin(), enabled.end(), running) != enabled.end();
    return can ? running : enabled.front();
}

Run runOnce(const Scenario& scenario, const Machine::Choose& choose) {
    Machine machine;
    World world(scenario, machine);
    machine.run(choose);
    Run run;
    run.outcome = world.outcome();
    world.close();
    run.steps = machine.steps();
    run.pending = machine.pending();
    run.findings = machine.findings();
    for (const auto* const steps : {&run.steps, &run.pending}) {
        for (const Step& step : *steps) {
            run.names[step.thread] = machine.name(step.thread);
            run.kinds[step.thread] = machine.kind(step.thread);
        }
    }
    return run;
}

Run replay(const Scenario& scenario, const std::string& order) {
    std::istringstream stream(order);
    int thread = -1;
    int left = 0;
    return runOnce(scenario,
                   [&](const std::vector<int>& enabled, int running, const std::vector<Step>&) {
                       char separator;
                       if (left == 0) {
                           stream >> thread >> separator >> left;
                           stream >> separator;
                       }
                       if (left > 0) --left;
                       return stay(enabled, left >= 0 && stream ? thread : stay(enabled, running));
                   });
}

std::set<std::string> outcomesOfAllOrders(const Scenario& scenario) {
    std::set<std::string> outcomes;
    tryAll(scenario, -1, -1, [&](const Run& run) { outcomes.insert(run.outcome); });
    return outcomes;
}

Exploration explore(const Scenario& scenario, const Limits& limits) {
    const auto begin = std::chrono::steady_clock::now();
    Exploration found;
    tryAll(scenario, 0, -1, [&](const Run& run) { found.serial.insert(run.outcome); });
    const auto onRun = [&](const Run& run) {
        ++found.orders;
        found.outcomes.insert(run.outcome);
        found.deepest = std::max(found.deepest, run.steps.size());
        judge(scenario, run, found);
    };
    Search search(scenario);
    bool more = true;
    while (more && found.failures.empty() && found.orders < limits.orders) {
        more = search.next(onRun);
    }
    found.all = !more;
    more = more && found.failures.empty();
    for (int interruptions = 1; more && interruptions <= 3; ++interruptions) {
        if (!tryAll(scenario, interruptions, limits.others, onRun)) break;
        found.interruptions = interruptions;
    }
    std::minstd_rand random(limits.seed);
    for (size_t i = 0; more && i < limits.others; ++i) {
        onRun(runOnce(scenario,
                      [&](const std::vector<int>& enabled, int running, const std::vector<Step>&) {
                          if (random() % 4 > 0) return stay(enabled, running);
                          return enabled[random() % enabled.size()];
                      }));
    }
    found.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return found;
}

}  // namespace orvo::interleavings
