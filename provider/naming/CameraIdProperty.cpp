// SPDX-License-Identifier: Apache-2.0
// Edits the camera id properties.

#include "provider/naming/CameraIdProperty.h"

#include <string.h>

#include <cutils/properties.h>

namespace android::hardware::camera::provider::V2_4::implementation {

std::string cameraIdProperty(std::string_view type) {
    std::string name("camera.");
    name.append(type).append(".ids");
    return name;
}

std::string readProperty(const std::string& name) {
    std::string value(PROPERTY_VALUE_MAX, '\0');
    property_get(name.c_str(), value.data(), "");
    value.resize(strlen(value.c_str()));
    return value;
}

void appendCameraIdToSystemProperty(std::string_view type, std::string_view id) {
    const std::string name = cameraIdProperty(type);
    std::string value = readProperty(name);
    // A repeated id is listed again on purpose: the property is a record of reports.
    if (!value.empty()) value += ", ";
    value += id;
    property_set(name.c_str(), value.c_str());
}

void removeCameraIdFromSystemProperty(std::string_view type, std::string_view id) {
    const std::string name = cameraIdProperty(type);
    std::string value = readProperty(name);
    if (value.empty()) return;

    // A search for text, not for a list element, on purpose: "1" is found inside "10".
    const size_t position = value.find(id);
    if (position != std::string::npos) {
        value.erase(position, id.size());
        if (value[position] == ',') value.erase(position, 2);
    }
    if (!value.empty() && value.back() == ' ') value.pop_back();
    if (!value.empty() && value.back() == ',') value.pop_back();
    property_set(name.c_str(), value.c_str());
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
