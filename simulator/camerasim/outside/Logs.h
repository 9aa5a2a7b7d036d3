// SPDX-License-Identifier: Apache-2.0
// printTails: what the programs of a headset have written last, for one that failed.

#pragma once

#include "simulator/camerasim/outside/Stage.h"

namespace orvo::simulator {

/** Writes the end of every program's log, what went wrong in it above all, to stderr. */
void printTails(const Stage& stage);

}  // namespace orvo::simulator
