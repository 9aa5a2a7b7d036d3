// SPDX-License-Identifier: Apache-2.0
// Storm: the calm, in which the device must be as the model says.

#include <unistd.h>

#include <algorithm>

#include <android-base/strings.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/Storm.h"

namespace orvo::simulator::testing {

using ::testing::ElementsAreArray;

namespace {

constexpr std::chrono::seconds kPatience{20};
/** The ten attempts of a reconnection, less what the death's own handling takes at most. */
constexpr std::chrono::milliseconds kTooLong{4500};

/** What the service listed after the last change: the lines "Key: K, Value: V". */
std::map<std::string, std::string> listedIn(const std::string& log) {
    constexpr char kLine[] = " mActiveDevices Key: ";
    constexpr char kValue[] = ", Value: ";
    std::map<std::string, std::string> listed;
    for (const std::string& line : android::base::Split(log, "\n")) {
        const size_t key = line.find(kLine);
        const size_t value = line.find(kValue);
        if (key == std::string::npos || value == std::string::npos) continue;
        const size_t start = key + sizeof(kLine) - 1;
        listed[line.substr(start, value - start)] = line.substr(value + sizeof(kValue) - 1);
    }
    return listed;
}

}  // namespace

void Storm::calm() {
    // Calls that end the service for certain would put the calm off for ever.
    if (mMood == Mood::HEEDLESS) mMood = Mood::ATTENTIVE;
    mCaller.call(mFramework, mMood);
    ASSERT_TRUE(awaitCalm()) << "the device did not come to rest";
    mCalms++;
    compare();
}

bool Storm::awaitCalm() {
    auto deadline = Clock::now() + kPatience;
    while (Clock::now() < deadline) {
        keepServiceUp();
        startAllDead();
        if (::testing::Test::HasFatalFailure()) return false;
        if (hasGivenUp()) {
            mServiceEnds["a provider was away for too long"]++;
            mDevice.supervisor().signal(Programs::kService, SIGKILL);
            mService.awaitEnd(kPatience);
            restartService();
            deadline = Clock::now() + kPatience;
        }
        if (!isQuiet()) {
            // The end of the service is not written to its log by itself.
            mService.log().awaitGrowth(std::chrono::milliseconds(100));
            continue;
        }
        mCaller.pause();
        const std::string log = mService.log().since(mService.start());
        const bool isEnding = log.find("Shutting down in error state") != std::string::npos ||
                              !mFramework->vendorTags().arrived();
        if (!isEnding) return true;
        if (!mService.awaitEnd(kPatience)) return false;
        deadline = Clock::now() + kPatience;
    }
    return false;
}

bool Storm::isQuiet() {
    const std::string before = mService.log().since(mService.start());
    for (const ProviderDescription& provider : mModel.providers()) {
        if (!mService.hasReconnected(provider.instance, before)) return false;
    }
    if (!settleAll()) return false;
    mModel.settled();
    // No death was told of meanwhile.
    const std::string after = mService.log().since(mService.start());
    return std::all_of(mModel.providers().begin(), mModel.providers().end(),
                       [&](const auto& p) { return mService.hasReconnected(p.instance, after); });
}

bool Storm::hasGivenUp() {
    const std::string log = mService.log().since(mService.start());
    for (const ProviderDescription& provider : mModel.providers()) {
        const size_t gaveUp = log.rfind(providerGivenUpLine(provider.instance));
        if (gaveUp == std::string::npos) continue;
        const size_t back = log.rfind(providerBackLine(provider.instance));
        if (back != std::string::npos && back > gaveUp) continue;
        EXPECT_GE(mLongestAway[provider.instance], kTooLong)
                << provider.instance << " was given up too early";
        return true;
    }
    return false;
}

bool Storm::settleAll() {
    for (const ProviderDescription& provider : mModel.providers()) {
        if (!mModel.isAlive(provider.instance)) continue;
        if (!settle(mDevice, provider.instance)) return false;
    }
    return true;
}

void Storm::hear() {
    for (const StatusEvent& event : mFramework->log().events(mHeard)) {
        mHeard++;
        const Device* status = std::get_if<Device>(&event.status);
        if (status == nullptr) continue;
        const StormCamera* camera = mModel.find(event.cameraDeviceName);
        ASSERT_NE(nullptr, camera) << event.toText();
        if (*status == Device::PRESENT) {
            mView.insert(event.cameraDeviceName);
            mIds[camera->type].add(camera->id);
        } else {
            mView.erase(event.cameraDeviceName);
            mIds[camera->type].remove(camera->id);
        }
    }
}

void Storm::compare() {
    ASSERT_NO_FATAL_FAILURE(hear());
    ASSERT_NO_FATAL_FAILURE(resolveUncertain());
    compareView();
    compareIds();
    compareCameras();
    compareLists();
    ASSERT_NO_FATAL_FAILURE(compareActiveDevices());
    compareUse();
    compareChildren();
    EXPECT_THAT(mCaller.complaints(), ElementsAreArray(std::vector<std::string>()));
}

void Storm::resolveUncertain() {
    const auto uncertain = mModel.uncertain();
    if (uncertain.empty()) return;
    std::map<std::string, std::set<std::string>> ids;
    for (const std::string& name : uncertain) {
        const StormCamera& camera = *mModel.find(name);
        ids[camera.type].insert(camera.id);
    }
    for (const auto& [type, uncertainIds] : ids) {
        const IdList seen(listedIds(type));
        if (seen.value() == mIds[type].value()) continue;
        // How often these are listed depends on the order in which a death and a report were
        // handled; of the others it does not.
        EXPECT_EQ(mIds[type].valueWithout(uncertainIds), seen.valueWithout(uncertainIds));
        mIds[type] = seen;
        mLateReports++;
    }
    const auto active = mModel.active();
    for (const std::string& name : uncertain) {
        mModel.resolved(name);
        if (mView.count(name) == active.count(name)) continue;
        // A camera that was pulled out by its provider's death and reported afterwards: it comes
        // and goes once more, and is gone for certain.
        mLateReports++;
        ASSERT_NO_FATAL_FAILURE(plug(*mModel.find(name), true));
        ASSERT_NO_FATAL_FAILURE(plug(*mModel.find(name), false));
        ASSERT_TRUE(settleAll());
        mModel.settled();
        hear();
    }
}

void Storm::compareView() {
    std::set<std::string> expected;
    for (const auto& [name, provided] : mModel.active()) expected.insert(name);
    EXPECT_EQ(expected, mView) << "what the framework has heard of";
}

void Storm::compareIds() {
    for (const auto& [type, ids] : mIds) EXPECT_EQ(ids.value(), listedIds(type)) << type;
    EXPECT_EQ("1", externalAdded());
}

void Storm::compareCameras() {
    for (const auto& [name, provided] : mModel.active()) {
        const CameraDescription& described = mModel.find(name)->described;
        const auto facts = mFramework->readCamera(name);
        ASSERT_TRUE(facts.ok()) << name << ": " << facts.failure << toString(facts.status);
        EXPECT_EQ(described.resourceCost, facts.value.resourceCost) << name;
        EXPECT_EQ(described.conflicts, facts.value.conflictingDevices) << name;
        EXPECT_EQ(described.characteristics.size(), facts.value.characteristicsBytes) << name;
        if (described.majorVersion != 3) continue;
        const auto session = mFramework->openSession(name);
        ASSERT_TRUE(session.ok()) << name << ": " << session.failure << toString(session.status);
        EXPECT_TRUE(session.value->close().isOk()) << name;
    }
}

void Storm::compareLists() {
    std::vector<std::string> expectedNames, expectedSections, sections;
    for (const ProviderDescription& provider : mModel.providers()) {
        for (const CameraDescription& camera : provider.cameras) {
            if (camera.builtIn()) expectedNames.push_back(camera.name);
        }
        expectedSections.push_back(provider.instance);
        for (const auto& section : provider.vendorTags) {
            expectedSections.push_back(section.sectionName);
        }
    }
    const auto names = mFramework->cameraIdList();
    EXPECT_TRUE(names.ok()) << names.failure;
    EXPECT_EQ(expectedNames, names.value);
    const auto torch = mFramework->isTorchSupported();
    EXPECT_TRUE(torch.ok()) << torch.failure;
    EXPECT_EQ(mModel.providers()[0].torchSupported, torch.value);
    const auto tags = mFramework->vendorTags();
    EXPECT_TRUE(tags.ok()) << tags.failure;
    for (const auto& section : tags.value) sections.push_back(section.sectionName);
    EXPECT_EQ(expectedSections, sections);
}

void Storm::compareActiveDevices() {
    for (const StormCamera& camera : mModel.cameras()) {
        if (camera.described.builtIn()) continue;
        const size_t mark = mService.log().mark();
        plug(camera, !mModel.isPluggedIn(camera.frameworkName));
        ASSERT_TRUE(settleAll());
        mModel.settled();
        EXPECT_EQ(mModel.active(), listedIn(mService.log().since(mark)));
        ASSERT_NO_FATAL_FAILURE(hear());
    }
    compareView();
    compareIds();
}

void Storm::compareUse() {
    if (!mUse) {
        ASSERT_TRUE(mService.fillThreadPool(*mFramework));
        mUse = mService.use();
    }
    EXPECT_EQ(*mUse, awaitUse(mService.pid(), *mUse)) << "of the service";
}

void Storm::compareChildren() {
    std::set<pid_t> running;
    for (const std::string& program : mDevice.programs()) {
        const auto pid = mDevice.supervisor().pidOf(program);
        EXPECT_TRUE(pid) << program << " does not run";
        if (pid) running.insert(*pid);
    }
    EXPECT_EQ(running, childrenOf(getpid()));
}

void Storm::end() {
    mCaller.pause();
    mFramework.reset();
    EXPECT_THAT(mDevice.shutDown(), ElementsAreArray(std::vector<std::string>()));
    EXPECT_THAT(childrenOf(getpid()), ElementsAreArray(std::vector<pid_t>()));
}

}  // namespace orvo::simulator::testing
