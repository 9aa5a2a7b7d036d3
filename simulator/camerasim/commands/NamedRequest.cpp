// SPDX-License-Identifier: Apache-2.0
// NamedRequest: the device words its errors; only what kind they are is found out here.

#include "simulator/camerasim/commands/NamedRequest.h"

#include <algorithm>

#include <android-base/strings.h>
#include <nlohmann/json.hpp>

#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/control/HeadsetState.h"

namespace orvo::simulator {

using android::base::Result;
using android::base::unexpected;
using Json = nlohmann::json;

namespace {

/** What the camera provider service is called where a provider is named. */
constexpr char kService[] = "service";

template <typename List, typename Fits>
bool any(const List& list, Fits fits) {
    return std::any_of(list.begin(), list.end(), fits);
}

bool hasProvider(const HeadsetState& state, const std::string& name) {
    return name == kService ||
           any(state.providers, [&](const auto& provider) { return provider.instance == name; });
}

bool hasCamera(const HeadsetState& state, const std::string& name) {
    return any(state.cameras, [&](const auto& camera) { return camera.name == name; });
}

/** By its name or by its id. */
bool hasDevice(const HeadsetState& state, const std::string& name) {
    return any(state.providers, [&](const ProviderState& provider) {
        return any(provider.devices, [&](const CameraOfProvider& device) {
            return device.name == name || android::base::EndsWith(device.name, "/" + name);
        });
    });
}

bool serves(const HeadsetState& state, const std::string& name) {
    return any(state.service.instances, [&](const auto& instance) { return instance == name; });
}

/** Whether the request has the member and its name is a stranger's. */
template <typename Knows>
bool namesStranger(const Json& request, const char* member, const HeadsetState& state,
                   Knows knows) {
    return request.contains(member) && !knows(state, request.at(member).get<std::string>());
}

bool namesStranger(const Json& request, const HeadsetState& state) {
    return namesStranger(request, "provider", state, hasProvider) ||
           namesStranger(request, "camera", state, hasCamera) ||
           namesStranger(request, "device", state, hasDevice) ||
           namesStranger(request, "service", state, serves) ||
           (request.contains("condition") &&
            namesStranger(request.at("condition"), "provider", state, hasProvider));
}

}  // namespace

Result<Json> askByName(const std::string& root, const Json& request,
                       std::chrono::milliseconds patience) {
    auto answer = ask(root, request, patience);
    if (answer) return answer;
    const auto state = ask(root, {{"command", "state"}});
    if (!state || !namesStranger(request, state->get<HeadsetState>())) return answer;
    return unexpected(badUse(answer.error().message()));
}

}  // namespace orvo::simulator
