// SPDX-License-Identifier: Apache-2.0
// FreshDirectory: a temporary directory of one test, removed at its end.

#pragma once

#include <string>

namespace orvo::simulator::testing {

class FreshDirectory {
  public:
    FreshDirectory();
    ~FreshDirectory();
    FreshDirectory(const FreshDirectory&) = delete;
    FreshDirectory& operator=(const FreshDirectory&) = delete;

    const std::string& path() const { return mPath; }
    bool isEmpty() const;
    /** Writes a file, with the directories above it. @return its absolute path. */
    std::string write(const std::string& name, const std::string& content) const;

  private:
    std::string mPath;
};

/** A copy of the default device directory, to be changed by a test. */
void copyHeadset(const std::string& to);

/** Replaces the first occurrence in a file; the test fails if there is none. */
void edit(const std::string& file, const std::string& from, const std::string& to);

}  // namespace orvo::simulator::testing
