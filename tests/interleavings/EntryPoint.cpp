// SPDX-License-Identifier: Apache-2.0
// The entry point's source as it is, under another name, and the one thing that a process keeps of
// it from run to run.

#define HIDL_FETCH_ICameraProvider exploredEntryPoint
#include "provider/EntryPoint.cpp"
#undef HIDL_FETCH_ICameraProvider

#include "tests/interleavings/World.h"

namespace orvo::interleavings {

namespace implementation = android::hardware::camera::provider::V2_4::implementation;

ICameraProvider* loadInstance(const char* name) {
    return implementation::exploredEntryPoint(name);
}

void forgetMrLibrary() {
    implementation::gMRProviderHandle = nullptr;
}

}  // namespace orvo::interleavings
