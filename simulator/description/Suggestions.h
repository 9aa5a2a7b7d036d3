// SPDX-License-Identifier: Apache-2.0
// Suggestions: names that somebody may have meant by one that is not there.

#pragma once

#include <string>
#include <vector>

namespace orvo::simulator {

/** A handful of names, the most similar first, such as "ps, props and 12 more"; "" if none is. */
std::string someOf(std::vector<std::string> names, const std::string& meant);

}  // namespace orvo::simulator
