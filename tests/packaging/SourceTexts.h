// SPDX-License-Identifier: Apache-2.0
// What the documents are held against: the texts in the sources.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <utility>

namespace orvo::test {

/** Priority, as one letter of "EWI", and text, as in the source but for quotes. */
using LoggedText = std::pair<char, std::string>;

/** Every call of the log in the library's sources; the test fails at one that cannot be read. */
std::set<LoggedText> loggedTexts();

/** The whole of a file, relative to the source directory; the test fails if there is none. */
std::string sourceText(const std::filesystem::path& file);

/** The project's headers that a file includes itself. */
std::set<std::string> headersOf(const std::string& file);

/** The files, and all headers of the project that they include. */
std::set<std::string> withHeaders(std::set<std::string> files);

}  // namespace orvo::test
