// SPDX-License-Identifier: Apache-2.0
// Takes the time out of the pause before a reconnection, and tells when that thread is done.

#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <signal.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

#include <valgrind/callgrind.h>

#include "benchmarks/fakes/Surroundings.h"

namespace orvo::benchmarks {
namespace {

std::atomic<bool> gCollect(false);

// Tells the waiting thread through the destructor of a thread's value, which runs when it ends.
class EndSignal {
  public:
    EndSignal() {
        if (sem_init(&mEnded, 0, 0) != 0 || pthread_key_create(&mKey, post) != 0) abort();
    }
    void watchThisThread() {
        mThread = gettid();
        pthread_setspecific(mKey, this);
    }
    void wait() {
        while (sem_wait(&mEnded) != 0) {
        }
    }
    // What the thread had is free for the next one only when the kernel has let go of it, of which
    // nobody is told.
    void waitForKernel() const {
        while (tgkill(getpid(), mThread, 0) == 0) sched_yield();
    }

  private:
    static void post(void* signal) { sem_post(&static_cast<EndSignal*>(signal)->mEnded); }

    std::atomic<pid_t> mThread{0};
    sem_t mEnded;
    pthread_key_t mKey;
};

EndSignal gEndSignal;

}  // namespace

void collectAfterPause(bool collect) {
    gCollect = collect;
}

void awaitEndOfPausedThread() {
    gEndSignal.wait();
}

void awaitExitOfPausedThread() {
    gEndSignal.waitForKernel();
}

// The linker sends the calls of the program's own objects here.
extern "C" int __wrap_nanosleep(const timespec*, timespec*) {
    gEndSignal.watchThisThread();
    if (gCollect) CALLGRIND_TOGGLE_COLLECT;
    return 0;
}

}  // namespace orvo::benchmarks
