// SPDX-License-Identifier: Apache-2.0
// ProviderMap: the children <instance replace="external/0">legacy/0</instance> of the root.

#include "simulator/description/ProviderMap.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

#include <pugixml.hpp>

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;

namespace {

size_t lineAt(const std::string& text, ptrdiff_t offset) {
    const auto end = text.begin() + std::clamp<ptrdiff_t>(offset, 0, text.size());
    return std::count(text.begin(), end, '\n') + 1;
}

}  // namespace

Result<ProviderMap> ProviderMap::read(const std::string& file) {
    std::ifstream stream(file);
    std::ostringstream content;
    if (!stream || !(content << stream.rdbuf())) {
        return Error() << file << ": cannot be read (" << strerror(errno)
                       << "); add the provider map to the vendor tree";
    }
    const std::string text = content.str();
    pugi::xml_document document;
    const auto parsed = document.load_buffer(text.data(), text.size());
    if (!parsed) {
        return Error() << file << ":" << lineAt(text, parsed.offset) << ": is not XML ("
                       << parsed.description() << "); correct the line";
    }
    ProviderMap map;
    for (const pugi::xml_node& node : document.document_element().children("instance")) {
        const std::string where = file + ":" + std::to_string(lineAt(text, node.offset_debug()));
        const pugi::xml_attribute replace = node.attribute("replace");
        if (!replace) {
            return Error() << where << ": an instance has no 'replace'; name the provider that"
                           << " stands behind it";
        }
        map.mEntries.emplace_back(node.text().get(), replace.value());
    }
    return map;
}

std::vector<std::string> ProviderMap::behind(const std::string& instance) const {
    std::set<std::string> names;
    for (const auto& [key, name] : mEntries) {
        if (key == instance) names.insert(name);
    }
    return {names.begin(), names.end()};
}

}  // namespace orvo::simulator
