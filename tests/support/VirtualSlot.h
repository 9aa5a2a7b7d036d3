// SPDX-License-Identifier: Apache-2.0
// Lets a test hold a class to the order of its virtual functions, on which its binary users rely.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <gtest/gtest.h>

namespace orvo::test {

/** The slot of a virtual member function in its class's table. A destructor takes two slots. */
template <typename Member>
size_t virtualSlot(Member member) {
    // A pointer to a virtual member function holds the distance from the table's start.
    struct {
        uintptr_t function;
        uintptr_t adjustment;
    } parts;
    static_assert(sizeof parts == sizeof member);
    memcpy(&parts, &member, sizeof parts);
#if defined(__aarch64__)
    EXPECT_EQ(parts.adjustment, 1u) << "not a virtual function of the class's own table";
    return parts.function / sizeof(void*);
#else
    EXPECT_EQ(parts.function % 2, 1u) << "not a virtual function";
    EXPECT_EQ(parts.adjustment, 0u) << "not in the class's own table";
    return (parts.function - 1) / sizeof(void*);
#endif
}

}  // namespace orvo::test
