// SPDX-License-Identifier: Apache-2.0
// Output: tables of what a device tells of itself, and the small texts around them.

#include "simulator/camerasim/commands/Output.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/Looks.h"

namespace orvo::simulator {

using Json = nlohmann::json;

namespace {

Cell runsCell(const ProviderState& provider) {
    if (provider.inProcess) return {"in the service", provider.running ? Paint::PLAIN : Paint::RED};
    if (!provider.running) return {"no", Paint::RED};
    if (provider.hung) return {"hung, " + std::to_string(provider.pid), Paint::YELLOW};
    return {std::to_string(provider.pid), Paint::PLAIN};
}

Cell yesOrNo(bool yes, Paint no = Paint::RED) {
    return {yes ? "yes" : "no", yes ? Paint::GREEN : no};
}

/** Such as "3 of 4": present ones of all. */
std::string devicesText(const ProviderState& provider) {
    const size_t present =
            std::count_if(provider.devices.begin(), provider.devices.end(),
                          [](const auto& device) { return device.status == "PRESENT"; });
    if (provider.devices.empty()) return "";
    return std::to_string(present) + " of " + std::to_string(provider.devices.size());
}

}  // namespace

std::string jsonText(const Json& document, int indent) {
    return document.dump(indent, ' ', false, Json::error_handler_t::replace);
}

void printDocument(const Json& document) {
    std::cout << jsonText(document, 2) << std::endl;
}

void printJsonLine(const Json& line) {
    std::cout << jsonText(line, -1) << std::endl;
}

void printNothing(const std::string& why) {
    std::cout << "nothing to list: " << why << std::endl;
}

std::string durationText(double seconds) {
    char text[64];
    const long whole = static_cast<long>(seconds);
    if (seconds < 10) {
        snprintf(text, sizeof(text), "%.2f s", seconds);
    } else if (whole < 60) {
        snprintf(text, sizeof(text), "%ld s", whole);
    } else if (whole < 3600) {
        snprintf(text, sizeof(text), "%ld min %ld s", whole / 60, whole % 60);
    } else {
        snprintf(text, sizeof(text), "%ld h %ld min", whole / 3600, whole / 60 % 60);
    }
    return text;
}

std::string counted(size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

Paint paintOf(const std::string& status) {
    static const std::vector<std::string> kGood = {"PRESENT", "OK", "AVAILABLE_ON"};
    static const std::vector<std::string> kBad = {"NOT_PRESENT", "NOT_AVAILABLE"};
    if (std::find(kGood.begin(), kGood.end(), status) != kGood.end()) return Paint::GREEN;
    if (std::find(kBad.begin(), kBad.end(), status) != kBad.end()) return Paint::RED;
    return Paint::PLAIN;
}

Table providerTable(const HeadsetState& state) {
    Table table({"PROVIDER", "BEHIND", "DECLARED", "RUNS", "CONNECTED", "DEATHS", "PRESENT",
                 "LAST END"});
    for (const ProviderState& provider : state.providers) {
        table.addRow({provider.instance, provider.behind, yesOrNo(provider.declared),
                      runsCell(provider), yesOrNo(provider.connected),
                      std::to_string(provider.deaths), devicesText(provider), provider.lastEnd});
        if (!provider.problem.empty()) table.addRemark(provider.problem);
    }
    return table;
}

Table cameraTable(const HeadsetState& state) {
    Table table({"CAMERA", "SERVICE", "STATUS", "TORCH", "OPEN"});
    for (const CameraState& camera : state.cameras) {
        table.addRow({camera.name,
                      camera.service,
                      {camera.status, paintOf(camera.status)},
                      {camera.torch, paintOf(camera.torch)},
                      camera.open ? "yes" : ""});
    }
    return table;
}

std::string headerOf(const HeadsetState& state) {
    const ServiceState& service = state.service;
    std::string text = state.name + ", up for " + durationText(state.uptimeSeconds) + ", in " +
                       state.root + "\ncamera provider service: ";
    text += service.running ? "process " + std::to_string(service.pid) : "not running";
    if (service.restarts > 0) text += ", restarted " + counted(service.restarts, "time");
    if (!service.lastEnd.empty()) text += ", last one " + service.lastEnd;
    return text + "; serves " + listed(service.instances);
}

void printCameras(const HeadsetState& state) {
    if (!state.cameras.empty()) cameraTable(state).print(std::cout, wantsColour());
    bool reasons = false;
    for (const ProviderState& provider : state.providers) {
        if (provider.problem.empty()) continue;
        reasons = true;
        const std::string line = provider.instance + ": " + provider.problem;
        std::cout << painted(line, Paint::YELLOW, wantsColour()) << "\n";
    }
    if (state.cameras.empty() && !reasons) printNothing("no provider has reported a camera");
    std::cout.flush();
}

std::string numberedEvent(const TimelineEvent& event, bool colour) {
    char number[24];
    snprintf(number, sizeof(number), "%4lld  ", static_cast<long long>(event.number));
    return number + eventLine(event, colour);
}

}  // namespace orvo::simulator
