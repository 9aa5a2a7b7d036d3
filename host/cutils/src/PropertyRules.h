// SPDX-License-Identifier: Apache-2.0
// What may be the name and the value of a system property.

#pragma once

#include <string_view>

namespace orvo {

/**
 * True for at least one letter, digit or one of ". - @ : _", without a leading, trailing or doubled
 * dot. There is no limit of length here.
 */
bool isLegalPropertyName(std::string_view name);

/** True for UTF-8 without overlong forms, surrogates or code points above U+10FFFF. */
bool isValidUtf8(std::string_view text);

/** Properties that can be set only once. */
bool isReadOnlyProperty(std::string_view name);

/** Properties that are commands and never stored. */
bool isControlProperty(std::string_view name);

}  // namespace orvo
