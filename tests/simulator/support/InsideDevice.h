// SPDX-License-Identifier: Apache-2.0
// InsideDevice: runs a test program inside the namespace of a device that it has booted.

#pragma once

#include "simulator/camerasim/RunningDevice.h"

namespace orvo::simulator::testing {

/**
 * The device of this test process: the default one, booted before the first test and shut down
 * after the last. CTest runs each test in a process of its own, so with a device of its own.
 */
RunningDevice& device();

/** main() of such a program: runs itself again inside the namespace, and the tests there. */
int runTestsInsideDevice(int argc, char** argv);

}  // namespace orvo::simulator::testing
