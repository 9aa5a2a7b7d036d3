// SPDX-License-Identifier: Apache-2.0
// The parts of a camera device name and of a provider's instance name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace android::hardware::camera::provider::V2_4::implementation {

/** The parts of a device name, valid for as long as it is. In "device@3.2/legacy/0" they are: */
struct DeviceNameParts {
    std::string_view prefix;   ///< Before the first "@": "device".
    std::string_view version;  ///< From there to the next "/": "3.2". Text, never a number.
    std::string_view type;     ///< From there to the next "/" or the end: "legacy".
    std::string_view id;       ///< All the rest, further "/" included: "0".
};

/** The same parts, to keep. */
struct DeviceInfo {
    std::string prefix, version, type, id;
};

/**
 * Splits `name` at its first "@" and the two "/" after it; the one place that does.
 *
 * `parts` is cleared first; on false it keeps the parts reached before the separator that was
 * missing. True as soon as there is an "@" and a "/" after it: no part is checked for its content,
 * not even for being empty, because each caller wants something else of it. Never logs or throws.
 */
bool splitDeviceName(std::string_view name, DeviceNameParts& parts);

/** The same with copies, for tools; they would make looking a camera up a third dearer. */
bool parseDeviceString(const std::string& name, DeviceInfo& info);

/** The type of a provider instance, "legacy" of "legacy/0"; nothing if the name has no "/". */
inline std::optional<std::string> typeOfInstance(const std::string& instanceName) {
    const size_t slash = instanceName.find('/');
    if (slash == std::string::npos) return std::nullopt;
    return instanceName.substr(0, slash);
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
