// SPDX-License-Identifier: Apache-2.0
// Logs: what the programs of a headset have written, and what camerasim itself writes there.

#pragma once

#include <string>

#include "simulator/camerasim/outside/Stage.h"

namespace orvo::simulator {

/** This process's own platform log goes to a file from now on, as the other programs' do. */
void redirectLog(const std::string& file);

/** Writes the end of every program's log, what went wrong in it above all, to stderr. */
void printTails(const Stage& stage);

}  // namespace orvo::simulator
