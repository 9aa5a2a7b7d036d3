// SPDX-License-Identifier: Apache-2.0
// Narrator: the looks of a guided tour.

#include "simulator/camerasim/tour/Narrator.h"

#include <android-base/strings.h>

#include "simulator/camerasim/Looks.h"

namespace orvo::simulator {

namespace {

/** What stands before the words "expected" and "seen" and the texts after them. */
constexpr char kMargin[] = "     ";
constexpr char kTextMargin[] = "\n                 ";

std::string indented(const std::string& text) {
    return android::base::Join(android::base::Split(text, "\n"), kTextMargin);
}

}  // namespace

void Narrator::title(const std::string& text) {
    mOut << painted(text, Paint::BOLD, mColour) << std::endl;
}

void Narrator::step(const std::string& title, const std::string& explanation) {
    mSteps++;
    const std::string number = std::to_string(mSteps);
    mOut << "\n"
         << std::string(number.size() < 2 ? 1 : 0, ' ') << number << "  "
         << painted(title, Paint::BOLD, mColour) << "\n"
         << kMargin << painted(explanation, Paint::DIM, mColour) << std::endl;
}

void Narrator::detail(const std::string& text) {
    mOut << kMargin << text << std::endl;
}

bool Narrator::check(const std::string& expected, const std::string& seen, bool agrees) {
    mOut << kMargin
         << (agrees ? painted("✓", Paint::GREEN, mColour) : painted("✗", Paint::RED, mColour))
         << " expected  " << indented(expected) << "\n"
         << kMargin << "  seen      "
         << (agrees ? indented(seen) : painted(indented(seen), Paint::RED, mColour)) << std::endl;
    return agrees;
}

void Narrator::closing(const std::string& text, bool good) {
    mOut << "\n" << painted(text, good ? Paint::GREEN : Paint::RED, mColour) << std::endl;
}

}  // namespace orvo::simulator
