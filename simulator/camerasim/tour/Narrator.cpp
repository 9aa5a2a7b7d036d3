// SPDX-License-Identifier: Apache-2.0
// Narrator: the looks of a guided tour.

#include "simulator/camerasim/tour/Narrator.h"

#include <android-base/strings.h>

namespace orvo::simulator {

namespace {

constexpr char kBold[] = "\033[1m";
constexpr char kDim[] = "\033[2m";
constexpr char kGreen[] = "\033[32m";
constexpr char kRed[] = "\033[1;31m";
constexpr char kPlain[] = "\033[0m";

/** What stands before the words "expected" and "seen" and the texts after them. */
constexpr char kMargin[] = "     ";
constexpr char kTextMargin[] = "\n                 ";

std::string indented(const std::string& text) {
    return android::base::Join(android::base::Split(text, "\n"), kTextMargin);
}

}  // namespace

std::string Narrator::painted(const char* colour, const std::string& text) const {
    return mColour ? colour + text + kPlain : text;
}

void Narrator::title(const std::string& text) {
    mOut << painted(kBold, text) << std::endl;
}

void Narrator::step(const std::string& title, const std::string& explanation) {
    mSteps++;
    const std::string number = std::to_string(mSteps);
    mOut << "\n"
         << std::string(number.size() < 2 ? 1 : 0, ' ') << number << "  " << painted(kBold, title)
         << "\n"
         << kMargin << painted(kDim, explanation) << std::endl;
}

void Narrator::detail(const std::string& text) {
    mOut << kMargin << text << std::endl;
}

bool Narrator::check(const std::string& expected, const std::string& seen, bool agrees) {
    mOut << kMargin << (agrees ? painted(kGreen, "✓") : painted(kRed, "✗")) << " expected  "
         << indented(expected) << "\n"
         << kMargin << "  seen      " << (agrees ? indented(seen) : painted(kRed, indented(seen)))
         << std::endl;
    return agrees;
}

void Narrator::closing(const std::string& text, bool good) {
    mOut << "\n" << painted(good ? kGreen : kRed, text) << std::endl;
}

std::string listed(const std::vector<std::string>& words, const std::string& none) {
    return words.empty() ? none : android::base::Join(words, ", ");
}

}  // namespace orvo::simulator
