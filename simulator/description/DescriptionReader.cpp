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
#include <optional>
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
        return failToLoad("is not a file; give one with a description");
    }
    std::string content;
    if (!android::base::ReadFileToString(mFile, &content)) {
        return failToLoad(std::string("cannot be read (") + strerror(errno) +
                          "); give a file that is there");
    }
    YAML::Node root;
    try {
        root = YAML::Load(content);
    } catch (const YAML::Exception& e) {
        failAtLine(e.mark.line, "is not YAML: " + e.msg + "; correct the line");
        return YAML::Node(YAML::NodeType::Undefined);
    }
    if (root.IsMap()) return root;
    failAtLine(0, "the description is not a map; write lines of the form 'key: value'");
    return YAML::Node(YAML::NodeType::Undefined);
}

YAML::Node DescriptionReader::failToLoad(const std::string& message) {
    mMistakes.emplace(0, onOneLine(mFile) + ": " + message);
    return YAML::Node(YAML::NodeType::Undefined);
}

std::string DescriptionReader::textOf(const YAML::Node& scalar, const std::string& what) {
    if (scalar.IsScalar() && !scalar.Scalar().empty()) return scalar.Scalar();
    fail(scalar, what + " is not a text; write one word or a quoted text");
    return "";
}

int64_t DescriptionReader::numberOf(const YAML::Node& scalar, const std::string& what, int64_t low,
                                    int64_t high) {
    const auto value = scalar.IsScalar() ? parseInteger(scalar.Scalar()) : std::nullopt;
    if (value && *value >= low && *value <= high) return *value;
    const std::string found = scalar.IsScalar() ? "'" + scalar.Scalar() + "'" : "not a number";
    fail(scalar, what + " is " + found + "; write a number from " + std::to_string(low) + " to " +
                         std::to_string(high));
    return low;
}

double DescriptionReader::realOf(const YAML::Node& scalar, const std::string& what) {
    if (scalar.IsScalar() && !scalar.Scalar().empty()) {
        char* end = nullptr;
        const double value = strtod(scalar.Scalar().c_str(), &end);
        if (*end == '\0' && std::isfinite(value)) return value;
    }
    fail(scalar, what + " is not a number; write one such as 1.5");
    return 0;
}

void DescriptionReader::fail(const YAML::Node& node, const std::string& message) {
    failAtLine(node.Mark().line, message);
}

void DescriptionReader::failAtLine(int line, const std::string& message) {
    // yaml-cpp counts from 0, and from -1 where it knows no place.
    const int number = line < 0 ? 1 : line + 1;
    mMistakes.emplace(number,
                      onOneLine(mFile) + ":" + std::to_string(number) + ": " + onOneLine(message));
}

std::vector<std::string> DescriptionReader::mistakes() const {
    std::vector<std::string> texts;
    for (const auto& [line, text] : mMistakes) texts.push_back(text);
    return texts;
}

DescribedMap::DescribedMap(DescriptionReader& reader, const YAML::Node& node, std::string what,
                           const DescriptionTable& table)
    : mReader(reader),
      mNode(node),
      mWhat(std::move(what)),
      mTable(table),
      mIsMap(node.IsDefined() && node.IsMap()) {
    if (mIsMap) {
        checkKeys();
    } else if (node.IsDefined()) {
        mReader.fail(node, mWhat + " is not a map; write lines of the form 'key: value'");
    }
}

void DescribedMap::checkKeys() const {
    std::vector<std::string> known;
    for (const DescriptionKey& key : mTable.keys) known.emplace_back(key.name);
    std::set<std::string> seen;
    for (const auto& entry : mNode) {
        if (!entry.first.IsScalar()) {
            mReader.fail(entry.first,
                         mWhat + " has a key that is not a word; use " + joined(known));
            continue;
        }
        const std::string& key = entry.first.Scalar();
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            mReader.fail(entry.first,
                         mWhat + " has no key '" + key + "'; the keys are " + joined(known));
        } else if (!seen.insert(key).second) {
            mReader.fail(entry.first, mWhat + " has '" + key + "' twice; leave one of them out");
        }
    }
}

YAML::Node DescribedMap::require(const char* key) const {
    if (!mIsMap) return YAML::Node(YAML::NodeType::Undefined);
    YAML::Node value = mNode[key];
    if (value.IsDefined() && !value.IsNull()) return value;
    mReader.fail(mNode, mWhat + " has no '" + key + "'; add a line '" + key + ": ...'");
    return YAML::Node(YAML::NodeType::Undefined);
}

std::string DescribedMap::text(const char* key) const {
    const YAML::Node value = require(mTable.key(key).name);
    return value.IsDefined() ? mReader.textOf(value, mWhat + ": " + key) : "";
}

bool DescribedMap::flag(const char* key) const {
    const bool fallback = mTable.key(key).fallback == std::string("true");
    if (!has(key)) return fallback;
    const YAML::Node value = mNode[key];
    if (value.IsScalar() && value.Scalar() == "true") return true;
    if (value.IsScalar() && value.Scalar() == "false") return false;
    mReader.fail(value, mWhat + ": " + key + " is neither true nor false; write one of the two");
    return fallback;
}

int64_t DescribedMap::number(const char* key) const {
    const DescriptionKey& known = mTable.key(key);
    if (known.fallback != nullptr && !has(key)) return *parseInteger(known.fallback);
    const YAML::Node value = require(key);
    if (!value.IsDefined()) return known.low;
    return mReader.numberOf(value, mWhat + ": " + key, known.low, known.high);
}

size_t DescribedMap::choice(const char* key) const {
    const std::vector<std::string>& choices = mTable.key(key).choices;
    const std::string word = text(key);
    if (word.empty()) return 0;  // which was a mistake
    for (size_t i = 0; i < choices.size(); i++) {
        if (choices[i] == word) return i;
    }
    fail(key, mWhat + ": " + key + " is '" + word + "'; write one of " + joined(choices));
    return 0;
}

std::vector<YAML::Node> DescribedMap::list(const char* key) const {
    const bool required = mTable.key(key).fallback == nullptr;
    if (!required && !has(key)) return {};
    const YAML::Node value = require(key);
    if (!value.IsDefined()) return {};
    if (!value.IsSequence()) {
        mReader.fail(value, mWhat + ": " + key + " is not a list; begin each entry with '- '");
        return {};
    }
    if (required && value.size() == 0) {
        mReader.fail(value, mWhat + ": " + key + " is empty; write at least one entry");
        return {};
    }
    return std::vector<YAML::Node>(value.begin(), value.end());
}

void DescribedMap::fail(const char* key, const std::string& message) const {
    mReader.fail(has(key) ? mNode[key] : mNode, message);
}

}  // namespace orvo::simulator
