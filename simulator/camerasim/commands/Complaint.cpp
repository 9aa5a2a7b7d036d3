// SPDX-License-Identifier: Apache-2.0
// Complaint: the code of an error is its exit status.

#include "simulator/camerasim/commands/Complaint.h"

#include <iostream>

#include "simulator/camerasim/ExitStatus.h"

namespace orvo::simulator {

using android::base::ResultError;

ResultError badUse(const std::string& line) {
    return {line, kBadUse};
}

ResultError didNotHappen(const std::string& line) {
    return {line, kNotAsExpected};
}

int complain(const ResultError& error) {
    std::string line = error.message();
    for (char& c : line) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    std::cout.flush();
    std::cerr << "camerasim: " << line << std::endl;
    return error.code();
}

}  // namespace orvo::simulator
