// SPDX-License-Identifier: Apache-2.0
// FreshDirectory: below the test's own TMPDIR.

#include "tests/simulator/support/FreshDirectory.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

namespace orvo::simulator::testing {

namespace fs = std::filesystem;

FreshDirectory::FreshDirectory() {
    mPath = fs::temp_directory_path() / "orvo.XXXXXX";
    if (mkdtemp(mPath.data()) == nullptr) abort();
}

FreshDirectory::~FreshDirectory() {
    fs::remove_all(mPath);
}

bool FreshDirectory::isEmpty() const {
    return fs::is_empty(mPath);
}

std::string FreshDirectory::write(const std::string& name, const std::string& content) const {
    const fs::path file = fs::path(mPath) / name;
    fs::create_directories(file.parent_path());
    std::ofstream(file) << content;
    return file;
}

void copyHeadset(const std::string& to) {
    fs::copy(ORVO_HEADSET, to, fs::copy_options::recursive);
}

void edit(const std::string& file, const std::string& from, const std::string& to) {
    std::ostringstream content;
    content << std::ifstream(file).rdbuf();
    std::string text = content.str();
    const size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << file << " has no " << from;
    std::ofstream(file) << text.replace(at, from.size(), to);
}

}  // namespace orvo::simulator::testing
