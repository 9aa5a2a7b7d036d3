// SPDX-License-Identifier: Apache-2.0
// Takes camera device names apart.

#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {

bool splitDeviceName(std::string_view name, DeviceNameParts& parts) {
    parts = DeviceNameParts();

    const size_t at = name.find('@');
    if (at == std::string_view::npos) return false;
    parts.prefix = name.substr(0, at);

    const size_t versionEnd = name.find('/', at + 1);
    if (versionEnd == std::string_view::npos) return false;
    parts.version = name.substr(at + 1, versionEnd - at - 1);

    // Without a third separator, the type goes on to the end, and there is no id.
    const size_t typeEnd = name.find('/', versionEnd + 1);
    parts.type = name.substr(versionEnd + 1, typeEnd - versionEnd - 1);
    if (typeEnd != std::string_view::npos) parts.id = name.substr(typeEnd + 1);
    return true;
}

bool parseDeviceString(const std::string& name, DeviceInfo& info) {
    DeviceNameParts parts;
    const bool parsed = splitDeviceName(name, parts);
    info = {std::string(parts.prefix), std::string(parts.version), std::string(parts.type),
            std::string(parts.id)};
    return parsed;
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
