// SPDX-License-Identifier: Apache-2.0
// Diagnosis: the first reason that applies, from what is written to what runs.

#include "simulator/camerasim/inside/Diagnosis.h"

#include <cstdio>

namespace orvo::simulator {

namespace {

using Time = ProviderFacts::Time;

/** How long the library looks for a provider that has died: ten times, half a second apart. */
constexpr Time kReconnecting{5.0};
/** What a busy machine may add to that, and what a connection may take at all. */
constexpr Time kTolerance{1.5};

constexpr char kRestartService[] = "camerasim kill service lets a new one look for it";

std::string secondsText(Time time) {
    char text[32];
    snprintf(text, sizeof(text), "%.1f s", time.count());
    return text;
}

std::string servedProblem(const ProviderFacts& facts) {
    if (!facts.serviceRunning) return "the camera provider service is not running";
    if (facts.hung) {
        return "the camera provider service is hung; camerasim start service lets it go on";
    }
    if (!facts.running) return "the service does not serve it; camerasim log says why";
    if (facts.connected) return "";
    return facts.now - facts.serviceReadyAt < kTolerance
                   ? "the framework is about to register with it"
                   : "it has not taken the framework's callback; camerasim log says why";
}

/** For one that is named somewhere, but that no process will ever serve. */
std::string nobodysProblem(const ProviderFacts& facts) {
    if (!facts.declared) return "named in the map but not declared in the manifest";
    if (facts.behind.empty()) {
        return "declared in the manifest, but neither the map nor device.yaml mentions it";
    }
    return "declared but not running: device.yaml has no process for it";
}

std::string undeclaredProblem(const ProviderFacts& facts) {
    return std::string(facts.behind.empty() ? "described" : "named in the map") +
           " but not declared in the manifest: nobody looks for it";
}

std::string deadProblem(const ProviderFacts& facts) {
    return "declared but not running (" +
           (facts.lastEnd.empty() ? std::string("never started") : "it " + facts.lastEnd) +
           "); camerasim start " + facts.instance + " starts it";
}

/** Why the service that runs now is not connected with a process that runs. */
std::string unconnectedProblem(const ProviderFacts& facts) {
    const std::string problem = "running but never connected: ";
    if (facts.lostAt) {
        const Time gap = facts.startedAt - *facts.lostAt;
        if (gap > kReconnecting) {
            return problem + "it was started " + secondsText(gap) +
                   " after the one before it had ended, and the service looks for " +
                   secondsText(kReconnecting) + " only; " + kRestartService;
        }
        if (facts.now - facts.startedAt < kTolerance) return "the service is about to connect it";
        return problem + "the service gave up on it; " + kRestartService;
    }
    if (facts.startedAt > facts.serviceReadyAt) {
        return problem + "it was started after the service had looked for it; " + kRestartService;
    }
    if (facts.now - facts.serviceReadyAt < kTolerance) return "the service is about to connect it";
    return problem + "the service has not registered with it; camerasim log says why";
}

}  // namespace

std::string problemOf(const ProviderFacts& facts) {
    if (facts.served) {
        if (!facts.declared)
            return "served but not declared in the manifest: a device finds it not";
        return servedProblem(facts);
    }
    if (!facts.described) return nobodysProblem(facts);
    if (!facts.declared && !facts.connected) return undeclaredProblem(facts);
    if (!facts.running) return deadProblem(facts);
    if (facts.hung) {
        return "hung: its process is stopped; camerasim start " + facts.instance + " lets it go on";
    }
    if (facts.connected) return "";
    if (facts.behind.empty()) return "running, but not mentioned by the map: no service fronts it";
    if (!facts.serviceRunning) return "running, but the camera provider service is not";
    if (!facts.frontServed) {
        return "running but never connected: it stands behind " + facts.behind +
               ", which the service does not serve; add that to device.yaml";
    }
    return unconnectedProblem(facts);
}

}  // namespace orvo::simulator
