// SPDX-License-Identifier: Apache-2.0
// Stands in front of the C library's allocator for the whole process.

#include "benchmarks/AllocationCounter.h"

#include <errno.h>
#include <malloc.h>

#include <atomic>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);
}

namespace orvo::benchmarks {
namespace {

std::atomic<size_t> gAllocations(0);
std::atomic<size_t> gLiveBytes(0);

size_t sizeOf(void* block) {
    return block == nullptr ? 0 : malloc_usable_size(block) + sizeof(size_t);
}

void* counted(void* block) {
    if (block != nullptr) {
        ++gAllocations;
        gLiveBytes += sizeOf(block);
    }
    return block;
}

}  // namespace

HeapCounts heapCounts() {
    return {gAllocations, gLiveBytes};
}

extern "C" {

void* malloc(size_t size) {
    return counted(__libc_malloc(size));
}

void* calloc(size_t count, size_t size) {
    return counted(__libc_calloc(count, size));
}

void* realloc(void* block, size_t size) {
    gLiveBytes -= sizeOf(block);
    return counted(__libc_realloc(block, size));
}

void* memalign(size_t alignment, size_t size) {
    return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** block, size_t alignment, size_t size) {
    *block = memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}

void free(void* block) {
    gLiveBytes -= sizeOf(block);
    __libc_free(block);
}

}  // extern "C"

}  // namespace orvo::benchmarks
