// SPDX-License-Identifier: Apache-2.0
// Text that is only looked at during a call, without copies of it.
#pragma once

#include <string>
#include <string_view>

#include <hidl/HidlSupport.h>

namespace android::hardware::camera::provider::V2_4::implementation {

/** The characters of `text`, valid for as long as it is. */
inline std::string_view viewOf(const hidl_string& text) {
    return {text.c_str(), text.size()};
}

/** An argument that shows the characters of `text`, valid for as long as it is. */
inline hidl_string lend(const std::string& text) {
    hidl_string lent;
    lent.setToExternal(text.c_str(), text.size());
    return lent;
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
