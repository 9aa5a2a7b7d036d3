// SPDX-License-Identifier: Apache-2.0
// Makes a file in memory.

#include "fuzz/support/MemoryFile.h"

#include <linux/memfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "fuzz/support/Require.h"

namespace orvo::fuzz {
namespace {

// By the kernel's number: a device's C library has no function for it yet.
int makeFile() {
    return static_cast<int>(syscall(__NR_memfd_create, "fuzz-input", MFD_CLOEXEC));
}

}  // namespace

MemoryFile::MemoryFile() : mFd(makeFile()), mPath("/proc/self/fd/" + std::to_string(mFd)) {
    require(mFd >= 0, "a file in memory can be made");
}

MemoryFile::~MemoryFile() {
    close(mFd);
}

void MemoryFile::write(const void* data, size_t size) {
    require(ftruncate(mFd, 0) == 0, "a file in memory can be emptied");
    const ssize_t written = pwrite(mFd, data, size, 0);
    require(written == static_cast<ssize_t>(size), "a file in memory can be written");
}

}  // namespace orvo::fuzz
