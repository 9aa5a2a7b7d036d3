// SPDX-License-Identifier: Apache-2.0
// DescriptionReader: every mistake names its file and line and says what to write instead.

#include "simulator/description/DescriptionReader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <set>
#include <utility>

#include <android-base/file.h>
#include <android-base/strings.h>

#include "simulator/description/OneLine.h"

namespace orvo::simulator {

namespace {

std::string joined(const std::vector<std::string>& words) {
    return android::base::Join(words, ", ");
}

/** Strict: the whole text must be the number. */
std::optional<int64_t> parseInteger(const std::string& text) {
    if (text.empty() || isspace(text[0])) return std::nullopt;
    const size_t digits = text[0] == '-' ? 1 : 0;
    const int base = text.compare(digits, 2, "0x") == 0 ? 16 : 10;
    char* end = nullptr;
    errno = 0;
    const int64_t value = strtoll(text.c_str(), &end, base);
    if (errno != 0 || end != text.c_str() + text.size()) return std::nullopt;
    return value;
}

}  // namespace

DescriptionReader::DescriptionReader(std::string file) : mFile(std::move(file)) {}

YAML::Node DescriptionReader::load() {
    struct stat info;
    if (stat(mFile.c_str(), &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) {
        // A device or a pipe may have no end.
        mError = onOneLine(mFile) + ": is not a file; give one with a description";
        return YAML::Node(YAML::NodeType::Undefined);
    }
    std::string content;
    if (!android::base::ReadFileToString(mFile, &content)) {
        mError = onOneLine(mFile) + ": cannot be read (" + strerror(errno) +
                 "); give a file that is there";
        return YAML::Node(YAML::NodeType::Undefined);
    }
    YAML::Node root;
    try {
        root = YAML::Load(content);
    } catch (const YAML::Exception& e) {
        failAtLine(e.mark.line, "is not YAML: " + e.msg + "; correct the line");
        return YAML::Node(YAML::NodeType::Undefined);
    }
    if (!root.IsMap()) {
        failAtLine(0, "the description is not a map; write lines of the form 'key: value'");
        return YAML::Node(YAML::NodeType::Undefined);
    }
    return root;
}

void DescriptionReader::expectKeys(const YAML::Node& map, const std::string& what,
                                   std::initializer_list<const char*> keys) {
    if (mError) return;
    const std::vector<std::string> known(keys.begin(), keys.end());
    std::set<std::string> seen;
    for (const auto& entry : map) {
        if (!entry.first.IsScalar()) {
            return fail(entry.first, what + " has a key that is not a word; use " + joined(known));
        }
        const std::string& key = entry.first.Scalar();
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            return fail(entry.first,
                        what + " has no key '" + key + "'; the keys are " + joined(known));
        }
        if (!seen.insert(key).second) {
            return fail(entry.first, what + " has '" + key + "' twice; leave one of them out");
        }
    }
}

YAML::Node DescriptionReader::require(const YAML::Node& map, const char* key,
                                      const std::string& what) {
    if (mError) return YAML::Node(YAML::NodeType::Undefined);
    YAML::Node value = map[key];
    if (value.IsDefined() && !value.IsNull()) return value;
    fail(map, what + " has no '" + key + "'; add a line '" + key + ": ...'");
    return YAML::Node(YAML::NodeType::Undefined);
}

std::string DescriptionReader::text(const YAML::Node& map, const char* key,
                                    const std::string& what) {
    const YAML::Node value = require(map, key, what);
    return mError ? "" : textOf(value, what + ": " + key);
}

std::string DescriptionReader::textOf(const YAML::Node& scalar, const std::string& what) {
    if (mError) return "";
    if (scalar.IsScalar() && !scalar.Scalar().empty()) return scalar.Scalar();
    fail(scalar, what + " is not a text; write one word or a quoted text");
    return "";
}

bool DescriptionReader::flag(const YAML::Node& map, const char* key, const std::string& what,
                             bool fallback) {
    if (mError || !map[key].IsDefined()) return fallback;
    const YAML::Node value = map[key];
    if (value.IsScalar() && value.Scalar() == "true") return true;
    if (value.IsScalar() && value.Scalar() == "false") return false;
    fail(value, what + ": " + key + " is neither true nor false; write one of the two");
    return fallback;
}

int64_t DescriptionReader::number(const YAML::Node& map, const char* key, const std::string& what,
                                  int64_t low, int64_t high, std::optional<int64_t> fallback) {
    if (mError) return low;
    if (fallback && !map[key].IsDefined()) return *fallback;
    const YAML::Node value = require(map, key, what);
    return mError ? low : numberOf(value, what + ": " + key, low, high);
}

int64_t DescriptionReader::numberOf(const YAML::Node& scalar, const std::string& what, int64_t low,
                                    int64_t high) {
    if (mError) return low;
    const auto value = scalar.IsScalar() ? parseInteger(scalar.Scalar()) : std::nullopt;
    if (value && *value >= low && *value <= high) return *value;
    const std::string found = scalar.IsScalar() ? "'" + scalar.Scalar() + "'" : "not a number";
    fail(scalar, what + " is " + found + "; write a number from " + std::to_string(low) + " to " +
                         std::to_string(high));
    return low;
}

double DescriptionReader::realOf(const YAML::Node& scalar, const std::string& what) {
    if (mError) return 0;
    if (scalar.IsScalar() && !scalar.Scalar().empty()) {
        char* end = nullptr;
        const double value = strtod(scalar.Scalar().c_str(), &end);
        if (*end == '\0' && std::isfinite(value)) return value;
    }
    fail(scalar, what + " is not a number; write one such as 1.5");
    return 0;
}

size_t DescriptionReader::choice(const YAML::Node& map, const char* key, const std::string& what,
                                 const std::vector<std::string>& choices) {
    const std::string word = text(map, key, what);
    if (mError) return 0;
    for (size_t i = 0; i < choices.size(); i++) {
        if (choices[i] == word) return i;
    }
    fail(map[key], what + ": " + key + " is '" + word + "'; write one of " + joined(choices));
    return 0;
}

std::vector<YAML::Node> DescriptionReader::list(const YAML::Node& map, const char* key,
                                                const std::string& what, bool required) {
    if (mError || (!required && !map[key].IsDefined())) return {};
    const YAML::Node value = require(map, key, what);
    if (mError) return {};
    if (!value.IsSequence()) {
        fail(value, what + ": " + key + " is not a list; begin each entry with '- '");
        return {};
    }
    if (required && value.size() == 0) {
        fail(value, what + ": " + key + " is empty; write at least one entry");
        return {};
    }
    return std::vector<YAML::Node>(value.begin(), value.end());
}

bool DescriptionReader::isNotMap(const YAML::Node& node, const std::string& what) {
    if (mError) return true;
    if (node.IsMap()) return false;
    fail(node, what + " is not a map; write lines of the form 'key: value'");
    return true;
}

void DescriptionReader::fail(const YAML::Node& node, const std::string& message) {
    failAtLine(node.Mark().line, message);
}

void DescriptionReader::failAtLine(int line, const std::string& message) {
    if (mError) return;
    // yaml-cpp counts from 0, and from -1 where it knows no place.
    mError = onOneLine(mFile) + ":" + std::to_string(line < 0 ? 1 : line + 1) + ": " +
             onOneLine(message);
}

}  // namespace orvo::simulator
