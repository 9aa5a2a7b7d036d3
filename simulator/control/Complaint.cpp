// SPDX-License-Identifier: Apache-2.0
// Complaint: the code of an error is its exit status.

#include "simulator/control/Complaint.h"

#include <iostream>

#include "simulator/description/OneLine.h"

namespace orvo::simulator {

using android::base::ResultError;

ResultError badUse(const std::string& line) {
    return {line, kBadUse};
}

ResultError didNotHappen(const std::string& line) {
    return {line, kNotAsExpected};
}

int complain(const ResultError& error) {
    std::cout.flush();
    std::cerr << "camerasim: " << onOneLine(error.message()) << std::endl;
    // Errors of a system call carry its number; only those that were made here carry a status.
    return error.code() == kBadUse ? kBadUse : kNotAsExpected;
}

}  // namespace orvo::simulator
