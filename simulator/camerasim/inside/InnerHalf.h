// SPDX-License-Identifier: Apache-2.0
// InnerHalf: what the commands that run inside a device's namespace have in common.

#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "simulator/camerasim/Colour.h"  // IWYU pragma: export
#include "simulator/camerasim/inside/Programs.h"

namespace orvo::simulator {

/** This process's own platform log goes to a file from now on, as the other programs' do. */
void redirectLog(const std::string& file);

/** Writes the end of every program's log to stderr. */
void printTails(const Programs& device);

/** Calls the function, on another thread, when the outer half says so or is gone. */
void whenTold(int stopFd, std::function<void()> function);

/** For files that the outer half found in order a moment ago. @return an exit status. */
int filesChanged();

}  // namespace orvo::simulator
