// SPDX-License-Identifier: Apache-2.0
// The process-wide camera id tables that the library builds when it is loaded.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace android::hardware::camera::provider::V2_4::implementation {

/** Key: a provider instance name. Value: camera ids, in order, not necessarily distinct. */
using DeviceMap = std::map<std::string, std::vector<std::string>>;

// Empty and false, for other modules of the process to find by name. The library writes them, and
// the table of known ids that is local to the source file, while it is loaded, and reads none.
extern DeviceMap gDeviceMap __attribute__((visibility("default")));
extern bool gParseFlag __attribute__((visibility("default")));

}  // namespace android::hardware::camera::provider::V2_4::implementation
