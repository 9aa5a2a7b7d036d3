// SPDX-License-Identifier: Apache-2.0
// The two forms of the output.

#include "mapcheck/Report.h"

#include <stdio.h>

#include <libxml/xmlstring.h>

namespace orvo::mapcheck {
namespace {

const char* nameOf(Severity severity) {
    return severity == Severity::ERROR ? "error" : "warning";
}

std::string place(const std::string& file, long line) {
    return line == kWholeFile ? file + ": " : file + ":" + std::to_string(line) + ": ";
}

// As a JSON string. Everything but a file's name comes out of the parser and so is UTF-8; a name
// that is not keeps its bytes as characters of the same number.
std::string jsonString(const std::string& text) {
    const bool isUtf8 = xmlCheckUTF8(reinterpret_cast<const xmlChar*>(text.c_str())) != 0;
    std::string json = "\"";
    for (const char c : text) {
        const unsigned byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            json += std::string("\\") + c;
        } else if (byte < 0x20 || byte == 0x7F || (byte >= 0x80 && !isUtf8)) {
            char escape[8];
            snprintf(escape, sizeof escape, "\\u%04x", byte);
            json += escape;
        } else {
            json += c;
        }
    }
    return json + "\"";
}

std::string jsonObject(const Finding& finding, const char* severity, long line,
                       const std::string& message) {
    return R"({"file":)" + jsonString(finding.file) + R"(,"line":)" + std::to_string(line) +
           R"(,"severity":")" + severity + R"(","code":)" + jsonString(finding.code) +
           R"(,"message":)" + jsonString(message) + "}";
}

}  // namespace

std::string toText(const std::vector<Finding>& findings) {
    std::string text;
    for (const Finding& finding : findings) {
        text += place(finding.file, finding.line) + nameOf(finding.severity) + ": " +
                finding.message + " [" + finding.code + "]\n";
        if (!finding.note.empty()) {
            text += place(finding.file, finding.noteLine) + "note: " + finding.note + "\n";
        }
    }
    return text;
}

std::string toJson(const std::vector<Finding>& findings) {
    std::string json;
    for (const Finding& finding : findings) {
        json += json.empty() ? "[\n" : ",\n";
        json += jsonObject(finding, nameOf(finding.severity), finding.line, finding.message);
        if (!finding.note.empty()) {
            json += ",\n" + jsonObject(finding, "note", finding.noteLine, finding.note);
        }
    }
    return json.empty() ? "[]\n" : json + "\n]\n";
}

}  // namespace orvo::mapcheck
