// SPDX-License-Identifier: Apache-2.0
// Decodes strictly: libxml2's own check lets surrogates, overlong forms and too large numbers pass.

#include "mapcheck/Utf8.h"

#include <stdio.h>

namespace orvo::mapcheck {
namespace {

/** The characters of one length in bytes. */
struct Form {
    uint32_t mask;   // Of the first byte: the bits that tell the length.
    uint32_t bits;   // What they are.
    uint32_t first;  // The least character that needs this many bytes.
    uint32_t last;
};

// The form of a character of n bytes is the n-th.
constexpr Form kForms[] = {
        {0x80, 0x00, 0, 0x7F},
        {0xE0, 0xC0, 0x80, 0x7FF},
        {0xF0, 0xE0, 0x800, 0xFFFF},
        {0xF8, 0xF0, 0x10000, 0x10FFFF},
};

constexpr Utf8Character kNone = {0, 0};

bool isSurrogate(uint32_t value) {
    return value >= 0xD800 && value <= 0xDFFF;
}

}  // namespace

Utf8Character characterAt(const std::string& text, size_t at) {
    const uint32_t start = static_cast<unsigned char>(text[at]);
    size_t size = 0;
    for (const Form& form : kForms) {
        ++size;
        if ((start & form.mask) != form.bits) continue;
        if (size > text.size() - at) return kNone;
        uint32_t value = start & ~form.mask;
        for (size_t i = 1; i < size; ++i) {
            const uint32_t byte = static_cast<unsigned char>(text[at + i]);
            if ((byte & 0xC0) != 0x80) return kNone;
            value = value << 6 | (byte & 0x3F);
        }
        const bool fits = value >= form.first && value <= form.last && !isSurrogate(value);
        return fits ? Utf8Character{size, value} : kNone;
    }
    return kNone;
}

std::string hexadecimal(uint32_t number, int digits) {
    char text[16];
    snprintf(text, sizeof text, "%0*X", digits, number);
    return text;
}

}  // namespace orvo::mapcheck
