// SPDX-License-Identifier: Apache-2.0
// Loads one map file in a process of its own, whose peak memory is then that of the load.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <fstream>
#include <string>

#include "benchmarks/fakes/Journal.h"
#include "benchmarks/floor/FloorProvider.h"
#include "benchmarks/operations/MapFile.h"
#include "mapper/ProviderMapper.h"

namespace orvo::benchmarks {
namespace {

// A field of /proc/self/status, in bytes. What getrusage says is inherited from the parent.
long memory(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(field + ":", 0) == 0) return atol(line.c_str() + field.size() + 1) * 1024;
    }
    return 0;
}

bool load(const char* side, const char* path) {
    if (strcmp(side, "product") == 0) {
        camera::ProviderMapper mapper;
        return mapper.loadMapFromFile(path);
    }
    FloorMap map;
    return loadMapAtFloor(path, map);
}

}  // namespace
}  // namespace orvo::benchmarks

// usage: benchmark_map_memory write ENTRIES          prints the path of a new file and its bytes
//        benchmark_map_memory product|floor PATH     prints what the peak memory is above the start
int main(int argc, char** argv) {
    using namespace orvo::benchmarks;
    if (argc != 3) {
        fputs("usage: benchmark_map_memory write ENTRIES | product PATH | floor PATH\n", stderr);
        return 1;
    }
    if (strcmp(argv[1], "write") == 0) {
        MapFile file(strtoul(argv[2], nullptr, 10));
        file.keep();
        printf("%s %zu\n", file.path().c_str(), file.bytes());
        return 0;
    }
    dropLogLines();
    const long before = memory("VmRSS");
    if (!load(argv[1], argv[2])) {
        fprintf(stderr, "%s is no map file\n", argv[2]);
        return 1;
    }
    printf("%ld\n", memory("VmHWM") - before);
}
