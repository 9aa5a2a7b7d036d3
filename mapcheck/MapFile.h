// SPDX-License-Identifier: Apache-2.0
// The replacement map as the library's own reader takes it, with the lines that this does not keep.
#pragma once

#include <string>
#include <vector>

#include "mapcheck/Finding.h"

namespace orvo::mapcheck {

/** One entry that the library accepts. */
struct MapEntry {
    long line;
    std::string key;    ///< The instance, exactly as the library takes it.
    std::string value;  ///< The provider behind it, exactly as the library takes it.
};

struct MapFile {
    bool usable;                    ///< False: the library loads nothing from it.
    std::vector<MapEntry> entries;  ///< In the order of the file.

    /**
     * Reads the map. Adds to `findings` why the file is not usable, or what of it the library
     * ignores.
     */
    static MapFile read(const std::string& path, Findings* findings);
};

}  // namespace orvo::mapcheck
