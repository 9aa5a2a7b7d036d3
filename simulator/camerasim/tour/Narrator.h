// SPDX-License-Identifier: Apache-2.0
// Narrator: prints a guided tour: what was expected, what was seen, and whether they agree.

#pragma once

#include <ostream>
#include <string>

namespace orvo::simulator {

/** Writes for a person; colour only where it is asked for. One thread. */
class Narrator {
  public:
    Narrator(std::ostream& out, bool colour) : mOut(out), mColour(colour) {}

    void title(const std::string& text);
    /** Begins the next numbered step. */
    void step(const std::string& title, const std::string& explanation);
    /** A line of detail below the current step. */
    void detail(const std::string& text);
    /**
     * One expectation of the current step; later lines of a text are indented below its first.
     *
     * @return `agrees`.
     */
    bool check(const std::string& expected, const std::string& seen, bool agrees);
    void closing(const std::string& text, bool good);

    int steps() const { return mSteps; }

  private:
    std::ostream& mOut;
    const bool mColour;
    int mSteps = 0;
};

}  // namespace orvo::simulator
