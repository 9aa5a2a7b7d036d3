// SPDX-License-Identifier: Apache-2.0
// The process-wide camera id tables that the library builds when it is loaded.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace android::hardware::camera::provider::V2_4::implementation {

/** Key: a provider instance name. Value: camera ids, in order, not necessarily distinct. */
using DeviceMap = std::map<std::string, std::vector<std::string>>;

/*
 * Both, and the table of the known providers' ids that is local to the source file, are written
 * while the library is loaded and by nothing in it after that, so they are read without a lock.
 * Nothing here reads them either: device names are translated without a table, and the id
 * properties list what the providers report.
 */

/** Empty. Exported, for other modules of the process to find by name. */
extern DeviceMap gDeviceMap __attribute__((visibility("default")));

/** False. Exported, for other modules of the process to find by name. */
extern bool gParseFlag __attribute__((visibility("default")));

}  // namespace android::hardware::camera::provider::V2_4::implementation
