// SPDX-License-Identifier: Apache-2.0
// Whoever is called is held for the length of the call, even when everybody else lets go of it.

#include <functional>

#include "tests/support/RecoveryTest.h"

namespace orvo::test {
namespace {

using android::sp;
using android::wp;

constexpr char kName[] = "external/0";

// Its memory lasts for as long as weak references to it do, so that a caller that holds no strong
// one is found out by a check and not by a crash.
class Watched : public ScriptedProvider {
  public:
    Watched() { extendObjectLifetime(OBJECT_LIFETIME_WEAK); }
    bool onIncStrongAttempted(uint32_t /* flags */, const void* /* id */) override { return false; }

    bool isHeld() const { return getStrongCount() > 0; }
};

class HeldDuringCallTest : public RecoveryTest {
  protected:
    HeldDuringCallTest() : mWatched(new Watched), mWeak(mWatched) { mRaw = mWatched.get(); }

    void TearDown() override {
        finishReconnections();
        mWatched.clear();
        mWeak.clear();
        // Its memory holds the object, as its callback, and would last as long as this reference.
        descriptor(kName)->mShim.clear();
        RecoveryTest::TearDown();
    }

    // Lets everybody else go of it while that operation of it runs.
    void expectHeldDuring(const std::string& operation, const std::function<void()>& letGo) {
        mRaw->onCall = [this, operation, letGo](const std::string& called) {
            if (called != operation) return;
            letGo();
            mWatched.clear();
            EXPECT_TRUE(mRaw->isHeld()) << operation;
            ++mCalls;
        };
    }

    // To be called by whatever still runs inside the provider's operation.
    void expectStillHeld() {
        EXPECT_TRUE(mRaw->isHeld()) << "in the answer";
        ++mAnswers;
    }

    sp<Watched> mWatched;
    wp<Watched> mWeak;
    Watched* mRaw;
    int mCalls = 0;
    int mAnswers = 0;
};

// The shim of external/0, of which its library lets go.
class HeldShimTest : public HeldDuringCallTest {
  protected:
    HeldShimTest() {
        mShims.prepare(kName, mWatched);
        connect({kName});
        reportPresent({"device@3.2/external/1"});
    }

