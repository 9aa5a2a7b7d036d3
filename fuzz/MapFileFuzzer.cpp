// SPDX-License-Identifier: Apache-2.0
// The replacement map file: any bytes give a map or none, and a map that is written down reads back
// as itself.

#include <map>
#include <string>
#include <vector>

#include <libxml/xmlerror.h>

#include "fuzz/support/MemoryFile.h"
#include "fuzz/support/Require.h"
#include "mapper/ProviderMapper.h"

namespace {

using orvo::camera::ProviderMapper;
using orvo::fuzz::MemoryFile;
using orvo::fuzz::require;

using Map = std::map<std::string, std::vector<std::string>>;

void dropError(void*, const char*, ...) {}

/** What may stand for the text inside an attribute and inside an element. */
std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const bool plain =
                c != '<' && c != '>' && c != '&' && c != '"' && c != '\n' && c != '\r' && c != '\t';
        result += plain ? std::string(1, c) : "&#" + std::to_string(c) + ";";
    }
    return result;
}

std::string toXml(const Map& map) {
    std::string xml = "<map>";
    for (const auto& [instance, replacements] : map) {
        for (const std::string& replacement : replacements) {
            xml += "<instance replace=\"" + escaped(replacement) + "\">" + escaped(instance) +
                   "</instance>";
        }
    }
    return xml + "</map>";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static MemoryFile file;
    [[maybe_unused]] static const bool quiet = [] {
        xmlSetGenericErrorFunc(nullptr, dropError);
        return true;
    }();

    file.write(data, size);
    ProviderMapper mapper;
    mapper.mProviderMap["left/0"] = {"over"};
    const bool loaded = mapper.loadMapFromFile(file.path().c_str());
    require(mapper.mProviderMap.count("left/0") == 0 || loaded, "loading forgets the earlier map");
    require(loaded || mapper.mProviderMap.empty(), "a file that cannot be read gives no entries");
    if (!loaded) return 0;

    const Map first = mapper.mProviderMap;
    for (const auto& [instance, replacements] : first) {
        require(!replacements.empty(), "an instance in the map has a replacement");
        require(mapper.getReplacementProviderNames(instance.c_str()) == replacements,
                "the map answers what it holds", instance);
    }
    require(mapper.loadMapFromFile(file.path().c_str()) && mapper.mProviderMap == first,
            "a second load gives the same map");

    const std::string xml = toXml(first);
    file.write(xml.data(), xml.size());
    require(mapper.loadMapFromFile(file.path().c_str()) && mapper.mProviderMap == first,
            "a map that is written down reads back as itself", xml);
    return 0;
}
