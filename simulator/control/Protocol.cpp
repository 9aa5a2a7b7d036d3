// SPDX-License-Identifier: Apache-2.0
// Protocol: messages are lines of JSON; what they consist of tells one build from another.

#include "simulator/control/Protocol.h"

#include <cstdio>
#include <optional>

#include <android-base/strings.h>
#include <nlohmann/json.hpp>

#include "simulator/control/Complaint.h"
#include "simulator/description/OneLine.h"

namespace orvo::simulator {

using android::base::Result;
using nlohmann::json;

namespace {

/** Every message with its members, in the order in which they are declared below. */
std::string& schema() {
    static std::string text;
    return text;
}

struct Declaration {
    explicit Declaration(const char* message) { schema() += message; }
};

}  // namespace

// The JSON library's own macros of this kind make inline functions, which every source would
// compile. A reply has all of its members; a request may leave out what it does not care for.
#define ORVO_REPLY(Type, ...)                                                      \
    void to_json(json& nlohmann_json_j, const Type& nlohmann_json_t) {             \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_TO, __VA_ARGS__))   \
    }                                                                              \
    void from_json(const json& nlohmann_json_j, Type& nlohmann_json_t) {           \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_FROM, __VA_ARGS__)) \
    }                                                                              \
    static const Declaration k##Type(#Type " " #__VA_ARGS__ "\n");

#define ORVO_REQUEST(Type, ...)                                                                 \
    static void to_json(json& nlohmann_json_j, const Type& nlohmann_json_t) {                   \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_TO, __VA_ARGS__))                \
    }                                                                                           \
    static void from_json(const json& nlohmann_json_j, Type& nlohmann_json_t) {                 \
        const Type nlohmann_json_default_obj;                                                   \
        NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_FROM_WITH_DEFAULT, __VA_ARGS__)) \
    }                                                                                           \
    static const Declaration k##Type(#Type " " #__VA_ARGS__ "\n");

ORVO_REPLY(CameraOfProvider, name, status)
ORVO_REPLY(ProviderState, instance, behind, declared, described, inProcess, running, hung, pid,
           connected, deaths, lastEnd, problem, devices)
ORVO_REPLY(CameraState, name, service, status, torch, open)
ORVO_REPLY(ServiceState, running, pid, restarts, lastEnd, instances)
ORVO_REPLY(HeadsetState, name, directory, root, pid, uptimeSeconds, service, providers, cameras)
ORVO_REPLY(TimelineEvent, number, time, seconds, kind, who, what)
ORVO_REPLY(PropertyState, name, value)
ORVO_REPLY(VendorTag, id, name, type)
ORVO_REPLY(TagSection, name, tags)
ORVO_REPLY(ServiceTags, service, status, sections)
ORVO_REPLY(ServiceDump, service, text)
ORVO_REPLY(ServiceList, service, status, names, torchStatus, torchSupported)
ORVO_REPLY(Characteristic, tag, type, value)
ORVO_REPLY(OpenReply, camera, status, resourceCost, conflictingDevices, info, characteristics,
           characteristicsBytes, opened, heldOpen)
ORVO_REPLY(CloseReply, camera)
ORVO_REPLY(TorchReply, camera, status)
ORVO_REPLY(ProcessReply, provider, what, pid, ended)
ORVO_REPLY(PlugReply, device, status, dropped)
ORVO_REPLY(WaitReply, met, seconds)
ORVO_REPLY(EventsReply, next)
ORVO_REPLY(StopReply, complaints)

static void to_json(json& request, const NoMembers& /*none*/) {
    request = json::object();
}
static void from_json(const json& /*request*/, NoMembers& /*none*/) {}
ORVO_REQUEST(TagsRequest, service)
ORVO_REQUEST(DumpRequest, service)
ORVO_REQUEST(ListRequest, service)
ORVO_REQUEST(OpenRequest, camera, hold)
ORVO_REQUEST(CloseRequest, camera)
ORVO_REQUEST(TorchRequest, camera, on)
ORVO_REQUEST(KillRequest, provider, signal)
ORVO_REQUEST(HangRequest, provider)
ORVO_REQUEST(StartRequest, provider)
ORVO_REQUEST(PlugRequest, provider, device, present)
ORVO_REQUEST(WaitRequest, condition, timeout)
ORVO_REQUEST(EventsRequest, from, follow)

namespace {

/** A request of the command with that name, made by `make` for each kind until one fits. */
template <typename... Kinds>
std::optional<Request> requestOf(const std::string& command, const json& members,
                                 const std::variant<Kinds...>* /*of all kinds*/) {
    std::optional<Request> request;
    const auto tryOne = [&](auto kind) {
        if (command != decltype(kind)::kCommand) return;
        from_json(members, kind);
        request = std::move(kind);
    };
    (tryOne(Kinds()), ...);
    return request;
}

template <typename... Kinds>
std::vector<std::string> namesOf(const std::variant<Kinds...>* /*of all kinds*/) {
    return {Kinds::kCommand...};
}

constexpr const Request* kAllKinds = nullptr;

}  // namespace

std::vector<std::string> commandNames() {
    return namesOf(kAllKinds);
}

std::string protocolId() {
    // FNV-1a: it only has to tell builds apart, and to be the same in every process.
    uint32_t hash = 2166136261U;
    for (const char c : schema()) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    char text[16];
    snprintf(text, sizeof(text), "%08x", hash);
    return text;
}

std::string lineOf(const Request& request) {
    return std::visit(
            [](const auto& kind) {
                json line;
                to_json(line, kind);
                line["command"] = kind.kCommand;
                line["protocol"] = protocolId();
                return line.dump(-1, ' ', false, json::error_handler_t::replace);
            },
            request);
}

Result<Request> parseRequest(const std::string& line) {
    const json members = json::parse(line, nullptr, false);
    if (!members.is_object()) {
        return badUse(
                "the request is no JSON object; send one on one line, such as"
                " {\"command\":\"state\"}");
    }
    try {
        if (members.value("protocol", protocolId()) != protocolId()) {
            return didNotHappen(kOtherBuild);
        }
        const std::string command = members.value("command", "");
        auto request = requestOf(command, members, kAllKinds);
        if (request) return std::move(*request);
        return badUse("there is no command '" + onOneLine(command) + "'; there are " +
                      android::base::Join(commandNames(), ", "));
    } catch (const json::exception& mistake) {
        return badUse(std::string("a member of the request is of a wrong type (") + mistake.what() +
                      ")");
    }
}

}  // namespace orvo::simulator
