// SPDX-License-Identifier: Apache-2.0
// What can be said about the entries of a map from one another and from the device around them.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "mapcheck/Finding.h"
#include "mapcheck/MapFile.h"
#include "mapcheck/Providers.h"

namespace orvo::mapcheck {

/** What is known about the device that the map is for. */
struct Surroundings {
    /** The instances that its manifest declares; nothing if no manifest was given. */
    std::optional<std::set<std::string>> declared;
    Providers providers;
};

/** Checks all entries, each against the others, in a time linear in their number. */
void checkEntries(const std::vector<MapEntry>& entries, const Surroundings& surroundings,
                  Findings* findings);

}  // namespace orvo::mapcheck
