// SPDX-License-Identifier: Apache-2.0
// Loads the library as the platform does and counts the page faults of it.

#include <dlfcn.h>
#include <stdio.h>
#include <sys/resource.h>

#include <chrono>

namespace {

long pageFaults() {
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt + usage.ru_majflt;
}

bool load(const char* path) {
    if (dlopen(path, RTLD_NOW) != nullptr) return true;
    fprintf(stderr, "%s\n", dlerror());
    return false;
}

}  // namespace

// Prints the page faults and the microseconds of loading LIBRARY after the others.
// usage: benchmark_load LIBRARY [OTHER...]
int main(int argc, char** argv) {
    if (argc < 2) {
        fputs("usage: benchmark_load LIBRARY [OTHER...]\n", stderr);
        return 1;
    }
    for (int i = 2; i < argc; ++i) {
        if (!load(argv[i])) return 1;
    }
    const long faults = pageFaults();
    const auto start = std::chrono::steady_clock::now();
    if (!load(argv[1])) return 1;
    const std::chrono::duration<double, std::micro> elapsed =
            std::chrono::steady_clock::now() - start;
    printf("%ld %.0f\n", pageFaults() - faults, elapsed.count());
}
