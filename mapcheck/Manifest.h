// SPDX-License-Identifier: Apache-2.0
// The camera provider instances that a device's manifest files declare.
#pragma once

#include <set>
#include <string>

#include "mapcheck/Finding.h"

namespace orvo::mapcheck {

class Manifest {
  public:
    /**
     * Adds what a device manifest or a fragment of one declares. False, after a finding, when the
     * file is none; the rest of such a file is not looked at.
     */
    bool addFile(const std::string& path, Findings* findings);

    /** Whether the library can find an underlying provider of that name. */
    bool declares(const std::string& instance) const { return mInstances.count(instance) != 0; }

  private:
    std::set<std::string> mInstances;
};

}  // namespace orvo::mapcheck
