// SPDX-License-Identifier: Apache-2.0
// What the fakes saw, in order, so that two sides of a comparison can be held to the same answers.
#pragma once

#include <string>
#include <vector>

namespace orvo::benchmarks {

/** Off while costs are measured: then an event costs one test of a flag. One thread at a time. */
class Journal {
  public:
    static bool isOn() { return sOn; }
    static void begin();
    /** The events since begin(), oldest first. */
    static std::vector<std::string> end();
    static void add(std::string event);

  private:
    static bool sOn;
};

/** Makes the log library drop every line, or enter it into the journal while that is on. */
void dropLogLines();

}  // namespace orvo::benchmarks
