// SPDX-License-Identifier: Apache-2.0
// Storm: the acts, and the service's restarts.

#include "tests/simulator/Storm.h"

#include <signal.h>

#include <sstream>
#include <thread>
#include <utility>

#include <android-base/strings.h>
#include <cutils/properties.h>
#include <gtest/gtest.h>

namespace orvo::simulator::testing {

namespace {

constexpr std::chrono::seconds kPatience{20};

/** Values longer than this are emptied before the service is started again: see restartService. */
constexpr size_t kLongValue = 50;

std::string propertyOf(const std::string& type) {
    return "camera." + type + ".ids";
}

}  // namespace

Storm::Storm(Programs& device, StormModel model, uint64_t seed)
    : mDevice(device),
      mModel(std::move(model)),
      mRandom(seed),
      mService(device),
      mCaller(mModel, mRandom()) {}

void Storm::begin() {
    for (const StormCamera& camera : mModel.cameras()) mIds[camera.type] = IdList();
    mModel.serviceStarted();
    ASSERT_NO_FATAL_FAILURE(registerFramework());
    calm();
}

void Storm::burst() {
    mBursts++;
    const size_t mood = random(8);
    mMood = mood < 4 ? Mood::HOLDING : mood < 7 ? Mood::ATTENTIVE : Mood::HEEDLESS;
    mCaller.call(mFramework, mMood);
    for (size_t acts = 3 + random(6); acts > 0; acts--) {
        ASSERT_NO_FATAL_FAILURE(keepServiceUp());
        ASSERT_NO_FATAL_FAILURE(act());
        pauseAtRandom();
    }
}

void Storm::pauseAtRandom() {
    // Nothing, a moment, or about as long as a reconnection takes.
    constexpr size_t kMicroseconds[] = {0, 20'000, 300'000, 600'000};
    const size_t longest = kMicroseconds[random(std::size(kMicroseconds))];
    if (longest > 0) std::this_thread::sleep_for(std::chrono::microseconds(random(longest)));
}

void Storm::act() {
    std::vector<std::string> alive, dead;
    for (const ProviderDescription& provider : mModel.providers()) {
        (mModel.isAlive(provider.instance) ? alive : dead).push_back(provider.instance);
    }
    const size_t die = random(10);
    if (alive.empty() || (die < 3 && !dead.empty())) return start(dead[random(dead.size())]);
    if (die < 5) return moveCamera();
    if (die < 9) return kill(alive[random(alive.size())]);
    for (const std::string& provider : alive) kill(provider);
}

void Storm::kill(const std::string& provider) {
    const bool clean = random(3) == 0;
    mKills++;
    if (clean) mCleanEnds++;
    // Dead from now on, as far as the model goes: it may end a moment later.
    ASSERT_TRUE(
            mDevice.supervisor().signal(Programs::programOf(provider), clean ? SIGTERM : SIGKILL))
            << provider
            << " had ended before: " << mDevice.supervisor().endOf(Programs::programOf(provider));
    mModel.died(provider);
    mDiedAt[provider] = Clock::now();
}

void Storm::start(const std::string& provider) {
    ASSERT_TRUE(mDevice.supervisor().awaitEnd(Programs::programOf(provider), kPatience));
    const auto started = mDevice.startProvider(provider);
    ASSERT_TRUE(started) << started.error().message();
    mModel.started(provider);
    const auto away =
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - mDiedAt[provider]);
    mLongestAway[provider] = std::max(mLongestAway[provider], away);
}

void Storm::startAllDead() {
    for (const ProviderDescription& provider : mModel.providers()) {
        if (mModel.isAlive(provider.instance)) continue;
        ASSERT_NO_FATAL_FAILURE(start(provider.instance));
    }
}

void Storm::moveCamera() {
    std::vector<const StormCamera*> movable;
    for (const StormCamera& camera : mModel.cameras()) {
        if (!camera.described.builtIn() && mModel.isAlive(camera.provider)) {
            movable.push_back(&camera);
        }
    }
    if (movable.empty()) return;
    const StormCamera& camera = *movable[random(movable.size())];
    plug(camera, !mModel.isPluggedIn(camera.frameworkName));
    // Sometimes the next act finds its report still under way.
    if (random(2) == 0 && settleAll()) mModel.settled();
}

void Storm::plug(const StormCamera& camera, bool in) {
    mPlugs++;
    ASSERT_EQ("", setDeviceStatus(mDevice, camera.provider, camera.described.name,
                                  in ? Device::PRESENT : Device::NOT_PRESENT));
    mModel.plugged(camera.frameworkName, in);
}

void Storm::keepServiceUp() {
    if (mService.isRunning()) return;
    mServiceEnds[causeOfEnd()]++;
    // Before the service: at its start it looks for each provider once.
    ASSERT_NO_FATAL_FAILURE(startAllDead());
    ASSERT_NO_FATAL_FAILURE(restartService());
    mCaller.call(mFramework, mMood);
}

void Storm::restartService() {
    for (auto& [type, ids] : mIds) {
        // What a service leaves behind stays; it would soon fill the property, and then hide
        // everything that comes after. So at times the device starts with empty ones, as after a
        // boot.
        if (listedIds(type).size() > kLongValue) property_set(propertyOf(type).c_str(), "");
        ids = IdList(listedIds(type));
    }
    const auto started = mService.restart();
    ASSERT_TRUE(started) << started.error().message();
    mModel.serviceStarted();
    mUse.reset();
    registerFramework();
}

void Storm::registerFramework() {
    mCaller.pause();
    auto client = FrameworkClient::connect("legacy/0");
    ASSERT_TRUE(client) << client.error().message();
    mFramework = std::move(*client);
    mHeard = 0;
    mView.clear();
    const auto registered = mFramework->registerCallback();
    ASSERT_TRUE(registered.ok()) << registered.failure << toString(registered.status);
}

bool Storm::hadTwoReconnectionsAtOnce(const std::string& log) const {
    for (const ProviderDescription& provider : mModel.providers()) {
        int underWay = 0;
        for (const std::string& line : android::base::Split(log, "\n")) {
            const auto says = [&](const std::string& text) {
                return (line + "\n").find(text) != std::string::npos;
            };
            if (says(providerDiedLine(provider.instance))) underWay++;
            if (says(providerBackLine(provider.instance))) underWay--;
            if (says(providerGivenUpLine(provider.instance))) underWay--;
            if (underWay > 1) return true;
        }
    }
    return false;
}

std::string Storm::causeOfEnd() {
    /** What the service logs last, and what that means. */
    constexpr std::pair<const char*, const char*> kCauses[] = {
            {"nobody has looked at its result", "an enumeration met a dead provider"},
            {"A HIDL call that had to succeed has failed", "a forwarded call met a dead provider"},
            {"Shutting down in error state", "a camera was asked for that was not there"},
    };
    const std::string log = mService.log().since(mService.start());
    for (const auto& [line, cause] : kCauses) {
        if (log.find(line) != std::string::npos) return cause;
    }
    // A provider that dies right after a reconnection has linked to it starts a second one while
    // the first still runs. From then on each of its deaths is told twice, and the two
    // reconnections that follow replace the provider's plain references at the same moment. Nothing
    // orders them, by design: reconnection takes no lock. What becomes of the references then is
    // undefined.
    if (mService.end().find("signal") != std::string::npos && hadTwoReconnectionsAtOnce(log)) {
        return "two reconnections of one provider met";
    }
    ADD_FAILURE() << "the service " << mService.end() << " without a reason";
    return "unknown";
}

std::string Storm::endOfServiceLog() const {
    constexpr size_t kTail = 20'000;
    const size_t end = mService.log().mark();
    return mService.log().since(end > kTail ? end - kTail : 0);
}

std::string Storm::summary() const {
    std::ostringstream text;
    text << mKills << " kills, " << mCleanEnds << " of them clean, in " << mBursts << " bursts; "
         << mPlugs << " hot-plugs, " << mCaller.calls() << " framework calls, " << mCalms
         << " calms compared\n";
    text << mService.restarts() << " restarts of the service:";
    for (const auto& [cause, count] : mServiceEnds) text << "\n    " << count << "  " << cause;
    text << "\n" << mLateReports << " reports that were handled after their provider's death\n";
    for (const auto& [provider, away] : mLongestAway) {
        text << provider << " was away for " << away.count() << " ms at the longest\n";
    }
    for (const auto& [type, ids] : mIds) {
        text << "camera." << type << ".ids was \"" << listedIds(type) << "\" in the end\n";
    }
    return text.str();
}

}  // namespace orvo::simulator::testing
