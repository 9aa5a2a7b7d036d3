// SPDX-License-Identifier: Apache-2.0
// What a fuzzer expects of the code beside that it stays inside its memory.

#pragma once

#include <stdio.h>
#include <stdlib.h>

#include <string>

namespace orvo::fuzz {

/** Ends the process with the claim, as a finding, unless it holds. */
inline void require(bool holds, const char* claim, const std::string& found = "") {
    if (holds) return;
    fprintf(stderr, "This does not hold: %s%s%s\n", claim,
            found.empty() ? "" : "; found: ", found.c_str());
    abort();
}

}  // namespace orvo::fuzz
