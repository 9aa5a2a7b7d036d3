// SPDX-License-Identifier: Apache-2.0
// Looks: how what camerasim prints is painted and worded, wherever it is printed.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulator/control/Protocol.h"

namespace orvo::simulator {

/** How a text is painted where colour is allowed. */
enum class Paint { PLAIN, BOLD, DIM, GREEN, YELLOW, BLUE, RED };

std::string painted(const std::string& text, Paint paint, bool colour);

/** Whether stdout is a terminal whose user has not set NO_COLOR. */
bool wantsColour();

/** "a, b, c", or `none` if there are none. */
std::string listed(const std::vector<std::string>& words, const std::string& none = "nothing");

/** Such as "0x80010000": how tags are written. */
std::string hexadecimal(uint32_t number);

/** One line of the timeline, without its end. */
std::string eventLine(const TimelineEvent& event, bool colour);

}  // namespace orvo::simulator
