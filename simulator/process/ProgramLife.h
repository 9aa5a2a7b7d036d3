// SPDX-License-Identifier: Apache-2.0
// ProgramLife: how the simulator's programs are called, say that they serve, and end when told to.

#pragma once

#include <signal.h>

#include <string>
#include <vector>

namespace orvo::simulator {

/** How a program that takes nothing but words is called. */
struct Usage {
    const char* program;
    const char* sentence;  ///< what it does
    const char* word;      ///< what the words are, such as "INSTANCE"
    const char* meaning;   ///< such as "instance name, such as legacy/0"
    int most;              ///< how many it takes; at least one has to be there
};

/**
 * The words of the command line. Ends the process with status 0 after printing the help, if that is
 * asked for, and with 2 after one line on stderr, if it cannot be called like this.
 */
std::vector<std::string> wordsOrLeave(int argc, char** argv, const Usage& usage);

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
