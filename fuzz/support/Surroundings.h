// SPDX-License-Identifier: Apache-2.0
// What stands around the code that a fuzzer calls: a log that nobody reads, a file, a directory.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>

namespace orvo::fuzz {

/** From the first call on, every log line of the process is dropped. */
void silenceLog();

/** A file in memory for code that wants a path. One thread. */
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

/** A fresh directory, removed with everything in it at the end. */
class FreshDirectory {
  public:
    FreshDirectory();
    ~FreshDirectory();
    FreshDirectory(const FreshDirectory&) = delete;
    FreshDirectory& operator=(const FreshDirectory&) = delete;

    const std::string& path() const { return mPath; }
    /** Replaces the content of a file in it; makes its directory if need be. */
    void write(const std::string& name, const void* data, size_t size) const;

  private:
    std::string mPath;
};

}  // namespace orvo::fuzz
