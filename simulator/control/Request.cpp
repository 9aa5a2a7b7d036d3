// SPDX-License-Identifier: Apache-2.0
// Request: one table says which members each command has.

#include "simulator/control/Request.h"

#include <map>

#include <android-base/strings.h>
#include <nlohmann/json.hpp>

#include "simulator/description/OneLine.h"

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;
using android::base::unexpected;
using nlohmann::json;

namespace {

enum class Type { TEXT, FLAG, NUMBER, OBJECT };

struct Member {
    const char* name;
    Type type;
    json fallback;  ///< discarded, as nlohmann calls it, if the member is required
};

const json kRequired = json(json::value_t::discarded);
const json kAbsent = nullptr;

/** Key: command; value: its members. */
const std::map<std::string, std::vector<Member>>& grammar() {
    static const std::map<std::string, std::vector<Member>> kGrammar = {
            {"state", {}},
            {"tags", {{"service", Type::TEXT, kAbsent}}},
            {"dump", {{"service", Type::TEXT, kAbsent}}},
            {"props", {}},
            {"open", {{"camera", Type::TEXT, kRequired}, {"hold", Type::FLAG, false}}},
            {"close", {{"camera", Type::TEXT, kRequired}}},
            {"kill", {{"provider", Type::TEXT, kRequired}, {"signal", Type::TEXT, "KILL"}}},
            {"exit", {{"provider", Type::TEXT, kRequired}}},
            {"hang", {{"provider", Type::TEXT, kRequired}}},
            {"resume", {{"provider", Type::TEXT, kRequired}}},
            {"start", {{"provider", Type::TEXT, kRequired}}},
            {"plug", {{"provider", Type::TEXT, kRequired}, {"device", Type::TEXT, kRequired}}},
            {"unplug", {{"provider", Type::TEXT, kRequired}, {"device", Type::TEXT, kRequired}}},
            {"torch", {{"camera", Type::TEXT, kRequired}, {"on", Type::FLAG, kRequired}}},
            {"events", {{"from", Type::NUMBER, 1}, {"follow", Type::FLAG, false}}},
            {"wait", {{"condition", Type::OBJECT, kRequired}, {"timeout", Type::NUMBER, 60}}},
            {"stop", {}},
    };
    return kGrammar;
}

bool is(const json& value, Type type) {
    switch (type) {
        case Type::TEXT:
            return value.is_string();
        case Type::FLAG:
            return value.is_boolean();
        case Type::NUMBER:
            return value.is_number();
        case Type::OBJECT:
            return value.is_object();
    }
    return false;
}

const char* wordFor(Type type) {
    switch (type) {
        case Type::TEXT:
            return "a text";
        case Type::FLAG:
            return "true or false";
        case Type::NUMBER:
            return "a number";
        case Type::OBJECT:
            return "an object";
    }
    return "";
}

/** Checks one member, or fills it in. */
Result<void> take(const Member& member, Request* request) {
    const auto found = request->members.find(member.name);
    if (found != request->members.end() && !found->is_null()) {
        if (is(*found, member.type)) return {};
        return Error() << request->command << ": '" << member.name << "' is not "
                       << wordFor(member.type) << "; send " << wordFor(member.type);
    }
    if (member.fallback.is_discarded()) {
        return Error() << request->command << ": '" << member.name << "' is missing; send "
                       << wordFor(member.type);
    }
    request->members[member.name] = member.fallback;
    return {};
}

}  // namespace

Result<Request> Request::parse(const std::string& line) {
    Request request;
    request.members = json::parse(line, nullptr, false);
    if (request.members.is_discarded() || !request.members.is_object()) {
        return Error() << "the request is no JSON object; send one on one line, such as"
                       << " {\"command\":\"state\"}";
    }
    const auto command = request.members.find("command");
    if (command == request.members.end() || !command->is_string()) {
        return Error() << "the request has no 'command'; it is one of "
                       << android::base::Join(commands(), ", ");
    }
    request.command = command->get<std::string>();
    const auto members = grammar().find(request.command);
    if (members == grammar().end()) {
        return Error() << "there is no command '" << onOneLine(request.command) << "'; there are "
                       << android::base::Join(commands(), ", ");
    }
    for (const Member& member : members->second) {
        const auto taken = take(member, &request);
        if (!taken) return unexpected(taken.error());
    }
    return request;
}

std::vector<std::string> Request::commands() {
    std::vector<std::string> names;
    for (const auto& [name, members] : grammar()) names.push_back(name);
    return names;
}

}  // namespace orvo::simulator
