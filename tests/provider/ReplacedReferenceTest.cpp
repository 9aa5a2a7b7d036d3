// SPDX-License-Identifier: Apache-2.0
// The references without a lock: when the old object goes, the new one is in its place already.

#include "tests/support/Departing.h"
#include "tests/support/RecoveryTest.h"

namespace orvo::test {
namespace {

using android::sp;

constexpr char kName[] = "external/0";

class ReplacedReferenceTest : public RecoveryTest {
  protected:
    // The only provider of the object.
    const Descriptor& only() { return *mObject->mHalDescriptors.begin(); }

    // Connects a service to which nobody else has a reference, and which runs that at its end.
    void connectDeparting(const std::function<void()>& onDestroyed) {
        connect({kName});
        mProxy->start(kName, new Departing<ScriptedProvider>(onDestroyed));
        EXPECT_TRUE(mObject->initializeProviderService(&only(), kName));
        mProxy->stop(kName);
    }

    int mDepartures = 0;
};

TEST_F(ReplacedReferenceTest, ACallbackGoesWhenTheNextOneIsInItsPlace) {
    connect({kName});
    mObject->setCallback(new Departing<RecordingCallback>([this] {
        ++mDepartures;
        EXPECT_EQ(mObject->mCallback.get(), mFramework.get());
    }));
    mObject->setCallback(mFramework);
    EXPECT_EQ(mDepartures, 1);
}

TEST_F(ReplacedReferenceTest, ACallbackGoesBeforeAnyProviderIsRegisteredWith) {
    connect({kName});
    mObject->setCallback(new Departing<RecordingCallback>([this] { ++mDepartures; }));
    mShims.shim(kName)->onCall = [this](const std::string&) { EXPECT_EQ(mDepartures, 1); };
    mObject->setCallback(nullptr);
    EXPECT_EQ(mDepartures, 1);
}

TEST_F(ReplacedReferenceTest, AServiceGoesWhenTheNextOneIsInItsPlace) {
    connectDeparting([this] {
        ++mDepartures;
        EXPECT_EQ(only().mProvider.get(), mServices[kName].get());
    });
    mProxy->start(kName, mServices[kName]);
    EXPECT_TRUE(mObject->initializeProviderService(&only(), kName));
    EXPECT_EQ(mDepartures, 1);
}

TEST_F(ReplacedReferenceTest, AServiceThatDiesOrIsNotFoundAgainGoesWhenThereIsNoneInItsPlace) {
    const auto check = [this] {
        ++mDepartures;
        EXPECT_EQ(only().mProvider.get(), nullptr);
    };
    connectDeparting(check);
    mObject->serviceDied(cookie(kName), nullptr);
    EXPECT_EQ(mDepartures, 1);

    mProxy->start(kName, new Departing<ScriptedProvider>(check));
    EXPECT_TRUE(mObject->initializeProviderService(&only(), kName));
    mProxy->stop(kName);
    EXPECT_FALSE(mObject->initializeProviderService(&only(), kName));
    EXPECT_EQ(mDepartures, 2);
}

// Its memory, counter and all, goes with the last weak reference, which is the descriptor's.
class WeaklyKept : public Departing<ScriptedProvider> {
  public:
    using Departing::Departing;
    void onFirstRef() override { extendObjectLifetime(OBJECT_LIFETIME_WEAK); }
};

TEST_F(ReplacedReferenceTest, AShimsMemoryGoesWhenTheNextOneIsInItsPlace) {
    const sp<ScriptedProvider> next = new ScriptedProvider;
    mShims.prepare(kName, new WeaklyKept([&] {
                       ++mDepartures;
                       EXPECT_EQ(only().mShim.promote(), next);
                   }));
    connect({kName});
    mShims.drop(kName);
    EXPECT_EQ(mDepartures, 0);
    mShims.prepare(kName, next);
    EXPECT_TRUE(mObject->initializeProviderService(&only(), kName));
    EXPECT_EQ(mDepartures, 1);
}

}  // namespace
}  // namespace orvo::test
