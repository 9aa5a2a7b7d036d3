// SPDX-License-Identifier: Apache-2.0
// Reads the replacement map file with libxml2 and answers from it.

#include "mapper/ProviderMapper.h"

#include <stdio.h>
#include <string.h>

#include <array>
#include <limits>
#include <memory>
#include <optional>

#include <android/log.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

namespace orvo::camera {
namespace {

constexpr char kLogTag[] = "ProviderMapper";
constexpr char kEntryElement[] = "instance";
constexpr char kReplaceAttribute[] = "replace";

struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
};
struct DocumentFreer {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
struct XmlStringFreer {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlDocument = std::unique_ptr<xmlDoc, DocumentFreer>;
using XmlString = std::unique_ptr<xmlChar, XmlStringFreer>;

const char* toText(const XmlString& string) {
    return string == nullptr ? "" : reinterpret_cast<const char*>(string.get());
}

// The whole file; nothing when it cannot be opened. A file that opens but cannot be read, such as
// a directory, reads as empty.
std::optional<std::string> readFile(const char* path) {
    const std::unique_ptr<FILE, FileCloser> file(fopen(path, "r"));
    if (file == nullptr) return std::nullopt;

    std::string text;
    std::array<char, 4096> buffer;
    size_t count;
    while ((count = fread(buffer.data(), 1, buffer.size(), file.get())) > 0) {
        text.append(buffer.data(), count);
    }
    return text;
}

// Null when `text` is not a document. The parser keeps its defaults: it substitutes no entity,
// loads no external one and no DTD, so it never reaches for the network or for another file.
XmlDocument parseDocument(const char* text) {
    const size_t size = strlen(text);
    if (size > static_cast<size_t>(std::numeric_limits<int>::max())) return nullptr;
    return XmlDocument(xmlParseMemory(text, static_cast<int>(size)));
}

bool isEntry(const xmlNode* node) {
    return node->type == XML_ELEMENT_NODE &&
           strcmp(reinterpret_cast<const char*>(node->name), kEntryElement) == 0;
}

}  // namespace

bool ProviderMapper::loadMapFromFile(const char* path) {
    mProviderMap.clear();
    return loadXml(path);
}

std::vector<std::string> ProviderMapper::getReplacementProviderNames(const char* name) {
    const auto found = mProviderMap.find(name);
    if (found == mProviderMap.end()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Failed to find replacement provider for '%s'", name);
        return {};
    }
    return found->second;
}

bool ProviderMapper::loadXml(const char* path) {
    const std::optional<std::string> text = readFile(path);
    if (!text.has_value()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to open %s", path);
        return false;
    }
    if (text->empty() || text->front() == '\0') {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to read %s", path);
        return false;
    }

    // As a C string: whatever follows a NUL byte is not part of the document.
    const XmlDocument document = parseDocument(text->c_str());
    if (document == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to parse XML");
        return false;
    }

    const xmlNode* const root = xmlDocGetRootElement(document.get());
    for (xmlNode* node = root->children; node != nullptr; node = node->next) {
        if (!isEntry(node)) continue;

        const XmlString replacement(
                xmlGetProp(node, reinterpret_cast<const xmlChar*>(kReplaceAttribute)));
        const XmlString instance(xmlNodeGetContent(node));
        if (replacement == nullptr) {
            __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                                "Skipping instance '%s': it has no \"replace\" attribute",
                                toText(instance));
            continue;
        }
        mProviderMap[toText(instance)].push_back(toText(replacement));
    }

    for (const auto& [instance, replacements] : mProviderMap) {
        for (const std::string& replacement : replacements) {
            __android_log_print(ANDROID_LOG_INFO, kLogTag,
                                "** ORVO Provider map loaded: '%s' -> '%s'", instance.c_str(),
                                replacement.c_str());
        }
    }
    return true;
}

}  // namespace orvo::camera
