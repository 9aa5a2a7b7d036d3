// SPDX-License-Identifier: Apache-2.0
// What stands around the code that a fuzzer calls: a log that nobody reads, a directory.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>

namespace orvo::fuzz {

/** From the first call on, every log line of the process is dropped. */
void silenceLog();

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
