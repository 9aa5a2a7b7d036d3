// SPDX-License-Identifier: Apache-2.0
// Edits the camera id properties.

#include "provider/naming/CameraIdProperty.h"

#include <string.h>

#include <algorithm>
#include <array>

#include <cutils/properties.h>

namespace android::hardware::camera::provider::V2_4::implementation {
namespace {

using PropertyValue = std::array<char, PROPERTY_VALUE_MAX>;

// The size of the value, which ends with a NUL.
size_t readProperty(const std::string& name, PropertyValue& value) {
    property_get(name.c_str(), value.data(), "");
    return strlen(value.data());
}

}  // namespace

std::string cameraIdProperty(std::string_view type) {
    constexpr std::string_view kPrefix = "camera.";
    constexpr std::string_view kSuffix = ".ids";
    std::string name;
    name.reserve(kPrefix.size() + type.size() + kSuffix.size());
    name.append(kPrefix).append(type).append(kSuffix);
    return name;
}

void appendCameraIdToSystemProperty(std::string_view type, std::string_view id) {
    constexpr std::string_view kSeparator = ", ";
    const std::string name = cameraIdProperty(type);
    PropertyValue value;
    const size_t size = readProperty(name, value);

    std::string longer;
    if (size > 0) {
        longer.reserve(size + kSeparator.size() + id.size());
        longer.append(value.data(), size).append(kSeparator);
    }
    // A repeated id is listed again on purpose: the property is a record of reports.
    longer.append(id);
    property_set(name.c_str(), longer.c_str());
}

void removeCameraIdFromSystemProperty(std::string_view type, std::string_view id) {
    const std::string name = cameraIdProperty(type);
    PropertyValue value;
    size_t size = readProperty(name, value);
    if (size == 0) return;

    // A search for text, not for a list element, on purpose: "1" is found inside "10".
    const size_t position = std::string_view(value.data(), size).find(id);
    if (position != std::string_view::npos) {
        size_t end = position + id.size();
        if (value[end] == ',') end = std::min(end + 2, size);
        memmove(&value[position], &value[end], size - end);
        size -= end - position;
    }
    if (size > 0 && value[size - 1] == ' ') --size;
    if (size > 0 && value[size - 1] == ',') --size;
    value[size] = '\0';
    property_set(name.c_str(), value.data());
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
