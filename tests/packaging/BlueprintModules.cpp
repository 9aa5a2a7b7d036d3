// SPDX-License-Identifier: Apache-2.0
// Runs the reader of Android.bp and looks things up in what it printed.

#include "tests/packaging/BlueprintModules.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <android-base/file.h>
#include <gtest/gtest.h>

namespace orvo::test {

using nlohmann::json;

namespace {

std::string quoted(const std::string& word) {
    return "'" + word + "'";
}

// Adds to `values` what `more` has beside it: as Soong does, lists are joined and others stay.
void extend(json& values, const json& more) {
    if (values.is_null()) {
        values = more;
    } else if (values.is_array() && more.is_array()) {
        values.insert(values.end(), more.begin(), more.end());
    } else if (values.is_object() && more.is_object()) {
        for (const auto& [name, value] : more.items()) extend(values[name], value);
    }
}

}  // namespace

BlueprintReading readBlueprints(const std::filesystem::path& directory,
                                const std::vector<std::string>& files) {
    TemporaryFile output;
    TemporaryFile complaints;
    std::string command = "cd " + quoted(directory) + " && " ORVO_BLUEPRINT;
    for (const std::string& file : files) command += " " + quoted(file);
    command += " >" + quoted(output.path) + " 2>" + quoted(complaints.path);

    const int status = system(command.c_str());
    BlueprintReading reading;
    reading.accepted = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    android::base::ReadFileToString(output.path, &reading.output);
    android::base::ReadFileToString(complaints.path, &reading.complaints);
    return reading;
}

BlueprintModules::BlueprintModules(const std::string& text)
    : mModules(json::parse(text, nullptr, false /* no exceptions */)) {}

json BlueprintModules::module(const std::string& name) const {
    for (const json& module : mModules) {
        if (module["properties"].value("name", "") == name) return module;
    }
    ADD_FAILURE() << "there is no module " << name;
    return nullptr;
}

std::vector<std::string> BlueprintModules::namesOfType(const std::string& type) const {
    std::vector<std::string> names;
    for (const json& module : mModules) {
        if (module["type"] == type) names.push_back(module["properties"]["name"]);
    }
    return names;
}

json BlueprintModules::property(const std::string& name, const std::string& property) const {
    const json found = module(name);
    if (found.is_null()) return nullptr;
    json value = found["properties"].value(property, json());
    for (const json& defaults : found["properties"].value("defaults", json::array())) {
        extend(value, this->property(defaults, property));
    }
    return value;
}

std::set<std::string> BlueprintModules::list(const std::string& module,
                                             const std::string& property) const {
    const json value = this->property(module, property);
    return value.is_null() ? std::set<std::string>() : value.get<std::set<std::string>>();
}

std::set<std::string> BlueprintModules::files() const {
    std::set<std::string> found;
    for (const json& module : mModules) {
        const std::filesystem::path file = module["file"].get<std::string>();
        const auto add = [&](const json& name) {
            const std::string text = name;
            if (text[0] != ':') found.insert((file.parent_path() / text).lexically_normal());
        };
        for (const char* property : {"srcs", "init_rc", "vintf_fragments", "corpus"}) {
            for (const json& name : module["properties"].value(property, json::array())) add(name);
        }
        for (const char* property : {"src", "version_script", "dictionary"}) {
            if (module["properties"].contains(property)) add(module["properties"][property]);
        }
    }
    return found;
}

std::set<std::string> BlueprintModules::sources() const {
    std::set<std::string> sources;
    for (const std::string& file : files()) {
        if (std::filesystem::path(file).extension() == ".cpp") sources.insert(file);
    }
    return sources;
}

}  // namespace orvo::test
