// SPDX-License-Identifier: Apache-2.0
// Replays the inputs of a fuzzer, for builds without libFuzzer: each is given to the target once.
//
// usage: <target>_replay FILE_OR_DIRECTORY...

#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

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

bool replay(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> content{std::istreambuf_iterator<char>(stream), {}};
    if (!stream) return false;
    // Named before it runs, so that the last line says which input ended the process.
    printf("%s\n", file.c_str());
    fflush(stdout);
    // Of exactly its size, so that a read past its end is seen.
    const std::unique_ptr<uint8_t[]> exact(new uint8_t[content.size()]);
    std::copy(content.begin(), content.end(), exact.get());
    LLVMFuzzerTestOneInput(exact.get(), content.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    size_t count = 0;
    for (int i = 1; i < argc; i++) {
        for (const fs::path& file : filesOf(argv[i])) {
            if (!replay(file)) {
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
