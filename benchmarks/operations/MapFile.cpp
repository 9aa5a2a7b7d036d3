// SPDX-License-Identifier: Apache-2.0
// Writes map files.

#include "benchmarks/operations/MapFile.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

namespace orvo::benchmarks {

MapFile::MapFile(size_t entries) {
    char name[] = "/tmp/orvo-map-XXXXXX";
    if (mkdtemp(name) == nullptr) {
        perror("cannot make a directory for the map file in /tmp");
        exit(1);
    }
    mDirectory = name;
    mPath = mDirectory + "/map.xml";

    std::string text = "<manifest>\n";
    const size_t instances = (entries + 2) / 3;
    for (size_t i = 0; i < entries; ++i) {
        // A step without a common divisor with the count reaches every instance.
        const std::string instance = "camera" + std::to_string(i * 7919 % instances) + "/0";
        text += "  <instance replace=\"external/" + std::to_string(i % 3) + "\">" + instance +
                "</instance>\n";
    }
    text += "</manifest>\n";
    mBytes = text.size();

    FILE* const file = fopen(mPath.c_str(), "w");
    if (file == nullptr || fwrite(text.data(), 1, text.size(), file) != text.size() ||
        fclose(file) != 0) {
        perror(("cannot write " + mPath).c_str());
        exit(1);
    }
}

MapFile::~MapFile() {
    if (mKept) return;
    unlink(mPath.c_str());
    rmdir(mDirectory.c_str());
}

}  // namespace orvo::benchmarks
