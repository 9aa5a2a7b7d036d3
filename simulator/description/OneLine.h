// SPDX-License-Identifier: Apache-2.0
// onOneLine: quotes what somebody wrote in an error that has to stay one line.

#pragma once

#include <algorithm>
#include <string>

namespace orvo::simulator {

/** The text with a blank for each control character, a line break above all. */
inline std::string onOneLine(std::string text) {
    std::replace_if(
            text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
    return text;
}

}  // namespace orvo::simulator
