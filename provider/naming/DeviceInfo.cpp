// SPDX-License-Identifier: Apache-2.0
// Takes camera device names apart.

#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {

bool parseDeviceString(const std::string& name, DeviceInfo& info) {
    info = DeviceInfo();

    const size_t at = name.find('@');
    if (at == std::string::npos) return false;
    info.prefix = name.substr(0, at);

    const size_t versionEnd = name.find('/', at + 1);
    if (versionEnd == std::string::npos) return false;
    info.version = name.substr(at + 1, versionEnd - at - 1);

    const size_t typeEnd = name.find('/', versionEnd + 1);
    if (typeEnd == std::string::npos) {
        info.type = name.substr(versionEnd + 1);
        return true;
    }
    info.type = name.substr(versionEnd + 1, typeEnd - versionEnd - 1);
    info.id = name.substr(typeEnd + 1);
    return true;
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
