// SPDX-License-Identifier: Apache-2.0
// The rules for property names and values, free of any store.

#include "PropertyRules.h"

#include <stddef.h>

#include <optional>

namespace orvo {

namespace {

bool isNameCharacter(char c) {
    // Not isalnum: the answer must not depend on the locale.
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
           c == '-' || c == '@' || c == ':' || c == '_';
}

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

/** The range of the second byte and the count of further bytes that a first byte asks for. */
struct Utf8Sequence {
    size_t continuationBytes;
    unsigned char lowestSecond;
    unsigned char highestSecond;
};

// Nothing for a byte that begins no character of several bytes.
std::optional<Utf8Sequence> sequenceAfter(unsigned char first) {
    if (first >= 0xC2 && first <= 0xDF) {
        return Utf8Sequence{1, 0x80, 0xBF};
    }
    if (first >= 0xE0 && first <= 0xEF) {
        // E0 would be overlong below A0, ED would be a surrogate from A0 on.
        return Utf8Sequence{2, static_cast<unsigned char>(first == 0xE0 ? 0xA0 : 0x80),
                            static_cast<unsigned char>(first == 0xED ? 0x9F : 0xBF)};
    }
    if (first >= 0xF0 && first <= 0xF4) {
        // F0 would be overlong below 90, F4 is beyond the last code point from 90 on.
        return Utf8Sequence{3, static_cast<unsigned char>(first == 0xF0 ? 0x90 : 0x80),
                            static_cast<unsigned char>(first == 0xF4 ? 0x8F : 0xBF)};
    }
    return std::nullopt;
}

}  // namespace

bool isLegalPropertyName(std::string_view name) {
    if (name.empty() || name.front() == '.' || name.back() == '.') return false;
    if (name.find("..") != std::string_view::npos) return false;
    for (char c : name) {
        if (!isNameCharacter(c)) return false;
    }
    return true;
}

bool isValidUtf8(std::string_view text) {
    size_t at = 0;
    while (at < text.size()) {
        const auto first = static_cast<unsigned char>(text[at++]);
        if (first < 0x80) continue;
        const auto sequence = sequenceAfter(first);
        if (!sequence || text.size() - at < sequence->continuationBytes) return false;
        unsigned char lowest = sequence->lowestSecond;
        unsigned char highest = sequence->highestSecond;
        for (size_t i = 0; i < sequence->continuationBytes; ++i, ++at) {
            const auto byte = static_cast<unsigned char>(text[at]);
            if (byte < lowest || byte > highest) return false;
            lowest = 0x80;
            highest = 0xBF;
        }
    }
    return true;
}

bool isReadOnlyProperty(std::string_view name) {
    return startsWith(name, "ro.");
}

bool isControlProperty(std::string_view name) {
    return startsWith(name, "ctl.");
}

}  // namespace orvo
