// SPDX-License-Identifier: Apache-2.0
// Interface names and the look-ups in declared instances.

#include "host/vintf/VintfManifest.h"

#include <dirent.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <utility>

namespace orvo {

namespace {

constexpr size_t kMostDigits = 9;  // All such numbers fit.

std::optional<uint32_t> parseNumber(std::string_view text) {
    const bool areDigits =
            std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (text.empty() || text.size() > kMostDigits || !areDigits) return std::nullopt;
    return static_cast<uint32_t>(strtoul(std::string(text).c_str(), nullptr, 10));
}

/** The files of a directory that end with ".xml", sorted; none if there is no such directory. */
std::set<std::string> fragmentsIn(const std::string& directory) {
    constexpr std::string_view kEnding = ".xml";
    std::set<std::string> files;
    DIR* const stream = opendir(directory.c_str());
    if (stream == nullptr) return files;
    while (const dirent* entry = readdir(stream)) {
        const std::string_view name = entry->d_name;
        if (name.size() > kEnding.size() &&
            name.compare(name.size() - kEnding.size(), kEnding.size(), kEnding) == 0) {
            files.insert(directory + "/" + entry->d_name);
        }
    }
    closedir(stream);
    return files;
}

bool isIdentifier(std::string_view text, bool dotsAllowed) {
    if (text.empty()) return false;
    for (char c : text) {
        const bool letterOrDigit = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                                   (c >= '0' && c <= '9') || c == '_';
        if (!letterOrDigit && !(dotsAllowed && c == '.')) return false;
    }
    return true;
}

}  // namespace

std::string ManifestMistake::toText() const {
    return file + ":" + (line > 0 ? std::to_string(line) + ":" : "") + " " + message;
}

std::optional<InterfaceName> InterfaceName::parse(std::string_view text) {
    const size_t at = text.find('@');
    if (at == std::string_view::npos) return std::nullopt;
    const size_t colons = text.find("::", at);
    if (colons == std::string_view::npos) return std::nullopt;
    const std::string_view version = text.substr(at + 1, colons - at - 1);
    const size_t dot = version.find('.');
    if (dot == std::string_view::npos) return std::nullopt;

    const std::string package(text.substr(0, at));
    const std::string interface(text.substr(colons + 2));
    const auto major = parseNumber(version.substr(0, dot));
    const auto minor = parseNumber(version.substr(dot + 1));
    if (!major || !minor || !isIdentifier(package, true) || !isIdentifier(interface, false)) {
        return std::nullopt;
    }
    return InterfaceName{package, *major, *minor, interface};
}

ManifestMistakes VintfManifest::addDirectory(const std::string& directory) {
    ManifestMistakes mistakes;
    const auto addOne = [&](const std::string& file) {
        for (ManifestMistake& mistake : addFile(file)) mistakes.push_back(std::move(mistake));
    };
    const std::string chief = directory + "/manifest.xml";
    if (access(chief.c_str(), F_OK) == 0) addOne(chief);
    for (const std::string& fragment : fragmentsIn(directory + "/manifest")) addOne(fragment);
    return mistakes;
}

bool VintfManifest::declare(const InterfaceName& name, const std::string& instance,
                            Transport transport, bool byFramework) {
    auto& declarations = mDeclarations[{name.package, name.major, name.interface}];
    for (const Declaration& declaration : declarations) {
        if (declaration.minor != name.minor || declaration.instance != instance) continue;
        if (declaration.byFramework != byFramework) continue;
        return declaration.transport == transport;
    }
    declarations.push_back({name.minor, instance, transport, byFramework});
    return true;
}

const std::vector<VintfManifest::Declaration>* VintfManifest::find(
        const InterfaceName& name) const {
    const auto found = mDeclarations.find({name.package, name.major, name.interface});
    return found == mDeclarations.end() ? nullptr : &found->second;
}

std::optional<VintfManifest::Transport> VintfManifest::transportOf(
        const std::string& fqName, const std::string& instance) const {
    const auto name = InterfaceName::parse(fqName);
    const std::vector<Declaration>* declarations = name ? find(*name) : nullptr;
    if (declarations == nullptr) return std::nullopt;
    for (bool framework : {true, false}) {
        for (const Declaration& declaration : *declarations) {
            if (declaration.byFramework == framework && declaration.instance == instance &&
                declaration.minor >= name->minor) {
                return declaration.transport;
            }
        }
    }
    return std::nullopt;
}

std::vector<std::string> VintfManifest::instancesOf(const std::string& fqName) const {
    const auto name = InterfaceName::parse(fqName);
    const std::vector<Declaration>* declarations = name ? find(*name) : nullptr;
    if (declarations == nullptr) return {};
    std::set<std::string> instances;
    for (const Declaration& declaration : *declarations) {
        if (declaration.minor >= name->minor) instances.insert(declaration.instance);
    }
    return {instances.begin(), instances.end()};
}

}  // namespace orvo
