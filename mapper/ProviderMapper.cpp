// SPDX-License-Identifier: Apache-2.0
// Reads the replacement map file with libxml2 and answers from it.

#define LOG_TAG "ProviderMapper"

#include "mapper/ProviderMapper.h"

#include <stdio.h>
#include <string.h>

#include <limits>
#include <memory>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <log/log.h>

namespace orvo::camera {
namespace {

constexpr size_t kMaxDocumentSize = std::numeric_limits<int>::max();  // Of the parser's interface.

using XmlDocument = std::unique_ptr<xmlDoc, void (*)(xmlDoc*)>;
using XmlString = std::unique_ptr<char, void (*)(void*)>;

XmlString own(xmlChar* string) {
    return {reinterpret_cast<char*>(string), xmlFree};
}

// The length of the document in a file: what follows a NUL byte is not part of it. Stops counting
// at one more than the parser can take, so that a huge file costs neither memory nor time.
size_t documentSize(FILE* file) {
    char piece[4096];
    size_t size = 0;
    size_t count;
    do {
        count = strnlen(piece, fread(piece, 1, sizeof(piece), file));
        size += count;
    } while (count == sizeof(piece) && size <= kMaxDocumentSize);
    return size;
}

// Null when the file's first `size` bytes are not a document. The parser's defaults substitute no
// entity and load neither an external one nor a DTD, so it reaches for no other file or network.
XmlDocument parseDocument(FILE* file, size_t size) {
    if (size > kMaxDocumentSize) return {nullptr, xmlFreeDoc};
    std::string text(size, '\0');
    rewind(file);
    text.resize(fread(text.data(), 1, size, file));
    return {xmlParseMemory(text.data(), static_cast<int>(text.size())), xmlFreeDoc};
}

// Adds an element to the map if it is an entry, or says why it does not.
void addEntry(xmlNode* node, std::map<std::string, std::vector<std::string>>& map) {
    if (node->type != XML_ELEMENT_NODE || !xmlStrEqual(node->name, BAD_CAST "instance")) return;

    const XmlString replacement = own(xmlGetProp(node, BAD_CAST "replace"));
    const XmlString instance = own(xmlNodeGetContent(node));
    if (instance == nullptr) {
        ALOGE("Skipping an instance: out of memory while reading it");
        return;
    }
    if (replacement == nullptr) {
        ALOGE("Skipping instance '%s': it has no \"replace\" attribute", instance.get());
        return;
    }
    map[instance.get()].push_back(replacement.get());
}

}  // namespace

bool ProviderMapper::loadMapFromFile(const char* path) {
    mProviderMap.clear();
    return loadXml(path);
}

bool ProviderMapper::loadXml(const char* path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path, "r"), fclose);
    if (file == nullptr) {
        ALOGE("Failed to open %s", path);
        return false;
    }
    // A file that opens but cannot be read, such as a directory, counts as empty.
    const size_t size = documentSize(file.get());
    if (size == 0) {
        ALOGE("Failed to read %s", path);
        return false;
    }
    const XmlDocument document = parseDocument(file.get(), size);
    if (document == nullptr) {
        ALOGE("Failed to parse XML");
        return false;
    }

    xmlNode* node = xmlDocGetRootElement(document.get())->children;
    for (; node != nullptr; node = node->next) addEntry(node, mProviderMap);

    for (const auto& [instance, replacements] : mProviderMap) {
        for (const std::string& replacement : replacements) {
            ALOGI("** ORVO Provider map loaded: '%s' -> '%s'", instance.c_str(),
                  replacement.c_str());
        }
    }
    return true;
}

std::vector<std::string> ProviderMapper::getReplacementProviderNames(const char* name) {
    const auto found = mProviderMap.find(name);
    if (found == mProviderMap.end()) {
        ALOGE("Failed to find replacement provider for '%s'", name);
        return {};
    }
    return found->second;
}

}  // namespace orvo::camera
