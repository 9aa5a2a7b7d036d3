// SPDX-License-Identifier: Apache-2.0
// Map files of any size.
#pragma once

#include <stddef.h>

#include <string>

namespace orvo::benchmarks {

/** A map file in a temporary directory, removed in the end unless it is kept. */
class MapFile {
  public:
    /** Three entries for each instance, instances in no order. */
    explicit MapFile(size_t entries);
    ~MapFile();
    MapFile(const MapFile&) = delete;
    MapFile& operator=(const MapFile&) = delete;

    const std::string& path() const { return mPath; }
    size_t bytes() const { return mBytes; }
    /** Leaves it to the caller to remove the file and its directory. */
    void keep() { mKept = true; }

  private:
    std::string mDirectory;
    std::string mPath;
    size_t mBytes = 0;
    bool mKept = false;
};

}  // namespace orvo::benchmarks
