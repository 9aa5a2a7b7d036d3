// SPDX-License-Identifier: Apache-2.0
// MainThread: work sorted by its time.

#include "simulator/camerasim/inside/MainThread.h"

#include <memory>
#include <utility>

namespace orvo::simulator {

void MainThread::post(Work work, std::chrono::milliseconds delay) {
    {
        MutexLock lock(mLock);
        if (!mStopped) mWork.emplace(Clock::now() + delay, std::move(work));
    }
    mChanged.notify_all();
}

bool MainThread::perform(Work work) {
    const auto finished =
            std::make_shared<bool>(false);  // under mLock, which a local one cannot say
    post([this, finished, work = std::move(work)] {
        work();
        {
            MutexLock lock(mLock);
            *finished = true;
        }
        mChanged.notify_all();
    });
    MutexLock lock(mLock);
    mChanged.wait(lock, [&]() REQUIRES(mLock) { return *finished || mStopped; });
    return *finished;
}

void MainThread::run() {
    MutexLock lock(mLock);
    while (!mStopped) {
        if (mWork.empty()) {
            mChanged.wait(lock);
            continue;
        }
        const auto first = mWork.begin();
        if (first->first > Clock::now()) {
            const Clock::time_point due = first->first;
            mChanged.wait_until(lock, due);
            continue;
        }
        Work work = std::move(first->second);
        mWork.erase(first);
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
    }
}

void MainThread::stop() {
    {
        MutexLock lock(mLock);
        mStopped = true;
        mWork.clear();
    }
    mChanged.notify_all();
}

}  // namespace orvo::simulator
