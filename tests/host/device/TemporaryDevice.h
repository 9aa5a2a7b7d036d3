// SPDX-License-Identifier: Apache-2.0
// TemporaryDevice: a fresh device directory for one test.

#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace orvo::testing {

/**
 * Makes an empty directory and names it in ORVO_DEVICE_DIR, for this process and its children;
 * removes both at the end. Only one at a time, and only while no other thread reads the
 * environment.
 */
class TemporaryDevice {
  public:
    TemporaryDevice() {
        std::string path = (std::filesystem::temp_directory_path() / "orvo-test-XXXXXX").string();
        if (mkdtemp(path.data()) == nullptr) ADD_FAILURE() << "no temporary directory: " << path;
        mPath = path;
        setenv("ORVO_DEVICE_DIR", mPath.c_str(), 1);
    }
    ~TemporaryDevice() {
        unsetenv("ORVO_DEVICE_DIR");
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    TemporaryDevice(const TemporaryDevice&) = delete;
    TemporaryDevice& operator=(const TemporaryDevice&) = delete;

    const std::filesystem::path& path() const { return mPath; }

  private:
    std::filesystem::path mPath;
};

}  // namespace orvo::testing
