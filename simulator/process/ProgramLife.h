// SPDX-License-Identifier: Apache-2.0
// ProgramLife: how the simulator's programs say that they serve, and end when told to.

#pragma once

#include <signal.h>

namespace orvo::simulator {

/** SIGINT and SIGTERM. */
sigset_t endingSignals();

/** Blocks them in this thread and in those that it starts; call it before there are others. */
void blockEndingSignals();

/**
 * Blocks them, and ends the process with status 0 when one comes. Nothing is destroyed: threads of
 * the platform's pool still run then.
 */
void endQuietlyOnSignals();

/**
 * Tells whoever started this program that it serves: one line "ready" on stdout. What is written to
 * stdout after that goes where stderr goes, so that nobody need read on.
 */
void announceReady();

}  // namespace orvo::simulator
