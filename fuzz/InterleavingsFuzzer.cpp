// SPDX-License-Identifier: Apache-2.0
// Things that happen at once around the provider object: which, and in which order their steps
// come. tests/interleavings/Input.cpp says what the bytes mean.

#include "fuzz/support/Require.h"
#include "tests/interleavings/Input.h"
#include "tests/support/OneProcessor.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    [[maybe_unused]] static const bool pinned = [] {
        orvo::test::runOnOneProcessor();
        return true;
    }();
    const orvo::interleavings::Run run = orvo::interleavings::runInput(data, size);
    if (!run.findings.empty()) {
        orvo::fuzz::require(false, run.findings.front().c_str(), run.order() + "\n" + run.story());
    }
    return 0;
}
