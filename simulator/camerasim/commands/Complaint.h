// SPDX-License-Identifier: Apache-2.0
// Complaint: errors that know the exit status they end the program with.

#pragma once

#include <string>

#include <android-base/result.h>

namespace orvo::simulator {

/** The user asked for something that cannot be: ends with kBadUse. */
android::base::ResultError badUse(const std::string& line);

/** The thing did not happen: ends with kNotAsExpected. */
android::base::ResultError didNotHappen(const std::string& line);

/** Writes the error as one line to stderr. @return the exit status that goes with it. */
int complain(const android::base::ResultError& error);

}  // namespace orvo::simulator
