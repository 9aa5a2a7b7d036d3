// SPDX-License-Identifier: Apache-2.0
// Tells the entries of a map file from what the library ignores in it.

#include "mapcheck/MapFile.h"

#include <strings.h>

#include <algorithm>
#include <iterator>

#include "host/vintf/XmlFile.h"

namespace orvo::mapcheck {
namespace {

constexpr char kEntryElement[] = "instance";
constexpr char kReplaceAttribute[] = "replace";
constexpr char kForm[] = R"(<instance replace="external/0">legacy/0</instance>)";

constexpr char kNothingServed[] = "with this map no instance but \"default/0\" is served";

// What libxml2 reads on its own, under all names that it has for it. UTF-16 is not among them: it
// has NUL bytes, which end the document.
constexpr const char* kBuiltInEncodings[] = {"UTF-8",       "UTF8",     "ISO-8859-1",
                                             "ISO-LATIN-1", "US-ASCII", "ASCII"};
constexpr long kXmlDeclarationLine = 1;  // Nothing may stand before it.

bool isEntry(const xmlNode* node) {
    return isElement(node, kEntryElement);
}

bool hasEntryForm(const xmlNode* node) {
    return isEntry(node) && attributeOf(node, kReplaceAttribute).has_value();
}

std::string tag(const xmlNode* node) {
    return "<" + escaped(nameOf(node)) + ">";
}

// Whoever wrote it meant an entry: it has the attribute, or the name but for its case.
bool looksLikeEntry(const xmlNode* node) {
    return strcasecmp(nameOf(node).c_str(), kEntryElement) == 0 ||
           attributeOf(node, kReplaceAttribute).has_value();
}

// The node after `node` in document order below `top`; null after the last one. What an entity
// stands for does not belong to the tree.
const xmlNode* next(const xmlNode* node, const xmlNode* top) {
    if (node->type == XML_ELEMENT_NODE && node->children != nullptr) return node->children;
    while (node != top && node->next == nullptr) node = node->parent;
    return node == top ? nullptr : node->next;
}

// Entries below a child of the root element, which the reader never looks at. True if there are
// any.
bool reportNested(const xmlNode* child, Findings* findings) {
    const char* const keyToo =
            isEntry(child) ? "; its text becomes part of the key of the entry around it" : "";
    bool any = false;
    for (const xmlNode* node = next(child, child); node != nullptr; node = next(node, child)) {
        if (!isEntry(node)) continue;
        any = true;
        findings->error(lineOf(node), "nested",
                        tag(node) + " is ignored, it is nested too deep; make it a child of the " +
                                "root element" + keyToo);
    }
    return any;
}

// An element that only groups entries is no mistake beside theirs.
void reportOtherElement(const xmlNode* node, bool hasNested, Findings* findings) {
    const std::string message = tag(node) + " is ignored; only elements named <instance>, in " +
                                "lower case, are entries";
    if (looksLikeEntry(node)) {
        findings->error(lineOf(node), "other-element", message);
    } else if (!hasNested) {
        findings->warning(lineOf(node), "other-element", message);
    }
}

void takeEntry(const xmlNode* node, MapFile* map, Findings* findings) {
    const std::string key = contentOf(node);
    const auto value = attributeOf(node, kReplaceAttribute);
    if (value.has_value()) {
        map->entries.push_back({lineOf(node), key, *value});
        return;
    }
    findings->error(lineOf(node), "no-replace",
                    "the entry " + quoted(key) + " is ignored, it has no \"replace\" attribute; " +
                            "name the provider that stands behind it");
}

// Blanks and line breaks are the layout of the file. A text with a "/" names an instance.
void reportText(const xmlNode* node, Findings* findings) {
    const std::string text = trimmed(contentOf(node));
    if (text.empty()) return;
    const size_t firstLine = text.find('\n');
    const std::string message = "the text " + quoted(text.substr(0, firstLine)) +
                                (firstLine == std::string::npos ? "" : " and what follows it") +
                                " is ignored; only elements such as " + kForm + " are entries";
    if (text.find('/') != std::string::npos) {
        findings->error(lineOf(node), "stray-text", message);
    } else {
        findings->warning(lineOf(node), "stray-text", message);
    }
}

void takeChild(const xmlNode* node, MapFile* map, Findings* findings) {
    if (node->type == XML_ENTITY_REF_NODE) {
        findings->error(lineOf(node), "entity-reference",
                        "&" + escaped(nameOf(node)) +
                                "; is ignored, entries that an entity stands for " +
                                "are not read; write them out");
        return;
    }
    const bool isText = node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE;
    // The text of a root element that is an entry was meant as its key.
    if (isText && !hasEntryForm(node->parent)) reportText(node, findings);
    if (node->type != XML_ELEMENT_NODE) return;
    const bool hasNested = reportNested(node, findings);
    if (isEntry(node)) {
        takeEntry(node, map, findings);
    } else {
        reportOtherElement(node, hasNested, findings);
    }
}

void reportRoot(const xmlNode* root, const MapFile& map, Findings* findings) {
    if (hasEntryForm(root)) {
        findings->error(lineOf(root), "root-is-entry",
                        "the root element is ignored, only its children are entries; put it into " +
                                std::string("a root element such as <providers>"));
    }
    if (map.entries.empty()) {
        findings->error(lineOf(root), "no-entry",
                        "the map is empty, so no instance but \"default/0\" is served; write " +
                                std::string("entries such as ") + kForm +
                                " as children of the root element " + tag(root));
    }
}

// The workstation's libxml2 asks iconv for what it does not know; a device's is built without.
void reportEncoding(const xmlDoc* document, Findings* findings) {
    if (document->encoding == nullptr) return;
    const std::string encoding = reinterpret_cast<const char*>(document->encoding);
    const bool isKnown = std::any_of(
            std::begin(kBuiltInEncodings), std::end(kBuiltInEncodings),
            [&](const char* known) { return strcasecmp(known, encoding.c_str()) == 0; });
    if (isKnown) return;
    findings->error(kXmlDeclarationLine, "encoding",
                    "the encoding " + quoted(encoding) + " is unknown to a device's XML reader, " +
                            "which refuses the whole file: " + kNothingServed +
                            "; write the file as UTF-8");
}

}  // namespace

MapFile MapFile::read(const std::string& path, Findings* findings) {
    MapFile map{false, {}};
    const XmlFile file = XmlFile::read(path);
    if (file.document == nullptr) {
        findings->error(file.mistake.line, file.mistake.code,
                        file.mistake.message + "; " + kNothingServed);
        return map;
    }
    reportEncoding(file.document.get(), findings);
    const xmlNode* const root = xmlDocGetRootElement(file.document.get());
    for (const xmlNode* node = root->children; node != nullptr; node = node->next) {
        takeChild(node, &map, findings);
    }
    reportRoot(root, map, findings);
    if (file.nulLine.has_value()) {
        findings->warning(*file.nulLine, "nul-byte",
                          "what follows the NUL byte is ignored; remove the byte");
    }
    map.usable = true;
    return map;
}

}  // namespace orvo::mapcheck
