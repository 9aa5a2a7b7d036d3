// SPDX-License-Identifier: Apache-2.0
// Replays the inputs of a fuzzer, for builds without libFuzzer: each is given to the target once.
//
// usage: fuzz_replay TARGET FILE_OR_DIRECTORY...

#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

// What the build knows: ORVO_FUZZ_TARGET(name) for each target.
#define ORVO_FUZZ_TARGET(name) extern "C" int name##_input(const uint8_t* data, size_t size);
#include "FuzzTargets.inc"
#undef ORVO_FUZZ_TARGET

namespace {

using Target = int (*)(const uint8_t* data, size_t size);

/** By their names. */
const std::map<std::string, Target> kTargets = {
#define ORVO_FUZZ_TARGET(name) {#name, name##_input},
#include "FuzzTargets.inc"
#undef ORVO_FUZZ_TARGET
};

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const fs::path& path) {
    if (!fs::is_directory(path)) return {path};
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(Target target, const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> content{std::istreambuf_iterator<char>(stream), {}};
    if (!stream) return false;
    // Named before it runs, so that the last line says which input ended the process.
    printf("%s\n", file.c_str());
    fflush(stdout);
    // Of exactly its size, so that a read past its end is seen.
    const std::unique_ptr<uint8_t[]> exact(new uint8_t[content.size()]);
    std::copy(content.begin(), content.end(), exact.get());
    target(exact.get(), content.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const auto target = kTargets.find(argc < 2 ? "" : argv[1]);
    if (target == kTargets.end()) {
        fprintf(stderr, "Name a target first, which is one of:");
        for (const auto& [name, function] : kTargets) fprintf(stderr, " %s", name.c_str());
        fprintf(stderr, "\n");
        return 1;
    }
    size_t count = 0;
    for (int i = 2; i < argc; i++) {
        for (const fs::path& file : filesOf(argv[i])) {
            if (!replay(target->second, file)) {
                fprintf(stderr, "%s cannot be read; name files or directories of inputs\n",
                        file.c_str());
                return 1;
            }
            count++;
        }
    }
    printf("%zu inputs\n", count);
    if (count > 0) return 0;
    fprintf(stderr, "There is no input; name files or directories of inputs\n");
    return 1;
}
