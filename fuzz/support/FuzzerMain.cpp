// SPDX-License-Identifier: Apache-2.0
// Gives libFuzzer the one target that this program is for.

#include <stddef.h>
#include <stdint.h>

extern "C" int ORVO_FUZZ_TARGET(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return ORVO_FUZZ_TARGET(data, size);
}
