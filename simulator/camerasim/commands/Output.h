// SPDX-License-Identifier: Apache-2.0
// Output: what several commands print alike.

#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "simulator/camerasim/commands/Table.h"
#include "simulator/control/Protocol.h"

namespace orvo::simulator {

/** For any bytes: what is no UTF-8 is replaced. `indent` is negative for one line. */
std::string jsonText(const nlohmann::json& document, int indent);

/** One document, indented for a person's eye. */
void printDocument(const nlohmann::json& document);

/** One line of a stream. */
void printJsonLine(const nlohmann::json& line);

/** "nothing to list: why". */
void printNothing(const std::string& why);

/** How much time, such as "0.42 s" or "3 min 5 s". */
std::string durationText(double seconds);

/** "1 camera", "2 cameras". */
std::string counted(size_t count, const std::string& what);

/** Green for what is good, red for what is bad, plain for anything else. */
Paint paintOf(const std::string& status);

Table providerTable(const HeadsetState& state);
Table cameraTable(const HeadsetState& state);

/** The device and its camera provider service, in two lines without an end. */
std::string headerOf(const HeadsetState& state);

/** The table of cameras, and below it what is wrong with providers. */
void printCameras(const HeadsetState& state);

/** A line of the timeline behind its number, by which later events can be asked for. */
std::string numberedEvent(const TimelineEvent& event, bool colour);

}  // namespace orvo::simulator
