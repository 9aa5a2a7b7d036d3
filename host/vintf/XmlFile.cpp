// SPDX-License-Identifier: Apache-2.0
// Parses with libxml2's defaults, as xmlParseMemory does, but keeps lines beyond 65,535 and the
// line of texts.

#include "host/vintf/XmlFile.h"

#include <errno.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <limits>

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

namespace orvo {
namespace {

struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
};
struct ParserFreer {
    void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};
struct XmlStringFreer {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlString = std::unique_ptr<xmlChar, XmlStringFreer>;

constexpr long kWholeFile = 0;
constexpr char kUnreadable[] = "unreadable";
constexpr char kNotXml[] = "not-xml";
constexpr char kEmptyFile[] = "empty-file";
constexpr char kNulEnd[] = "ends the document; write the file as UTF-8, without such bytes";

const char* toText(const xmlChar* text) {
    return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

// libxml2 keeps the line on which the first piece of a text ends, so where a text begins is noted
// where it leaves room for its user. The parser is at the end of the piece that it hands out.
void noteTextLine(xmlParserCtxt* parser, const xmlChar* text, int size) {
    xmlNode* const node = parser->node == nullptr ? nullptr : parser->node->last;
    if (node == nullptr || node->_private != nullptr) return;
    const xmlChar* const end = text + size;
    const xmlChar* const begin =
            std::find_if(text, end, [](xmlChar c) { return strchr(kXmlBlanks, c) == nullptr; });
    if (begin == end) return;
    const intptr_t line = xmlSAX2GetLineNumber(parser) - std::count(begin, end, '\n');
    node->_private = reinterpret_cast<void*>(line);
}

void onText(void* context, const xmlChar* text, int size) {
    xmlSAX2Characters(context, text, size);
    noteTextLine(static_cast<xmlParserCtxt*>(context), text, size);
}

void onCdata(void* context, const xmlChar* text, int size) {
    xmlSAX2CDataBlock(context, text, size);
    noteTextLine(static_cast<xmlParserCtxt*>(context), text, size);
}

// Why the file cannot be read, or nothing and its bytes.
std::optional<XmlMistake> readBytes(const std::string& path, std::string* bytes) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        return XmlMistake{kUnreadable, kWholeFile,
                          std::string("cannot be opened (") + strerror(errno) + ")"};
    }
    // A pipe may never end.
    if (!S_ISREG(status.st_mode)) {
        return XmlMistake{kUnreadable, kWholeFile, "is not a regular file"};
    }
    if (status.st_size > std::numeric_limits<int>::max()) {
        return XmlMistake{kNotXml, kWholeFile, "is larger than the parser can take"};
    }
    const std::unique_ptr<FILE, FileCloser> file(fopen(path.c_str(), "r"));
    if (file == nullptr) {
        return XmlMistake{kUnreadable, kWholeFile,
                          std::string("cannot be opened (") + strerror(errno) + ")"};
    }
    std::array<char, 65536> buffer;
    size_t count;
    while ((count = fread(buffer.data(), 1, buffer.size(), file.get())) > 0) {
        bytes->append(buffer.data(), count);
    }
    return std::nullopt;
}

// Null when the text is not a document.
xmlDoc* documentOf(const char* text, size_t size) {
    const std::unique_ptr<xmlParserCtxt, ParserFreer> parser(
            xmlCreateMemoryParserCtxt(text, static_cast<int>(size)));
    if (parser == nullptr) return nullptr;
    xmlCtxtUseOptions(parser.get(), XML_PARSE_BIG_LINES);
    parser->sax->characters = onText;
    parser->sax->ignorableWhitespace = onText;  // As long as the two are one, no text is left out.
    parser->sax->cdataBlock = onCdata;
    xmlParseDocument(parser.get());
    if (parser->wellFormed) return parser->myDoc;
    xmlFreeDoc(parser->myDoc);
    return nullptr;
}

// A document that a NUL byte cuts off has its first mistake there.
void nameNulByte(std::optional<long> nulLine, XmlMistake* mistake) {
    if (!nulLine.has_value() || mistake->line < *nulLine) return;
    mistake->line = *nulLine;
    mistake->message += ": a NUL byte on line " + std::to_string(*nulLine) + " " + kNulEnd;
}

}  // namespace

XmlFile XmlFile::read(const std::string& path) {
    std::string bytes;
    if (const auto mistake = readBytes(path, &bytes)) {
        XmlFile file{};
        file.mistake = *mistake;
        return file;
    }
    return parse(bytes);
}

XmlFile XmlFile::parse(const std::string& bytes) {
    XmlFile file{};
    const size_t size = strlen(bytes.c_str());
    if (size == 0) {
        file.mistake =
                bytes.empty() ? XmlMistake{kEmptyFile, kWholeFile, "is empty"}
                              : XmlMistake{kEmptyFile, 1,
                                           std::string("begins with a NUL byte, which ") + kNulEnd};
        return file;
    }
    if (size < bytes.size()) {
        file.nulLine =
                std::count(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size), '\n') + 1;
    }
    const XmlErrors errors;
    file.document.reset(documentOf(bytes.c_str(), size));
    if (file.document == nullptr) {
        file.mistake = errors.first().value_or(
                XmlMistake{kNotXml, kWholeFile, "is not XML (the parser gave up)"});
        nameNulByte(file.nulLine, &file.mistake);
    }
    return file;
}

long lineOf(const xmlNode* node) {
    if (node->_private != nullptr) {
        return static_cast<long>(reinterpret_cast<intptr_t>(node->_private));
    }
    return xmlGetLineNo(node);
}

std::string nameOf(const xmlNode* node) {
    return toText(node->name);
}

std::string contentOf(const xmlNode* node) {
    return toText(XmlString(xmlNodeGetContent(node)).get());
}

std::optional<std::string> attributeOf(const xmlNode* node, const char* name) {
    const XmlString value(xmlGetProp(node, reinterpret_cast<const xmlChar*>(name)));
    if (value == nullptr) return std::nullopt;
    return toText(value.get());
}

bool isElement(const xmlNode* node, const char* name) {
    return node->type == XML_ELEMENT_NODE && strcmp(toText(node->name), name) == 0;
}

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(kXmlBlanks);
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(kXmlBlanks) - first + 1);
}

XmlErrors::XmlErrors() {
    xmlSetStructuredErrorFunc(this, take);
}

XmlErrors::~XmlErrors() {
    xmlSetStructuredErrorFunc(nullptr, nullptr);
}

void XmlErrors::take(void* errors, xmlError* error) {
    auto& first = static_cast<XmlErrors*>(errors)->mFirst;
    if (first.has_value() || error->level != XML_ERR_FATAL) return;
    std::string text = error->message == nullptr ? "" : trimmed(error->message);
    std::replace(text.begin(), text.end(), '\n', ' ');
    first = XmlMistake{kNotXml, error->line, "is not XML (" + text + ")"};
}

}  // namespace orvo
