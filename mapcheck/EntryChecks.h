// SPDX-License-Identifier: Apache-2.0
// What can be said about the entries of a map from one another and from the device around them.
#pragma once

#include <vector>

#include "mapcheck/Finding.h"
#include "mapcheck/Manifest.h"
#include "mapcheck/MapFile.h"
#include "mapcheck/Providers.h"

namespace orvo::mapcheck {

/** What is known about the device that the map is for. */
struct Surroundings {
    const Manifest* manifest = nullptr;  ///< Null if it was not given.
    Providers providers;
};

/** Checks all entries, each against the others, in a time linear in their number. */
void checkEntries(const std::vector<MapEntry>& entries, const Surroundings& surroundings,
                  Findings* findings);

}  // namespace orvo::mapcheck
