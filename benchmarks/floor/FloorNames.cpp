// SPDX-License-Identifier: Apache-2.0
// Device names and id properties at the floor.

#include <string.h>

#include <android/log.h>
#include <cutils/properties.h>

#include "benchmarks/floor/FloorLog.h"
#include "benchmarks/floor/FloorProvider.h"

namespace orvo::benchmarks {

// Looks at each character once, and copies nothing.
NameParts::NameParts(std::string_view name) {
    const size_t at = name.find('@');
    const size_t versionEnd = name.find('/', at + 1);
    const size_t typeEnd = name.find('/', versionEnd + 1);
    prefix = name.substr(0, at);
    version = name.substr(at + 1, versionEnd - at - 1);
    type = name.substr(versionEnd + 1, typeEnd - versionEnd - 1);
    id = name.substr(typeEnd + 1);
}

// Unavoidable: the look-up among the active devices under their lock. The map's own key type makes
// a string of the framework's name, and the provider's name is copied, as the lock does not
// outlast the look-up.
std::string FloorProvider::providerNameOf(const hidl_string& frameworkName) {
    const std::string key(frameworkName.c_str(), frameworkName.size());
    const NameParts parts(key);
    if (parts.prefix.empty() || parts.version.empty() || parts.type.empty() || parts.id.empty()) {
        return key;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    return mActiveDevices[key];
}

// Unavoidable: the line, and one string of the right size.
std::string FloorProvider::frameworkNameOf(const std::string& providerName) const {
    __android_log_print(ANDROID_LOG_INFO, kTag, "providerDeviceNameToAndroidDeviceName %s",
                        providerName.c_str());
    const NameParts parts(providerName);
    std::string result;
    result.reserve(providerName.size() - parts.type.size() + mType.size());
    result.append(parts.prefix).append(1, '@').append(parts.version).append(1, '/');
    result.append(mType).append(1, '/').append(parts.id);
    return result;
}

namespace {

std::string propertyOf(std::string_view type) {
    std::string name;
    name.reserve(strlen("camera..ids") + type.size());
    name.append("camera.").append(type).append(".ids");
    return name;
}

}  // namespace

// Unavoidable: one string for the property's name, and one for a value that grows, as neither has
// a greatest length; a read and a write.
void appendIdAtFloor(std::string_view type, std::string_view id) {
    const std::string name = propertyOf(type);
    char value[PROPERTY_VALUE_MAX];
    const int size = property_get(name.c_str(), value, "");
    if (size == 0) {
        property_set(name.c_str(), id.data());
        return;
    }
    std::string longer;
    longer.reserve(size + strlen(", ") + id.size());
    longer.append(value, size).append(", ").append(id);
    property_set(name.c_str(), longer.c_str());
}

// Unavoidable: one string for the property's name; a read, and a write of what was edited in place.
void removeIdAtFloor(std::string_view type, std::string_view id) {
    const std::string name = propertyOf(type);
    char value[PROPERTY_VALUE_MAX];
    const int read = property_get(name.c_str(), value, "");
    if (read == 0) return;
    size_t size = static_cast<size_t>(read);
    const size_t position = std::string_view(value, size).find(id);
    if (position != std::string_view::npos) {
        size_t end = position + id.size();
        if (end < size && value[end] == ',') end = end + 2 < size ? end + 2 : size;
        memmove(value + position, value + end, size - end);
        size -= end - position;
    }
    if (size > 0 && value[size - 1] == ' ') --size;
    if (size > 0 && value[size - 1] == ',') --size;
    value[size] = '\0';
    property_set(name.c_str(), value);
}

}  // namespace orvo::benchmarks
