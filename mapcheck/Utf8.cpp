// SPDX-License-Identifier: Apache-2.0
// Decodes with the C++ library, whose conversion does not depend on the locale.

#include "mapcheck/Utf8.h"

#include <stdio.h>

#include <locale>

namespace orvo::mapcheck {

Utf8Character characterAt(const std::string& text, size_t at) {
    using Conversion = std::codecvt<char32_t, char, std::mbstate_t>;
    static const auto& conversion = std::use_facet<Conversion>(std::locale::classic());
    std::mbstate_t state{};
    const char* const begin = text.data() + at;
    const char* end = begin;
    char32_t value = 0;
    char32_t* valueEnd = &value;
    conversion.in(state, begin, text.data() + text.size(), end, &value, &value + 1, valueEnd);
    // Not every C++ library refuses half of a surrogate pair.
    const bool isCharacter = valueEnd != &value && (value < 0xD800 || value > 0xDFFF);
    return isCharacter ? Utf8Character{static_cast<size_t>(end - begin), value}
                       : Utf8Character{0, 0};
}

std::string hexadecimal(uint32_t number, int digits) {
    char text[16];
    snprintf(text, sizeof text, "%0*X", digits, number);
    return text;
}

}  // namespace orvo::mapcheck
