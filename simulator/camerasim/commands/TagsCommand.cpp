// SPDX-License-Identifier: Apache-2.0
// TagsCommand: `camerasim tags`.

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/Colour.h"
#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/Output.h"

namespace orvo::simulator {

using Json = nlohmann::json;

namespace {

struct TagsOptions : DeviceOptions {
    std::string service;
};

std::string idText(const Json& id) {
    char text[16];
    snprintf(text, sizeof(text), "0x%08x", id.get<uint32_t>());
    return text;
}

void addSection(Table& table, const std::string& service, const Json& section) {
    const std::string name = section.at("name");
    // The library puts an empty section of a provider's name before that provider's sections.
    if (section.at("tags").empty()) table.addRow({service, {name, Paint::DIM}, "", "", ""});
    for (const Json& tag : section.at("tags")) {
        table.addRow({service, name, idText(tag.at("id")), tag.at("name").get<std::string>(),
                      tag.at("type").get<std::string>()});
    }
}

/** Adds what one service answered. @return why there is nothing to add; "" if there is. */
std::string addService(Table& table, const Json& answer) {
    const std::string service = answer.at("service");
    const std::string status = answer.at("status");
    if (status != "OK") return service + " answers " + status;
    if (answer.at("sections").empty()) return service + " has no vendor tags";
    for (const Json& section : answer.at("sections")) addSection(table, service, section);
    return "";
}

int listTags(const TagsOptions& options) {
    Json request = {{"command", "tags"}};
    if (!options.service.empty()) request["service"] = options.service;
    const auto answer = askDevice(options.device, request);
    if (!answer) return complain(answer.error());
    if (options.json()) {
        printDocument(*answer);
        return kAsExpected;
    }
    Table table({"SERVICE", "SECTION", "ID", "NAME", "TYPE"});
    std::string reasons;
    for (const Json& service : answer->is_array() ? *answer : Json::array({*answer})) {
        const std::string reason = addService(table, service);
        if (!reason.empty()) reasons += (reasons.empty() ? "" : "; ") + reason;
    }
    if (!table.empty()) table.print(std::cout, wantsColour());
    if (table.empty() && reasons.empty())
        reasons = "the device serves no instance; camerasim ps says why";
    if (!reasons.empty()) printNothing(reasons);
    return kAsExpected;
}

}  // namespace

void addTags(Commands& commands) {
    auto options = std::make_shared<TagsOptions>();
    commands.add({"tags", "list the vendor tags as the framework is given them",
                  "camerasim tags --service legacy/0"},
                 [options] { return listTags(*options); })
            .option("--service", options->service, "INSTANCE",
                    "only of this instance, such as legacy/0")
            .device(*options)
            .format(*options);
}

}  // namespace orvo::simulator
