// SPDX-License-Identifier: Apache-2.0
// Orders findings, and puts names into their messages.

#include "mapcheck/Finding.h"

#include <stdio.h>

#include <algorithm>

namespace orvo::mapcheck {

std::vector<Finding> Findings::byLine() const {
    std::vector<Finding> sorted = mList;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Finding& left, const Finding& right) {
        return left.line < right.line;
    });
    return sorted;
}

std::string quoted(const std::string& name) {
    std::string text = "\"";
    for (const char c : name) {
        switch (c) {
            case '\n':
                text += "\\n";
                break;
            case '\r':
                text += "\\r";
                break;
            case '\t':
                text += "\\t";
                break;
            case '"':
                text += "\\\"";
                break;
            case '\\':
                text += "\\\\";
                break;
            default:
                text += c;
        }
    }
    return text + "\"";
}

}  // namespace orvo::mapcheck
