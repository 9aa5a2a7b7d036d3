// SPDX-License-Identifier: Apache-2.0
// A file for code that wants a path, on the workstation and on a device.

#pragma once

#include <stddef.h>

#include <string>

namespace orvo::fuzz {

/** A file in memory. One thread. */
class MemoryFile {
  public:
    MemoryFile();
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /** Replaces the content. */
    void write(const void* data, size_t size);
    /** Can be opened any number of times while this object lives. */
    const std::string& path() const { return mPath; }

  private:
    const int mFd;
    const std::string mPath;
};

}  // namespace orvo::fuzz
