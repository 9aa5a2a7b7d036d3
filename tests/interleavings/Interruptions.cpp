// SPDX-License-Identifier: Apache-2.0
// Finds, among all orders that are the same as one, one with the fewest interruptions.

#include <map>
#include <set>
#include <utility>

#include "tests/interleavings/Explorer.h"

namespace orvo::interleavings {
namespace {

/** Which steps have to come before which in the orders that are the same as a run. */
class Equivalents {
  public:
    explicit Equivalents(const Run& run) : mRun(run) {
        for (const auto& [thread, name] : run.names) mColumns.emplace(thread, mColumns.size());
        mSteps.resize(mColumns.size());
        for (size_t i = 0; i < run.steps.size(); ++i) {
            mSteps[column(i)].push_back(i);
            for (size_t j = 0; j < i; ++j) {
                if (conflict(run.steps[j], run.steps[i]) ||
                    run.steps[j].started == run.steps[i].thread) {
                    mEarlier[i].push_back(j);
                }
            }
        }
    }

    /** The interruptions of one of those with the fewest. */
    std::vector<Interruption> fewest() {
        for (int most = 0;; ++most) {
            mSeen.clear();
            mFound.clear();
            if (visit(Places(mSteps.size()), mSteps.size(), most)) return mFound;
        }
    }

  private:
    using Places = std::vector<size_t>;  // Of each thread: its next step.

    size_t column(size_t step) const { return mColumns.at(mRun.steps[step].thread); }

    // The steps that have to be taken before the next one of a thread.
    std::vector<size_t> missing(const Places& places, size_t thread) const {
        const size_t next = mSteps[thread][places[thread]];
        const auto earlier = mEarlier.find(next);
        std::vector<size_t> found;
        if (earlier == mEarlier.end()) return found;
        for (const size_t step : earlier->second) {
            const auto& all = mSteps[column(step)];
            const size_t place = places[column(step)];
            if (place < all.size() && all[place] <= step) found.push_back(step);
        }
        return found;
    }

    // Goes on with a thread for as long as it can: to stop it earlier never saves an interruption,
    // as what it does allows the others only more.
    bool visit(Places places, size_t running, int left) {
        const bool begins = running == mSteps.size();
        std::vector<size_t> missed;
        while (!begins && places[running] < mSteps[running].size()) {
            missed = missing(places, running);
            if (!missed.empty()) break;
            ++places[running];
        }
        const bool interrupted = !begins && places[running] < mSteps[running].size();
        if (interrupted && left == 0) return false;
        if (!mSeen.insert({places, left - interrupted}).second) return false;
        if (interrupted) mFound.push_back(describe(mSteps[running][places[running]], missed));
        bool over = true;
        for (size_t thread = 0; thread < mSteps.size(); ++thread) {
            if (places[thread] == mSteps[thread].size()) continue;
            over = false;
            if (thread == running || !missing(places, thread).empty()) continue;
            if (visit(places, thread, left - interrupted)) return true;
        }
        if (interrupted) mFound.pop_back();
        return over;
    }

    Interruption describe(size_t step, const std::vector<size_t>& missed) const {
        const Step& next = mRun.steps[step];
        std::string kind = next.kind;
        for (size_t i = step; kind == "go on" && i-- > 0;) {
            if (mRun.steps[i].thread == next.thread) kind = "after " + mRun.steps[i].kind;
        }
        std::set<std::string> intruders;
        for (const size_t one : missed) intruders.insert(mRun.kinds.at(mRun.steps[one].thread));
        return {mRun.kinds.at(next.thread), kind, intruders};
    }

    const Run& mRun;
    std::map<int, size_t> mColumns;                  // Key: thread.
    std::vector<std::vector<size_t>> mSteps;         // Of each thread.
    std::map<size_t, std::vector<size_t>> mEarlier;  // Key: step.
    std::set<std::pair<Places, int>> mSeen;
    std::vector<Interruption> mFound;
};

}  // namespace

std::vector<Interruption> fewestInterruptions(const Run& run) {
    return Equivalents(run).fewest();
}

}  // namespace orvo::interleavings
