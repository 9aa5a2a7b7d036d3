// SPDX-License-Identifier: Apache-2.0
// Compares all values of a generated enum with what the call contract says.

#pragma once

#include <stddef.h>

#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>

namespace orvo::test {

/** All values of an enum, in order, with what each of them is called in this file. */
template <typename E>
using Values = std::vector<std::pair<E, std::underlying_type_t<E>>>;

template <typename E>
void expectValues(const Values<E>& expected) {
    size_t i = 0;
    for (const E value : android::hardware::hidl_enum_range<E>()) {
        ASSERT_LT(i, expected.size()) << toString(value);
        EXPECT_EQ(expected[i].first, value) << toString(value);
        EXPECT_EQ(expected[i].second, static_cast<std::underlying_type_t<E>>(value))
                << toString(value);
        i++;
    }
    EXPECT_EQ(expected.size(), i);
}

}  // namespace orvo::test
