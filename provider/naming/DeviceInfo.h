// SPDX-License-Identifier: Apache-2.0
// The four parts of a camera device name, and the one place that takes such names apart.
#pragma once

#include <string>
#include <string_view>

namespace android::hardware::camera::provider::V2_4::implementation {

/** The parts of a device name; the examples are those of "device@3.2/legacy/0". */
struct DeviceInfo {
    std::string prefix;   ///< Before the first "@": "device".
    std::string version;  ///< From there to the next "/": "3.2". Text, never a number.
    std::string type;     ///< From there to the next "/" or the end: "legacy".
    std::string id;       ///< All the rest, further "/" included: "0".
};

/** The same parts in place: valid for as long as the characters of the name are. */
struct DeviceNameParts {
    std::string_view prefix;
    std::string_view version;
    std::string_view type;
    std::string_view id;
};

/**
 * Splits `name` at its first "@" and the two "/" after it.
 *
 * `parts` is cleared first; on false it keeps the parts reached before the separator that was
 * missing. True as soon as there is an "@" and a "/" after it: no part is checked for its content,
 * not even for being empty, because each caller wants something else of it. Reads and writes its
 * arguments only, so it may run on any thread and under any lock. Never logs, never throws.
 */
bool splitDeviceName(std::string_view name, DeviceNameParts& parts);

/** As splitDeviceName, with copies of the parts. */
bool parseDeviceString(const std::string& name, DeviceInfo& info);

}  // namespace android::hardware::camera::provider::V2_4::implementation
