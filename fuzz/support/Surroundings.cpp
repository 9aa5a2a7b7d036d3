// SPDX-License-Identifier: Apache-2.0
// Makes a fuzzer's surroundings.

#include "fuzz/support/Surroundings.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include <android/log.h>

#include "fuzz/support/Require.h"

namespace orvo::fuzz {

void silenceLog() {
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
}

FreshDirectory::FreshDirectory()
    : mPath((std::filesystem::temp_directory_path() / "orvo-fuzz-XXXXXX").string()) {
    require(mkdtemp(mPath.data()) != nullptr, "a directory can be made", mPath);
}

FreshDirectory::~FreshDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
}

void FreshDirectory::write(const std::string& name, const void* data, size_t size) const {
    const std::filesystem::path file = std::filesystem::path(mPath) / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
    require(stream.good(), "a file can be written", file.string());
}

}  // namespace orvo::fuzz
