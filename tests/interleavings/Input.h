// SPDX-License-Identifier: Apache-2.0
// A scenario and an order of it as the bytes that a fuzzer plays with.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>

#include "tests/interleavings/Explorer.h"

namespace orvo::interleavings {

/** Runs what the bytes say; any bytes say something, and what is missing is up to the machine. */
Run runInput(const uint8_t* data, size_t size);

/** The bytes of which runInput() makes this run. */
std::string inputOf(const Scenario& scenario, const Run& run);

}  // namespace orvo::interleavings
