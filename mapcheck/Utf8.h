// SPDX-License-Identifier: Apache-2.0
// The characters of a text that may or may not be UTF-8, and how to write their numbers.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>

namespace orvo::mapcheck {

struct Utf8Character {
    size_t size;     ///< In bytes; 0 where no character of UTF-8 begins.
    uint32_t value;  ///< Its number in Unicode.
};

/**
 * The character of `text` that begins at the byte `at`, which has to be in it. Neither half of a
 * surrogate pair, nor a number in more bytes than it needs, nor one beyond the last is a character.
 */
Utf8Character characterAt(const std::string& text, size_t at);

/** In capital digits, at least as many as that. */
std::string hexadecimal(uint32_t number, int digits);

}  // namespace orvo::mapcheck
