// SPDX-License-Identifier: Apache-2.0
// The four parts of a camera device name, and the one place that takes such names apart.
#pragma once

#include <string>

namespace android::hardware::camera::provider::V2_4::implementation {

/** The parts of a device name; the examples are those of "device@3.2/legacy/0". */
struct DeviceInfo {
    std::string prefix;   ///< Before the first "@": "device".
    std::string version;  ///< From there to the next "/": "3.2". Text, never a number.
    std::string type;     ///< From there to the next "/" or the end: "legacy".
    std::string id;       ///< All the rest, further "/" included: "0".
};

/**
 * Splits `name` at its first "@" and the two "/" after it.
 *
 * `info` is cleared first; on false it keeps the parts reached before the separator that was
 * missing. True as soon as there is an "@" and a "/" after it: no part is checked for its content,
 * not even for being empty, because each caller wants something else of it. Reads and writes its
 * arguments only, so it may run on any thread and under any lock. Never logs, never throws.
 */
bool parseDeviceString(const std::string& name, DeviceInfo& info);

}  // namespace android::hardware::camera::provider::V2_4::implementation
