// SPDX-License-Identifier: Apache-2.0
// The sources of the library compile on a device unchanged: they include only what exists there.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::test {
namespace {

namespace fs = std::filesystem;

const fs::path kRoot = ORVO_SOURCE_DIR;

struct Include {
    fs::path file;
    std::string name;
    bool quoted;
};

std::vector<fs::path> sources() {
    std::vector<fs::path> files;
    for (const char* directory : {"provider", "mapper"}) {
        for (const auto& entry : fs::recursive_directory_iterator(kRoot / directory)) {
            const std::string extension = entry.path().extension();
            if (extension == ".h" || extension == ".cpp") files.push_back(entry.path());
        }
    }
    return files;
}

std::vector<std::string> linesOf(const fs::path& file) {
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::vector<Include> includes() {
    static const std::regex kInclude(R"re(^\s*#\s*include\s*([<"])([^>"]+)[>"].*)re");
    static const std::regex kAnyInclude(R"re(^\s*#\s*(include|import|include_next)\b.*)re");
    std::vector<Include> found;
    for (const fs::path& file : sources()) {
        for (const std::string& line : linesOf(file)) {
            std::smatch match;
            if (std::regex_match(line, match, kInclude)) {
                found.push_back({file, match[2], match[1] == "\""});
            } else {
                EXPECT_FALSE(std::regex_match(line, kAnyInclude)) << file << ": " << line;
            }
        }
    }
    return found;
}

bool isCxxLibrary(const std::string& name) {
    static const std::regex kPlain("[a-z_]+");
    // Of C++17, but not yet part of the device's C++ library.
    static const std::set<std::string> kMissing = {"charconv", "execution", "filesystem",
                                                   "memory_resource"};
    return std::regex_match(name, kPlain) && kMissing.count(name) == 0;
}

bool isPosix(const std::string& name) {
    static const std::set<std::string> kHeaders = {
            "dlfcn.h",  "errno.h",    "fcntl.h",      "limits.h",   "pthread.h",  "signal.h",
            "stddef.h", "stdint.h",   "stdio.h",      "stdlib.h",   "string.h",   "time.h",
            "unistd.h", "inttypes.h", "sys/socket.h", "sys/stat.h", "sys/types.h"};
    return kHeaders.count(name) > 0;
}

bool isDeviceHeader(const std::string& name) {
    static const std::vector<std::string> kFiles = {"cutils/properties.h", "android/log.h",
                                                    "log/log.h",
                                                    "android-base/thread_annotations.h"};
    static const std::vector<std::string> kDirectories = {"android/hardware/camera/provider/2.4/",
                                                          "android/hidl/manager/1.2/", "hidl/",
                                                          "utils/", "libxml/"};
    return std::count(kFiles.begin(), kFiles.end(), name) > 0 ||
           std::any_of(kDirectories.begin(), kDirectories.end(),
                       [&](const std::string& directory) { return name.rfind(directory, 0) == 0; });
}

TEST(IncludeRuleTest, ThereAreSourcesToCheck) {
    EXPECT_GE(sources().size(), 20u);
    EXPECT_GE(includes().size(), 60u);
}

TEST(IncludeRuleTest, SystemIncludesExistOnADevice) {
    for (const Include& include : includes()) {
        if (include.quoted) continue;
        EXPECT_TRUE(isCxxLibrary(include.name) || isPosix(include.name) ||
                    isDeviceHeader(include.name))
                << include.file << " includes <" << include.name << ">";
    }
}

TEST(IncludeRuleTest, QuotedIncludesAreFilesOfTheLibraryNamedFromTheRepositoryRoot) {
    for (const Include& include : includes()) {
        if (!include.quoted) continue;
        EXPECT_TRUE(include.name.rfind("provider/", 0) == 0 ||
                    include.name.rfind("mapper/", 0) == 0)
                << include.file << " includes \"" << include.name << "\"";
    }
}

}  // namespace
}  // namespace orvo::test
