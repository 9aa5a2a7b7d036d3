// SPDX-License-Identifier: Apache-2.0
// Counts what the whole process takes from the heap.
#pragma once

#include <stddef.h>

namespace orvo::benchmarks {

struct HeapCounts {
    size_t allocations;  ///< Calls of malloc, calloc, aligned_alloc and their kin, growth included.
    size_t liveBytes;    ///< What is in use, with the allocator's own header of each block.
};

/** Since the process began. Any thread. */
HeapCounts heapCounts();

}  // namespace orvo::benchmarks
