// SPDX-License-Identifier: Apache-2.0
// camerasim: the program by which a person uses simulated devices.

#include <iostream>

#include "simulator/camerasim/commands/CommandLineParser.h"
#include "simulator/control/Complaint.h"

int main(int argc, char** argv) {
    using namespace orvo::simulator;
    const int status = runCommandLine(argc, argv);
    if (std::cout.flush() || status != kAsExpected) return status;
    return complain(didNotHappen("the output could not be written; free space where it goes"));
}
