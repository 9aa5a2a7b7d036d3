// SPDX-License-Identifier: Apache-2.0
// Makes and removes a directory with what the C library has: a device's C++ library is older than
// the standard's file system.

#include "tests/support/TemporaryDirectory.h"

#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>

namespace orvo::test {
namespace {

constexpr int kOpenDirectories = 8;

std::string parent() {
    const char* const chosen = getenv("TMPDIR");
    if (chosen != nullptr) return chosen;
#ifdef __BIONIC__
    return "/data/local/tmp";
#else
    return "/tmp";
#endif
}

int removeOne(const char* path, const struct stat* /*status*/, int /*type*/, FTW* /*place*/) {
    return remove(path);
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() : mPath(parent() + "/orvo-test-XXXXXX") {
    if (mkdtemp(mPath.data()) == nullptr) {
        perror(("Could not make " + mPath).c_str());
        abort();
    }
}

TemporaryDirectory::~TemporaryDirectory() {
    nftw(mPath.c_str(), removeOne, kOpenDirectories, FTW_DEPTH | FTW_PHYS);
}

}  // namespace orvo::test
