// SPDX-License-Identifier: Apache-2.0
// Writes findings for a person and for a program: the same facts in both.
#pragma once

#include <string>
#include <vector>

#include "mapcheck/Finding.h"

namespace orvo::mapcheck {

/** One line for each finding and each note, in the style of a compiler. */
std::string toText(const std::vector<Finding>& findings);

/**
 * An array of objects with the members file, line, severity, code and message, one a line. A note
 * is an object of its own, of the severity "note", after the finding that it belongs to. The line
 * is 0 where the file as a whole is meant.
 */
std::string toJson(const std::vector<Finding>& findings);

}  // namespace orvo::mapcheck
