// SPDX-License-Identifier: Apache-2.0
// Lets a test say which fault of the world around the library it plays, for the table of them.
#pragma once

#include <string>

#include <gtest/gtest.h>

namespace orvo::test {

/**
 * Puts the running test into docs/reliability.md: `call` is what leaves the library, `fault` how it
 * fails, `outcome` what the test holds the library to. Plain sentences, without a full stop.
 */
inline void recordFault(const std::string& call, const std::string& fault,
                        const std::string& outcome) {
    ::testing::Test::RecordProperty("call", call);
    ::testing::Test::RecordProperty("fault", fault);
    ::testing::Test::RecordProperty("outcome", outcome);
}

}  // namespace orvo::test
