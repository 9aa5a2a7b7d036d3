// SPDX-License-Identifier: Apache-2.0
// ExitStatus: what camerasim ends with, for scripts.

#pragma once

namespace orvo::simulator {

constexpr int kAsExpected = 0;
constexpr int kNotAsExpected = 1;  ///< the thing did not happen
constexpr int kBadUse = 2;         ///< one line on stderr has said what to do

}  // namespace orvo::simulator
