// SPDX-License-Identifier: Apache-2.0
// Reads the replacement map file with libxml2 and answers from it.

#include "mapper/ProviderMapper.h"

#include <stdio.h>
#include <string.h>

#include <array>
#include <limits>
#include <memory>

#include <android/log.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

namespace orvo::camera {
namespace {

constexpr char kLogTag[] = "ProviderMapper";
constexpr char kEntryElement[] = "instance";
constexpr char kReplaceAttribute[] = "replace";
constexpr size_t kMaxDocumentSize = std::numeric_limits<int>::max();  // Of the parser's interface.

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
    return reinterpret_cast<const char*>(string.get());
}

// The length of the document in a file: what follows a NUL byte is not part of it. Stops counting
// at one more than the parser can take, so that a huge file costs neither memory nor time.
size_t documentSize(FILE* file) {
    std::array<char, 4096> buffer;
    size_t size = 0;
    size_t count;
    do {
        count = fread(buffer.data(), 1, buffer.size(), file);
        const size_t text = strnlen(buffer.data(), count);
        size += text;
        if (text < count) break;
    } while (count == buffer.size() && size <= kMaxDocumentSize);
    return size;
}

// Null when the file's first `size` bytes are not a document. The parser keeps its defaults: it
// substitutes no entity, loads no external one and no DTD, so it never reaches for the network or
// for another file.
XmlDocument parseDocument(FILE* file, size_t size) {
    if (size > kMaxDocumentSize) return nullptr;
    std::string text(size, '\0');
    rewind(file);
    text.resize(fread(text.data(), 1, size, file));
    return XmlDocument(xmlParseMemory(text.data(), static_cast<int>(text.size())));
}

bool isEntry(const xmlNode* node) {
    return node->type == XML_ELEMENT_NODE &&
           strcmp(reinterpret_cast<const char*>(node->name), kEntryElement) == 0;
}

// Adds the entry to the map, or says why it does not. `map` is that of ProviderMapper.
void addEntry(xmlNode* node, std::map<std::string, std::vector<std::string>>& map) {
    const XmlString replacement(
            xmlGetProp(node, reinterpret_cast<const xmlChar*>(kReplaceAttribute)));
    const XmlString instance(xmlNodeGetContent(node));
    if (instance == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Skipping an instance: out of memory while reading it");
        return;
    }
    if (replacement == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Skipping instance '%s': it has no \"replace\" attribute",
                            toText(instance));
        return;
    }
    map[toText(instance)].push_back(toText(replacement));
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
    const std::unique_ptr<FILE, FileCloser> file(fopen(path, "r"));
    if (file == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to open %s", path);
        return false;
    }
    // A file that opens but cannot be read, such as a directory, counts as empty.
    const size_t size = documentSize(file.get());
    if (size == 0) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to read %s", path);
        return false;
    }
    const XmlDocument document = parseDocument(file.get(), size);
    if (document == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to parse XML");
        return false;
    }

    const xmlNode* const root = xmlDocGetRootElement(document.get());
    for (xmlNode* node = root->children; node != nullptr; node = node->next) {
        if (isEntry(node)) addEntry(node, mProviderMap);
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