    void expectHeldDuring(const std::string& operation) {
        HeldDuringCallTest::expectHeldDuring(operation, [this] { mShims.drop(kName); });
    }
};

TEST_F(HeldShimTest, WhileItListsItsCameras) {
    expectHeldDuring("getCameraIdList");
    mObject->getCameraIdList([](Status, const auto&) {});
    EXPECT_EQ(mCalls, 1);
    EXPECT_FALSE(mRaw->isHeld()) << "it is released afterwards";
}

TEST_F(HeldShimTest, WhileItSaysWhetherTheTorchCanBeSet) {
    expectHeldDuring("isSetTorchModeSupported");
    mObject->isSetTorchModeSupported([this](Status, bool) { expectStillHeld(); });
    EXPECT_EQ(mCalls, 1);
    EXPECT_EQ(mAnswers, 1);
    EXPECT_FALSE(mRaw->isHeld());
}

TEST_F(HeldShimTest, WhileItOpensADeviceOfVersion1) {
    expectHeldDuring("getCameraDeviceInterface_V1_x");
    mObject->getCameraDeviceInterface_V1_x("device@3.2/legacy/1",
                                           [this](Status, const auto&) { expectStillHeld(); });
    EXPECT_EQ(mCalls, 1);
    EXPECT_EQ(mAnswers, 1);
    EXPECT_FALSE(mRaw->isHeld());
}

TEST_F(HeldShimTest, WhileItOpensADeviceOfVersion3) {
    expectHeldDuring("getCameraDeviceInterface_V3_x");
    mObject->getCameraDeviceInterface_V3_x("device@3.2/legacy/1",
                                           [this](Status, const auto&) { expectStillHeld(); });
    EXPECT_EQ(mCalls, 1);
    EXPECT_EQ(mAnswers, 1);
    EXPECT_FALSE(mRaw->isHeld());
}

TEST_F(HeldShimTest, WhileTheCallbackIsRegisteredWithIt) {
    expectHeldDuring("setCallback");
    EXPECT_EQ(mObject->setCallback(mFramework), Status::OK);
    EXPECT_EQ(mCalls, 1);
    EXPECT_FALSE(mRaw->isHeld());
}

TEST_F(HeldShimTest, WhileAReconnectionRegistersWithIt) {
    mShims.prepare(kName, mWatched);
    expectHeldDuring("setCallback");
    die(kName);
    finishReconnections();
    EXPECT_EQ(mCalls, 1);
    EXPECT_EQ(mLog.lines().back(), reconnectedLine(kName, 1));
    EXPECT_FALSE(mRaw->isHeld());
}

TEST_F(HeldShimTest, UntilAReconnectionHasLoggedItsSuccess) {
    mShims.prepare(kName, mWatched);
    mLog.onLine = [this](const LogLine& line) {
        if (!(line == reconnectedLine(kName, 1))) return;
        mShims.drop(kName);
        mWatched.clear();
        expectStillHeld();
    };
    die(kName);
    finishReconnections();
    EXPECT_EQ(mAnswers, 1);
    EXPECT_FALSE(mRaw->isHeld());
}

TEST_F(HeldShimTest, NoLongerThanItTakesToFindOutThatItCannotBeRegisteredWith) {
    mRaw->setCallbackFails = true;
    int lines = 0;
    mLog.onLine = [&](const LogLine& line) {
        EXPECT_EQ(line, errorLine("Failed to set callback"));
        ++lines;
        mShims.drop(kName);
        mWatched.clear();
        EXPECT_FALSE(mRaw->isHeld());
    };
    EXPECT_EQ(mObject->setCallback(mFramework), Status::INTERNAL_ERROR);
    EXPECT_EQ(lines, 1);
}

// The service external/0, which dies: its descriptor and the service manager let go of it.
class HeldServiceTest : public HeldDuringCallTest {
  protected:
    HeldServiceTest() {
        mProxy->declared.push_back(kName);
        mProxy->start(kName, mWatched);
        makeObject("legacy/0", {kName});
    }

    bool connectIt() { return mObject->initializeProviderService(descriptor(kName), kName); }

    void letGo() {
        mProxy->stop(kName);
        descriptor(kName)->mProvider = nullptr;
    }

    void expectHeldDuring(const std::string& operation) {
        HeldDuringCallTest::expectHeldDuring(operation, [this] { letGo(); });
    }
};

TEST_F(HeldServiceTest, WhileItsDeathIsLinked) {
    expectHeldDuring("linkToDeath");
    EXPECT_TRUE(connectIt());
    EXPECT_EQ(mCalls, 1);
    EXPECT_FALSE(mRaw->isHeld());
}

TEST_F(HeldServiceTest, WhileItsShimIsMade) {
    sp<ScriptedProvider> shim = new ScriptedProvider;
    mShims.makeWith(kName, [&] {
        letGo();
        mWatched.clear();
        expectStillHeld();
        return shim.get();
    });
    EXPECT_TRUE(connectIt());
    EXPECT_EQ(mAnswers, 1);
    EXPECT_FALSE(mRaw->isHeld());
}

TEST_F(HeldServiceTest, WhileItIsUnlinkedBecauseItsShimCannotBeMade) {
    mShims.refuse(kName);
    expectHeldDuring("unlinkToDeath");
    EXPECT_FALSE(connectIt());
    EXPECT_EQ(mCalls, 1);
    EXPECT_FALSE(mRaw->isHeld());
}

TEST_F(HeldServiceTest, WhileItIsUnlinkedBecauseItDied) {
    ASSERT_TRUE(connectIt());
    expectHeldDuring("unlinkToDeath");
    mObject->serviceDied(cookie(kName), nullptr);
    EXPECT_EQ(mCalls, 1);
    EXPECT_FALSE(mRaw->isHeld());
}

TEST_F(HeldServiceTest, WhileItTellsItsVendorTags) {
    ASSERT_TRUE(connectIt());
    expectHeldDuring("getVendorTags");
    mObject->getVendorTags([](Status, const auto&) {});
    EXPECT_EQ(mCalls, 1);
    EXPECT_FALSE(mRaw->isHeld());
}

}  // namespace
}  // namespace orvo::test
