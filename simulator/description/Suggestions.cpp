// SPDX-License-Identifier: Apache-2.0
// Suggestions: similar is what takes few letters to change.

#include "simulator/description/Suggestions.h"

#include <algorithm>

#include <android-base/strings.h>

namespace orvo::simulator {

namespace {

constexpr size_t kHandful = 6;
/** A longer name is told from others by its beginning. */
constexpr size_t kLongest = 64;

/** How many letters have to be added, taken out or replaced. */
size_t distance(const std::string& from, const std::string& to) {
    const std::string a = from.substr(0, kLongest), b = to.substr(0, kLongest);
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); j++) row[j] = j;
    for (size_t i = 1; i <= a.size(); i++) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); j++) {
            const size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row[b.size()];
}

}  // namespace

std::string someOf(std::vector<std::string> names, const std::string& meant) {
    if (names.size() <= kHandful) return android::base::Join(names, ", ");
    std::vector<std::pair<size_t, std::string>> ranked;
    ranked.reserve(names.size());
    for (std::string& name : names) ranked.emplace_back(distance(name, meant), std::move(name));
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::string text = ranked[0].second;
    for (size_t i = 1; i < kHandful; i++) text += ", " + ranked[i].second;
    return text + " and " + std::to_string(ranked.size() - kHandful) + " more";
}

}  // namespace orvo::simulator
