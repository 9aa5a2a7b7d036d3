// SPDX-License-Identifier: Apache-2.0
// What can be said about the entries of a map from one another and from the device around them.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "mapcheck/Finding.h"
#include "mapcheck/Manifest.h"
#include "mapcheck/MapFile.h"

namespace orvo::mapcheck {

/** What is known about the device that the map is for. */
struct Surroundings {
    const Manifest* manifest = nullptr;  ///< Null if it was not given.
    /** Key: a provider's instance. Value: the device names that it reports. */
    std::map<std::string, std::vector<std::string>> devices;
};

/** Checks all entries, each against the others, in a time linear in their number. */
void checkEntries(const std::vector<MapEntry>& entries, const Surroundings& surroundings,
                  Findings* findings);

}  // namespace orvo::mapcheck
