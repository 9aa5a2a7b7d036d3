// SPDX-License-Identifier: Apache-2.0
// The entry point's source as it is, and the one thing that a process keeps of it from run to run.

#include "provider/EntryPoint.cpp"

#include "tests/interleavings/World.h"

namespace orvo::interleavings {

void forgetMrLibrary() {
    android::hardware::camera::provider::V2_4::implementation::gMRProviderHandle = nullptr;
}

}  // namespace orvo::interleavings
