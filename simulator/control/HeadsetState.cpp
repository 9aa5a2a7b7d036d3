// SPDX-License-Identifier: Apache-2.0
// HeadsetState: the one place that knows how it looks as JSON.

#include "simulator/control/HeadsetState.h"

#include <nlohmann/json.hpp>

namespace orvo::simulator {

// The library's own macro of this kind makes inline functions, which every source would compile.
#define ORVO_JSON_MEMBERS(Type, ...)                                               \
    void to_json(nlohmann::json& nlohmann_json_j, const Type& nlohmann_json_t) {   \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_TO, __VA_ARGS__))   \
    }                                                                              \
    void from_json(const nlohmann::json& nlohmann_json_j, Type& nlohmann_json_t) { \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_FROM, __VA_ARGS__)) \
    }

ORVO_JSON_MEMBERS(CameraOfProvider, name, status)
ORVO_JSON_MEMBERS(ProviderState, instance, behind, declared, described, inProcess, running, hung,
                  pid, connected, deaths, lastEnd, problem, devices)
ORVO_JSON_MEMBERS(CameraState, name, service, status, torch, open)
ORVO_JSON_MEMBERS(ServiceState, running, pid, restarts, lastEnd, instances)
ORVO_JSON_MEMBERS(HeadsetState, name, directory, root, pid, uptimeSeconds, service, providers,
                  cameras)
ORVO_JSON_MEMBERS(TimelineEvent, number, time, seconds, kind, who, what)
ORVO_JSON_MEMBERS(PropertyState, name, value)

}  // namespace orvo::simulator
