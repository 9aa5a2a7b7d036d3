// SPDX-License-Identifier: Apache-2.0
// The two forms of the output.

#include "mapcheck/Report.h"

#include <algorithm>

#include "mapcheck/Utf8.h"

namespace orvo::mapcheck {
namespace {

const char* nameOf(Severity severity) {
    return severity == Severity::ERROR ? "error" : "warning";
}

std::string place(const std::string& file, long line) {
    return line == kWholeFile ? file + ": " : file + ":" + std::to_string(line) + ": ";
}

// As a JSON string. What is not UTF-8, such as a file's name may be, keeps its bytes as characters
// of the same number.
std::string jsonString(const std::string& text) {
    std::string json = "\"";
    for (size_t at = 0; at < text.size();) {
        const Utf8Character character = characterAt(text, at);
        const unsigned byte = static_cast<unsigned char>(text[at]);
        if (byte == '"' || byte == '\\') {
            json += std::string("\\") + text[at];
        } else if (byte < 0x20 || byte == 0x7F || character.size == 0) {
            json += "\\u" + hexadecimal(byte, 4);
        } else {
            json.append(text, at, character.size);
        }
        at += std::max<size_t>(character.size, 1);
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
