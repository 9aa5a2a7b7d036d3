// SPDX-License-Identifier: Apache-2.0
// InsideDevice: the main() of tests that run inside the namespace of a device that it has booted.

#pragma once

#include "simulator/camerasim/inside/Programs.h"

namespace orvo::simulator::testing {

/**
 * The device of this test process: the default one, booted before the first test and shut down
 * after the last. CTest runs each test in a process of its own, so with a device of its own.
 */
Programs& device();

}  // namespace orvo::simulator::testing
