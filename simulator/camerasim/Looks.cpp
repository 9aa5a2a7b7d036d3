// SPDX-License-Identifier: Apache-2.0
// Looks: the usual control sequences, and good news told from bad.

#include "simulator/camerasim/Looks.h"

#include <stdio.h>
#include <unistd.h>

#include <cstdlib>

#include <android-base/strings.h>

namespace orvo::simulator {

namespace {

const char* codeOf(Paint paint) {
    switch (paint) {
        case Paint::PLAIN:
            return "";
        case Paint::BOLD:
            return "\033[1m";
        case Paint::DIM:
            return "\033[2m";
        case Paint::GREEN:
            return "\033[32m";
        case Paint::YELLOW:
            return "\033[33m";
        case Paint::BLUE:
            return "\033[34m";
        case Paint::RED:
            return "\033[1;31m";
    }
    return "";
}

/** Good news, bad news, what somebody asked for, and light. */
Paint paintOf(const TimelineEvent& event) {
    for (const char* bad : {"NOT_PRESENT", "ended", "disconnected", "did not"}) {
        if (android::base::StartsWith(event.what, bad)) return Paint::RED;
    }
    if (event.kind == "command") return Paint::BLUE;
    if (event.kind == "torch" || event.kind == "warning") return Paint::YELLOW;
    return Paint::GREEN;
}

}  // namespace

std::string painted(const std::string& text, Paint paint, bool colour) {
    if (!colour || paint == Paint::PLAIN) return text;
    return codeOf(paint) + text + "\033[0m";
}

bool wantsColour() {
    const char* refused = getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) != 0 && (refused == nullptr || *refused == '\0');
}

std::string listed(const std::vector<std::string>& words, const std::string& none) {
    return words.empty() ? none : android::base::Join(words, ", ");
}

std::string hexadecimal(uint32_t number) {
    char text[16];
    snprintf(text, sizeof(text), "0x%08x", number);
    return text;
}

std::string eventLine(const TimelineEvent& event, bool colour) {
    char seconds[32];
    snprintf(seconds, sizeof(seconds), " %9.3f", event.seconds);
    char kind[64];
    snprintf(kind, sizeof(kind), "  %-8s  ", event.kind.c_str());
    return painted(event.time + seconds, Paint::DIM, colour) + kind + event.who + "  " +
           painted(event.what, paintOf(event), colour);
}

}  // namespace orvo::simulator
