// SPDX-License-Identifier: Apache-2.0
// The tag of every line that the provider object and its file-scope functions log.
#pragma once

namespace android::hardware::camera::provider::V2_4::implementation {

inline constexpr char kLogTag[] = "OrvoCameraServiceImpl";

}  // namespace android::hardware::camera::provider::V2_4::implementation
