// SPDX-License-Identifier: Apache-2.0
// What is known about the providers behind a map.
#pragma once

#include <stdint.h>

#include <map>
#include <string>
#include <vector>

namespace orvo::mapcheck {

struct VendorTag {
    uint32_t id;
    std::string name;  ///< With that of its section before it.
};

struct Provider {
    std::vector<std::string> devices;  ///< The device names that it reports.
    std::vector<VendorTag> vendorTags;
};

/** Key: a provider's instance. */
using Providers = std::map<std::string, Provider>;

}  // namespace orvo::mapcheck
