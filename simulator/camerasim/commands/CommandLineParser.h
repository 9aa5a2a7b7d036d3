// SPDX-License-Identifier: Apache-2.0
// runCommandLine: finds the command that was typed, reads its words, and runs it.

#pragma once

namespace orvo::simulator {

/** @return an exit status; what is wrong with the words was said in one line on stderr. */
int runCommandLine(int argc, char** argv);

}  // namespace orvo::simulator
