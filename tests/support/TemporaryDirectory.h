// SPDX-License-Identifier: Apache-2.0
// A directory of one test, on the workstation and on a device.
#pragma once

#include <string>

namespace orvo::test {

/** Made empty below TMPDIR; removed with all that is in it. Links are not followed. */
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& path() const { return mPath; }

  private:
    std::string mPath;
};

}  // namespace orvo::test
