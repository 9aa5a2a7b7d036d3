// SPDX-License-Identifier: Apache-2.0
// CameraDump: writes a camera's state to the descriptor that a dumpState call brings.

#pragma once

#include <string>

#include <hidl/HidlSupport.h>

namespace orvo::simulator {

/** False if the handle brings no descriptor or the descriptor takes no bytes. */
bool writeDump(const android::hardware::hidl_handle& handle, const std::string& text);

}  // namespace orvo::simulator
