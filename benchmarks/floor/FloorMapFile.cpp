// SPDX-License-Identifier: Apache-2.0
// Loading a map file at the floor.

#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include <android/log.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include "benchmarks/floor/FloorLog.h"
#include "benchmarks/floor/FloorProvider.h"

namespace orvo::benchmarks {
namespace {

// The whole file, in one string of the right size if that is known.
std::string contentOf(const char* path) {
    std::string text;
    FILE* const file = fopen(path, "r");
    if (file == nullptr) return text;
    struct stat facts;
    if (fstat(fileno(file), &facts) == 0) text.reserve(facts.st_size);
    char piece[4096];
    size_t count;
    while ((count = fread(piece, 1, sizeof(piece), file)) > 0) text.append(piece, count);
    fclose(file);
    return text;
}

// Runs `take` with both strings of each entry.
template <typename Take>
bool walk(const std::string& text, Take take) {
    xmlDoc* const document = xmlParseMemory(text.c_str(), static_cast<int>(strlen(text.c_str())));
    if (document == nullptr) return false;
    for (xmlNode* node = xmlDocGetRootElement(document)->children; node != nullptr;
         node = node->next) {
        if (node->type != XML_ELEMENT_NODE ||
            strcmp(reinterpret_cast<const char*>(node->name), "instance") != 0) {
            continue;
        }
        xmlChar* const replacement = xmlGetProp(node, reinterpret_cast<const xmlChar*>("replace"));
        xmlChar* const instance = xmlNodeGetContent(node);
        take(reinterpret_cast<const char*>(instance), reinterpret_cast<const char*>(replacement));
        xmlFree(replacement);
        xmlFree(instance);
    }
    xmlFreeDoc(document);
    return true;
}

}  // namespace

// Unavoidable beside the parser: both strings of each entry in a map that is ordered by instance,
// and a line for each.
bool loadMapAtFloor(const char* path, FloorMap& map) {
    const bool parsed = walk(contentOf(path), [&](const char* instance, const char* replacement) {
        map[instance].emplace_back(replacement);
    });
    if (!parsed) return false;
    for (const auto& [instance, replacements] : map) {
        for (const std::string& replacement : replacements) {
            __android_log_print(ANDROID_LOG_INFO, kMapTag,
                                "** ORVO Provider map loaded: '%s' -> '%s'", instance.c_str(),
                                replacement.c_str());
        }
    }
    return true;
}

size_t walkMapFile(const char* path) {
    size_t entries = 0;
    walk(contentOf(path), [&](const char*, const char*) { ++entries; });
    return entries;
}

}  // namespace orvo::benchmarks
