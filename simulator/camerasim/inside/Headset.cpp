// SPDX-License-Identifier: Apache-2.0
// Headset: starts programs, and starts the service again when it ends, as a device's init does.

#include "simulator/camerasim/inside/Headset.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <utility>

#include <cutils/properties.h>

#include "simulator/control/Complaint.h"

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;

namespace {

/** A program that ends sooner than this after its start is started again with growing pauses. */
constexpr std::chrono::seconds kQuick{1};
constexpr int kMostDoublings = 4;
/** A provider that does not settle in that time is hung, or waits for somebody who is. */
constexpr uint32_t kSettleMs = 2000;
/** Longer than a connection may take. */
constexpr std::chrono::seconds kWarnAfter{2};

}  // namespace

Headset::Headset(HeadsetFiles files, Installation installation, const Stage& stage,
                 bool restartProviders)
    : mFiles(std::move(files)),
      mRestartProviders(restartProviders),
      mPrograms(mFiles.description(), std::move(installation), stage),
      mProviders(mTimeline),
      mFramework(mTimeline, mCameras) {
    supervisor().observeEnds([this](const std::string& program, pid_t pid, const std::string& how) {
        onEnd(program, pid, how);
    });
}

Headset::~Headset() {
    // Nothing that calls them, or hears of them, has to be told that they are gone after this.
    (void)endPrograms();
}

Result<void> Headset::boot() {
    auto manager = mPrograms.startServiceManager();
    if (!manager) return manager;
    mTimeline.add("process", Programs::kServiceManager, "ready");
    for (const ProviderProgram& provider : mFiles.description().providers) {
        const auto started = startProvider(provider.instance);
        if (started) continue;
        mTimeline.add("process", provider.instance, started.error().message());
    }
    mMainThread.post([this] { warn(); }, kWarnAfter);
    return startService();
}

int Headset::run() {
    mMainThread.run();
    return mStatus;
}

void Headset::stop() {
    (void)endPrograms();
    letGo();
}

std::vector<std::string> Headset::endPrograms() {
    const bool isFirst = !mStopping.exchange(true);
    std::vector<std::string> complaints = mPrograms.shutDown();
    // Whoever comes second finds ended what the first one has ended: nothing to complain of.
    if (!isFirst) complaints.clear();
    return complaints;
}

// What `camerasim ps` would complain of, once the service had its time to connect.
void Headset::warn() {
    for (const ProviderState& provider : state(false).providers) {
        if (!provider.problem.empty())
            mTimeline.add("warning", provider.instance, provider.problem);
    }
}

Result<void> Headset::startProvider(const std::string& instance) {
    {
        MutexLock lock(mLock);
        mPaces[instance].startedAt = Clock::now();
    }
    auto started = mPrograms.startProvider(instance);
    if (!started) return started;
    const auto pid = supervisor().pidOf(Programs::programOf(instance));
    if (pid) mProviders.started(instance, *pid);
    return {};
}

Result<void> Headset::startOnMainThread(const std::string& instance) {
    // Shared, for the work may still be going on when the wait for it is given up.
    const auto started = std::make_shared<Result<void>>();
    const bool done =
            mMainThread.perform([this, started, instance] { *started = startProvider(instance); });
    if (!done) return Error() << "the device is being stopped";
    return *started;
}

Result<void> Headset::startService() {
    mProviders.serviceStarts();
    int starts = 0;
    {
        MutexLock lock(mLock);
        starts = mServiceStarts++;
        mPaces[kServiceWord].startedAt = Clock::now();
    }
    const auto started = mPrograms.startService();
    const auto pid = supervisor().pidOf(Programs::kService);
    // One that serves some of what it should goes on with that.
    if (!pid) return started ? Error() << "the camera provider service has ended" : started;
    {
        MutexLock lock(mLock);
        mServiceReadyAt = Clock::now();
    }
    mTimeline.add("service", Programs::kService,
                  (starts == 0 ? "ready, process " : "started again, process ") +
                          std::to_string(*pid) +
                          (starts == 0 ? "" : " (restart " + std::to_string(starts) + ")"));
    for (const std::string& instance : mFiles.description().serviceInstances) {
        mFramework.attach(instance, mFiles.allBehind(instance).empty());
    }
    return {};
}

void Headset::startAgain(const std::string& who) {
    const auto program = programOf(who);
    if (mStopping || !program || supervisor().isRunning(*program)) return;
    const int ends = supervisor().historyOf(*program).ends;
    const auto started = who == kServiceWord ? startService() : startProvider(who);
    if (started || mStopping) return;
    mTimeline.add("process", who, started.error().message());
    // If it ran for a moment its end has posted the next attempt.
    if (supervisor().historyOf(*program).ends == ends) restartLater(who);
}

void Headset::onEnd(const std::string& program, pid_t pid, const std::string& how) {
    if (program == Programs::kService) {
        mFramework.detachAll();
        mTimeline.add("service", program, how + ", process " + std::to_string(pid));
        clearProperties();
        return restartLater(kServiceWord);
    }
    if (program == Programs::kServiceManager) {
        mTimeline.add("process", program, how + ", process " + std::to_string(pid));
        if (mStopping) return;
        std::cerr << "camerasim: the service manager " << how << "; boot the device again\n";
        mStatus = kNotAsExpected;
        return mMainThread.post([this] { stop(); });
    }
    for (const ProviderProgram& provider : mFiles.description().providers) {
        if (Programs::programOf(provider.instance) != program) continue;
        mProviders.ended(provider.instance, pid, how);
        if (mRestartProviders) restartLater(provider.instance);
    }
}

// As the lines `onrestart setprop NAME ""` of an .rc file.
void Headset::clearProperties() {
    if (mStopping) return;
    for (const std::string& name : mFiles.description().clearOnRestart) {
        const bool isCleared = property_set(name.c_str(), "") == 0;
        mTimeline.add("service", Programs::kService,
                      (isCleared ? "init clears " : "init cannot clear ") + name);
    }
}

void Headset::restartLater(const std::string& who) {
    if (mStopping) return;
    std::chrono::seconds delay{0};
    {
        MutexLock lock(mLock);
        Pace& pace = mPaces[who];
        const bool quick = Clock::now() - pace.startedAt < kQuick;
        pace.quickEnds = quick ? pace.quickEnds + 1 : 0;
        // The first time at once, then after 1, 2, 4, 8, and every 16 seconds.
        const int doublings = std::min(pace.quickEnds - 2, kMostDoublings);
        if (doublings >= 0) delay = std::chrono::seconds(1 << doublings);
    }
    mMainThread.post([this, who] { startAgain(who); }, delay);
}

Result<std::string> Headset::programOf(const std::string& name) const {
    if (name == kServiceWord) return std::string(Programs::kService);
    if (mFiles.isDescribed(name)) return Programs::programOf(name);
    if (mFiles.isServed(name)) {
        return badUse(name +
                      " is served by the camera provider service; name that: " + kServiceWord);
    }
    const auto known = mFiles.checkKnown(name);
    if (!known) return badUse(known.error().message() + ", " + kServiceWord);
    return badUse(name + " has no process: device.yaml describes none");
}

void Headset::settle() {
    for (const ProviderProgram& provider : mFiles.description().providers) {
        const auto control = mProviders.controlOf(provider.instance);
        if (control == nullptr) continue;
        if (supervisor().isHung(Programs::programOf(provider.instance))) continue;
        // One that has died meanwhile has nothing to report any more.
        (void)control->settle(kSettleMs).isOk();
    }
    mFramework.catchUp();
}

}  // namespace orvo::simulator
