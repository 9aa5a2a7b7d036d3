// SPDX-License-Identifier: Apache-2.0
// OwnedThreads: a list that loses those that have ended whenever another one starts.

#include "simulator/process/OwnedThreads.h"

#include <utility>

namespace orvo::simulator {

OwnedThreads::~OwnedThreads() {
    // What is waited for may start more.
    for (std::list<Started> waitedFor;; waitedFor.clear()) {
        MutexLock lock(mLock);
        if (mThreads.empty()) return;
        waitedFor.swap(mThreads);
    }
}

void OwnedThreads::start(std::function<void()> work) {
    MutexLock lock(mLock);
    mThreads.remove_if([](const Started& started) { return started.isDone.load(); });
    Started& added = mThreads.emplace_back();
    added.thread = std::thread([&added, work = std::move(work)]() mutable {
        work();
        // What it holds goes before that: whoever joins the thread has the lock.
        work = nullptr;
        added.isDone = true;
    });
}

}  // namespace orvo::simulator
