// SPDX-License-Identifier: Apache-2.0
// The system properties in which other processes read the ids of the cameras that are present.
#pragma once

#include <string>
#include <string_view>

namespace android::hardware::camera::provider::V2_4::implementation {

/** "1" once external/0 has been connected at the start; never reset. */
inline constexpr char kExternalProviderAddedProperty[] = "service.cam_prvdr.external_0.added";

/**
 * The name of the property that holds the ids of the present cameras of a type, in the order in
 * which they were reported, joined by ", ". The two functions below edit it, under the provider
 * object's mActiveDevicesMutex. A write that the property store refuses, such as one of more than
 * 91 characters, changes nothing and is not reported. `type` and `id` may be empty.
 */
std::string cameraIdProperty(std::string_view type);

/** What a property holds; "" if it is unset. */
std::string readProperty(const std::string& name);

/** Appends `id` to the ids of `type`, also when it is listed already. */
void appendCameraIdToSystemProperty(std::string_view type, std::string_view id);

/**
 * Removes the first occurrence of `id`, as text, from the ids of `type`, and the separator with
 * it. Writes nothing when the property is empty or unset.
 */
void removeCameraIdFromSystemProperty(std::string_view type, std::string_view id);

}  // namespace android::hardware::camera::provider::V2_4::implementation
