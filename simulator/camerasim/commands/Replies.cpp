// SPDX-License-Identifier: Apache-2.0
// Replies: a table where there is something to list, a line where there is not.

#include "simulator/camerasim/commands/Replies.h"

#include <cstdio>
#include <iostream>

#include <android-base/strings.h>

#include "simulator/camerasim/Looks.h"
#include "simulator/camerasim/commands/Output.h"

namespace orvo::simulator {

namespace {

constexpr char kNoService[] = "the device serves no instance; camerasim ps says why";

void addSection(Table& table, const std::string& service, const TagSection& section) {
    // The library puts an empty section of a provider's name before that provider's sections.
    if (section.tags.empty()) table.addRow({service, {section.name, Paint::DIM}, "", "", ""});
    for (const VendorTag& tag : section.tags) {
        table.addRow({service, section.name, hexadecimal(tag.id), tag.name, tag.type});
    }
}

/** Prints the table, and below it the reasons why something is not in it. */
void print(const Table& table, std::vector<std::string> reasons) {
    if (!table.empty()) table.print(std::cout, wantsColour());
    if (table.empty() && reasons.empty()) reasons.emplace_back(kNoService);
    if (!reasons.empty()) printNothing(android::base::Join(reasons, "; "));
}

}  // namespace

void printProviders(const HeadsetState& state, const Values& /*values*/) {
    std::cout << headerOf(state) << "\n";
    if (state.providers.empty()) {
        printNothing("neither the map, the manifest nor device.yaml names a provider");
    } else {
        providerTable(state).print(std::cout, wantsColour());
    }
}

void printLists(const std::vector<ServiceList>& lists, const Values& /*values*/) {
    Table table({"SERVICE", "LISTED", "TORCHES"});
    std::vector<std::string> reasons;
    for (const ServiceList& list : lists) {
        const std::string torches = list.torchStatus != "OK" ? list.torchStatus
                                    : list.torchSupported    ? "can be switched"
                                                             : "cannot be switched";
        for (const std::string& name : list.names) table.addRow({list.service, name, torches});
        if (list.status != "OK") {
            reasons.push_back(list.service + " answers " + list.status);
        } else if (list.names.empty()) {
            reasons.push_back(list.service + " lists no camera");
        }
    }
    print(table, reasons);
}

void printTags(const std::vector<ServiceTags>& tags, const Values& /*values*/) {
    Table table({"SERVICE", "SECTION", "ID", "NAME", "TYPE"});
    std::vector<std::string> reasons;
    for (const ServiceTags& one : tags) {
        for (const TagSection& section : one.sections) addSection(table, one.service, section);
        if (one.status != "OK") {
            reasons.push_back(one.service + " answers " + one.status);
        } else if (one.sections.empty()) {
            reasons.push_back(one.service + " has no vendor tags");
        }
    }
    print(table, reasons);
}

std::string dumpText(const std::vector<ServiceDump>& dumps) {
    std::string all;
    for (const ServiceDump& dump : dumps) {
        all += all.empty() ? "" : "\n";
        all += dump.text.empty() ? dump.service + " has nothing to tell\n" : dump.text;
    }
    return all;
}

void printDumps(const std::vector<ServiceDump>& dumps, const Values& /*values*/) {
    const std::string text = dumpText(dumps);
    if (text.empty()) return printNothing(kNoService);
    std::cout << text;
}

void printProperties(const std::vector<PropertyState>& properties, const Values& /*values*/) {
    if (properties.empty()) return printNothing("no property has been set");
    Table table({"PROPERTY", "VALUE"});
    for (const PropertyState& property : properties) {
        table.addRow({property.name, "\"" + property.value + "\""});
    }
    table.print(std::cout, wantsColour());
}

void printOpened(const OpenReply& reply, const Values& values) {
    std::cout << reply.camera << ": resource cost " << reply.resourceCost << ", conflicts with "
              << listed(reply.conflictingDevices) << "\n";
    if (!reply.info.empty()) std::cout << reply.info << "\n";
    if (!reply.characteristics.empty()) {
        Table table({"CHARACTERISTIC", "TYPE", "VALUE"});
        for (const Characteristic& entry : reply.characteristics) {
            table.addRow({hexadecimal(entry.tag), entry.type, entry.value});
        }
        table.print(std::cout, wantsColour());
    }
    if (!reply.opened) {
        std::cout << "read, not opened: it is of version 1, whose interface nothing here opens\n";
    } else if (values.has("--hold")) {
        std::cout << "opened; camerasim close " << reply.camera << " closes it\n";
    } else {
        std::cout << "opened, and closed\n";
    }
}

std::string whyNotOpened(const OpenReply& reply, const Values& /*values*/) {
    if (reply.opened || reply.status == "OK") return "";
    std::string line = reply.camera + " was not opened: " + reply.status;
    const bool inTheWay = reply.status == "CAMERA_IN_USE" || reply.status == "MAX_CAMERAS_IN_USE";
    if (inTheWay && !reply.heldOpen.empty()) {
        line += "; held open are " + listed(reply.heldOpen) + ", and camerasim close closes them";
    }
    return line;
}

void printTorch(const TorchReply& reply, const Values& values) {
    std::cout << reply.camera << ": torch " << values.text("MODE") << "\n";
}

std::string whyNotSwitched(const TorchReply& reply, const Values& /*values*/) {
    if (reply.status == "OK") return "";
    return "the torch of " + reply.camera + " was not switched: " + reply.status;
}

void printPlugged(const PlugReply& reply, const Values& /*values*/) {
    std::cout << reply.device << ": " << reply.status << "\n";
    for (const std::string& camera : reply.dropped) {
        std::cout << "the session of " << camera << ", which was held open, is gone\n";
    }
}

void printKilled(const ProcessReply& reply, const Values& /*values*/) {
    std::cout << reply.provider << ": " << reply.what << "\n";
}

std::string whyNotEnded(const ProcessReply& reply, const Values& /*values*/) {
    return reply.ended ? "" : reply.provider + " has not ended: it " + reply.what;
}

void printProcess(const ProcessReply& reply, const Values& /*values*/) {
    std::cout << reply.provider << ": " << reply.what << ", process " << reply.pid << "\n";
}

void printWaited(const WaitReply& reply, const Values& values) {
    std::cout << android::base::Join(values.words("CONDITION"), " ") << " after "
              << durationText(reply.seconds) << "\n";
}

std::string whyNotMet(const WaitReply& reply, const Values& values) {
    if (reply.met) return "";
    return "after " + durationText(reply.seconds) +
           " not yet: " + android::base::Join(values.words("CONDITION"), " ");
}

}  // namespace orvo::simulator
