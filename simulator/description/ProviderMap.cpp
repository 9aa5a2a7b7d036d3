// SPDX-License-Identifier: Apache-2.0
// ProviderMap: the library's reader, with its ears and its log held.

#include "simulator/description/ProviderMap.h"

#include <set>

#include <android/log.h>

#include "host/log/ProgramLog.h"
#include "host/vintf/XmlFile.h"
#include "mapper/ProviderMapper.h"
#include "simulator/description/OneLine.h"

namespace orvo::simulator {

ProviderMap ProviderMap::read(const std::string& file) {
    camera::ProviderMapper mapper;
    const XmlErrors errors;  // else the parser prints them
    const KeptLog log;
    mapper.loadMapFromFile(file.c_str());

    ProviderMap map;
    for (const auto& [instance, names] : mapper.mProviderMap) {
        for (const std::string& name : names) map.mEntries.emplace_back(instance, name);
    }
    std::string where = file + ": ";
    if (const auto& mistake = errors.first()) {
        where = file + ":" + std::to_string(mistake->line) + ": " + mistake->message + "; ";
    }
    for (const LoggedLine& line : log.lines()) {
        if (line.priority < ANDROID_LOG_WARN) continue;
        map.mWarnings.push_back(onOneLine(where + "the reader says '" + line.message + "'"));
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
