// SPDX-License-Identifier: Apache-2.0
// CameraDump: the handle belongs to the call; it is neither kept nor closed here.

#include "simulator/provider/CameraDump.h"

#include <android-base/file.h>

namespace orvo::simulator {

bool writeDump(const android::hardware::hidl_handle& handle, const std::string& text) {
    const native_handle_t* native = handle.getNativeHandle();
    if (native == nullptr || native->numFds != 1) return false;
    return android::base::WriteStringToFd(text, native->data[0]);
}

}  // namespace orvo::simulator
