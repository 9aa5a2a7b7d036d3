// SPDX-License-Identifier: Apache-2.0
// Reads the sources as text.

#include "tests/packaging/SourceTexts.h"

#include <algorithm>
#include <iterator>
#include <regex>

#include <android-base/file.h>
#include <gtest/gtest.h>

namespace orvo::test {

namespace fs = std::filesystem;

namespace {

const fs::path kRoot = ORVO_SOURCE_DIR;

std::vector<fs::path> filesIn(const std::string& directory) {
    static const std::set<std::string> kExtensions = {".cpp", ".h"};
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(kRoot / directory)) {
        if (kExtensions.count(entry.path().extension()) > 0) {
            files.push_back(entry.path().lexically_relative(kRoot));
        }
    }
    return files;
}

// The calls of the log in a file, in order.
std::vector<LoggedText> logCallsOf(const std::string& source, const fs::path& file) {
    // Priority, and a text in one or more pieces.
    static const std::regex kCall(R"re(\bALOG([EWI])\(\s*((?:"(?:[^"\\]|\\.)*"\s*)+))re");
    static const std::regex kSeam(R"re("\s*")re");

    std::vector<LoggedText> calls;
    for (std::sregex_iterator it(source.begin(), source.end(), kCall), end; it != end; ++it) {
        std::string text = (*it)[2];
        text = text.substr(1, text.rfind('"') - 1);
        text = std::regex_replace(text, std::regex(R"re(\\")re"), "\x01");
        text = std::regex_replace(text, kSeam, "");
        std::replace(text.begin(), text.end(), '\x01', '"');
        calls.emplace_back((*it)[1].str()[0], text);
    }

    static const std::regex kAnyCall(R"re(\b__android_log_\w+|\bA?LOG[VDIWEF]?\()re");
    const auto count = std::distance(std::sregex_iterator(source.begin(), source.end(), kAnyCall),
                                     std::sregex_iterator());
    EXPECT_EQ(calls.size(), static_cast<size_t>(count)) << file << " has a call that is not read";
    return calls;
}

}  // namespace

std::string sourceText(const fs::path& file) {
    std::string text;
    EXPECT_TRUE(android::base::ReadFileToString(kRoot / file, &text)) << file;
    return text;
}

std::set<std::string> headersOf(const std::string& file) {
    static const std::regex kInclude("#include \"([^\"]+)\"");
    const std::string text = sourceText(file);
    std::set<std::string> headers;
    for (std::sregex_iterator it(text.begin(), text.end(), kInclude), end; it != end; ++it) {
        headers.insert((*it)[1]);
    }
    return headers;
}

std::set<std::string> withHeaders(std::set<std::string> files) {
    std::vector<std::string> unread(files.begin(), files.end());
    while (!unread.empty()) {
        const std::string file = unread.back();
        unread.pop_back();
        for (const std::string& header : headersOf(file)) {
            if (files.insert(header).second) unread.push_back(header);
        }
    }
    return files;
}

std::set<LoggedText> loggedTexts() {
    std::set<LoggedText> texts;
    for (const char* directory : {"provider", "mapper"}) {
        for (const fs::path& file : filesIn(directory)) {
            for (const LoggedText& text : logCallsOf(sourceText(file), file)) texts.insert(text);
        }
    }
    return texts;
}

}  // namespace orvo::test
