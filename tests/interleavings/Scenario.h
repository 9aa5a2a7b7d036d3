// SPDX-License-Identifier: Apache-2.0
// What happens at once: a few operations on a provider object in front of a few providers.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orvo::interleavings {

/**
 * One thing that happens, written as a character and the numbers that it needs: of a provider (from
 * 0), and of a camera. "+01": provider 0 reports camera 1.
 */
struct Operation {
    char what;
    int provider = 0;
    int camera = 0;

    std::string text() const;
    /** In words: "a report", "a death". Those of one kind do the same in the library. */
    std::string kind() const;
};

/**
 * Written as its set-up and its operations with blanks between them: "2cp +01 D0 L".
 *
 * The set-up: how many providers; "c" if the framework has registered its callback; "p" if camera 1
 * of provider 0 is there; "s" if the first two providers are of one type; "f" and a digit: so many
 * look-ups of a provider that died fail, f9 all but the last one, f10 all.
 *
 * Operations: "+", "-", "~" a camera is reported present, not present, enumerating; "^" it is
 * reported present by a provider that came back; "*" its torch is reported; "B", "N" setCallback
 * with another callback, with null; "D" a provider dies; "E" the one that came back dies; "L"
 * getCameraIdList, "V" getVendorTags, "T" isSetTorchModeSupported; "I", "i" the interface of a
 * camera is asked for, version 3 and 1; "M" default/0 is loaded; "O" another object for legacy/0 is
 * made.
 */
struct Scenario {
    int providers = 1;
    bool callback = false;
    bool present = false;
    bool sameType = false;
    int failures = 0;
    std::vector<Operation> operations;

    std::string text() const;
    static std::optional<Scenario> fromText(const std::string& text);

    /** The instance name of a provider, and the device name of a camera of it. */
    std::string provider(int number) const;
    std::string device(const Operation& operation) const;
    /** The name under which the framework knows its camera. */
    static std::string frameworkDevice(const Operation& operation);
    /** What happens, in words. */
    std::string words(const Operation& operation) const;
};

/** Every two, or three, of the operations, with the set-ups in which they differ. */
std::vector<Scenario> scenariosOf(int operations);

}  // namespace orvo::interleavings
