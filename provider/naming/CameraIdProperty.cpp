// SPDX-License-Identifier: Apache-2.0
// Edits the camera id properties.

#include "provider/naming/CameraIdProperty.h"

#include <cutils/properties.h>

namespace android::hardware::camera::provider::V2_4::implementation {
namespace {

std::string propertyName(const std::string& type) {
    return "camera." + type + ".ids";
}

std::string readProperty(const std::string& name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name.c_str(), value, "");
    return value;
}

void dropTrailing(std::string& value, char character) {
    if (!value.empty() && value.back() == character) value.pop_back();
}

}  // namespace

void appendCameraIdToSystemProperty(const std::string& type, const std::string& id) {
    const std::string name = propertyName(type);
    const std::string value = readProperty(name);
    // A repeated id is listed again on purpose: the property is a record of reports.
    property_set(name.c_str(), value.empty() ? id.c_str() : (value + ", " + id).c_str());
}

void removeCameraIdFromSystemProperty(const std::string& type, const std::string& id) {
    const std::string name = propertyName(type);
    std::string value = readProperty(name);
    if (value.empty()) return;

    // A search for text, not for a list element, on purpose: "1" is found inside "10".
    const size_t position = value.find(id);
    if (position != std::string::npos) {
        value.erase(position, id.size());
        if (position < value.size() && value[position] == ',') value.erase(position, 2);
    }
    dropTrailing(value, ' ');
    dropTrailing(value, ',');
    property_set(name.c_str(), value.c_str());
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
