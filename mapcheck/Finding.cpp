// SPDX-License-Identifier: Apache-2.0
// Orders findings, and puts names into their messages.

#include "mapcheck/Finding.h"

#include <algorithm>

#include "mapcheck/Utf8.h"

namespace orvo::mapcheck {
namespace {

// The character as in a C string.
std::string inC(uint32_t character) {
    switch (character) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        default:
            break;
    }
    if (character < 0x20 || character == 0x7F) return "\\x" + hexadecimal(character, 2);
    if (character < 0x80) return {static_cast<char>(character)};
    if (character <= 0xFFFF) return "\\u" + hexadecimal(character, 4);
    return "\\U" + hexadecimal(character, 8);
}

}  // namespace

std::vector<Finding> Findings::byLine() const {
    std::vector<Finding> sorted = mList;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Finding& left, const Finding& right) {
        return left.line < right.line;
    });
    return sorted;
}

std::string escaped(const std::string& name) {
    std::string text;
    for (size_t at = 0; at < name.size();) {
        const Utf8Character character = characterAt(name, at);
        const auto byte = static_cast<unsigned char>(name[at]);
        text += character.size == 0 ? "\\x" + hexadecimal(byte, 2) : inC(character.value);
        at += std::max<size_t>(character.size, 1);
    }
    return text;
}

std::string quoted(const std::string& name) {
    return "\"" + escaped(name) + "\"";
}

}  // namespace orvo::mapcheck
