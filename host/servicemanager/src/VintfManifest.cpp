// SPDX-License-Identifier: Apache-2.0
// Interface names and the look-ups in declared instances.

#include "VintfManifest.h"

#include <string.h>

#include <charconv>
#include <fstream>
#include <set>
#include <sstream>
#include <system_error>

namespace orvo {

using android::base::Error;
using android::base::Result;

namespace {

std::optional<uint32_t> parseNumber(std::string_view text) {
    const char* const end = text.data() + text.size();
    uint32_t number = 0;
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stopped != end) return std::nullopt;
    return number;
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

Result<void> VintfManifest::addFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    // A directory opens, and fails only when it is read.
    if (!stream || !(text << stream.rdbuf())) {
        std::error_code code;
        const bool exists = std::filesystem::exists(file, code);
        const bool empty = exists && std::filesystem::is_regular_file(file, code) &&
                           std::filesystem::file_size(file, code) == 0;
        return Error() << file.string() << ": "
                       << (empty    ? "is empty; a manifest has a <manifest> element"
                           : exists ? "cannot be read; name a readable manifest file"
                                    : "does not exist; name an existing manifest file");
    }
    return addText(text.str(), file.string());
}

Result<void> VintfManifest::addDirectory(const std::filesystem::path& directory) {
    std::vector<std::filesystem::path> files;
    std::error_code code;
    const std::filesystem::path chief = directory / "manifest.xml";
    if (std::filesystem::exists(chief, code)) files.push_back(chief);

    std::set<std::filesystem::path> fragments;
    for (const auto& entry : std::filesystem::directory_iterator(directory / "manifest", code)) {
        if (entry.path().extension() == ".xml") fragments.insert(entry.path());
    }
    files.insert(files.end(), fragments.begin(), fragments.end());
    for (const std::filesystem::path& file : files) {
        if (auto added = addFile(file); !added) return added;
    }
    return {};
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
