// SPDX-License-Identifier: Apache-2.0
// Does not compile, and has to: the compiler sees that a lock is missing.

#ifdef ORVO_HOST_MUTEX
#include "host/Mutex.h"
#else
#include <android-base/thread_annotations.h>
namespace orvo {
using Mutex = std::mutex;
}
#endif

class Counter {
  public:
    void count() { mCount++; }

  private:
    orvo::Mutex mMutex;
    int mCount GUARDED_BY(mMutex) = 0;
};

void count(Counter& counter) {
    counter.count();
}
