// SPDX-License-Identifier: Apache-2.0
// Diagnosis: why a provider's cameras cannot be seen, in one line.

#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace orvo::simulator {

/** All that the reason depends on. Times are those of one clock, since any moment. */
struct ProviderFacts {
    using Time = std::chrono::duration<double>;

    std::string instance;
    std::string behind;        ///< the instance that the map puts it behind, or ""
    bool declared = false;     ///< in the manifest
    bool described = false;    ///< device.yaml has a process for it
    bool served = false;       ///< device.yaml has the service serve it
    bool frontServed = false;  ///< the service serves what it is behind
    bool serviceRunning = false;
    bool running = false;
    bool hung = false;
    bool connected = false;  ///< for a served one: it took the framework's callback
    std::string lastEnd;

    Time now{};
    Time startedAt{};       ///< of the process that runs
    Time serviceReadyAt{};  ///< of the service that runs
    /** When the service that runs now lost the process that it was connected with, if it did. */
    std::optional<Time> lostAt;
};

/** @return "" if nothing is wrong; else what is, and what to do about it where there is a way. */
std::string problemOf(const ProviderFacts& facts);

}  // namespace orvo::simulator
