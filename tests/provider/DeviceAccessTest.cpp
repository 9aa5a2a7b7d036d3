// SPDX-License-Identifier: Apache-2.0
// The camera list, torch support and the way to a device interface.

#include <signal.h>

#include <future>

#include "tests/support/Fault.h"
#include "tests/support/OlderGoogleTest.h"
#include "tests/support/ProviderTest.h"
#include "tests/support/UncalledDevices.h"

namespace orvo::test {
namespace {

using android::sp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::camera::common::V1_0::Status;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

class CameraIdListTest : public ProviderTest {
  protected:
    CameraIdListTest() { makeConnectedObject({"b/0", "a/0"}); }

    Script<std::vector<hidl_string>>& script(const std::string& name) {
        return mShims.shim(name)->cameraIds;
    }

    // Asks for the list and expects exactly one answer.
    void list() {
        int answers = 0;
        EXPECT_TRUE(
                mObject->getCameraIdList([&](Status status, const hidl_vec<hidl_string>& names) {
                           ++answers;
                           mStatus = status;
                           mNames.assign(names.begin(), names.end());
                           EXPECT_TRUE(activeDevicesAreUnlocked());
                       })
                        .isOk());
        EXPECT_EQ(answers, 1);
    }

    Status mStatus = Status::OK;
    std::vector<std::string> mNames;
    const LogLine mFailure = errorLine("Failed to get camera id list");
};

TEST_F(CameraIdListTest, TheProvidersListsFollowOneAnotherInSetOrderUntranslated) {
    script("a/0").value = {"device@3.2/a/1", "device@3.2/a/0"};
    script("b/0").value = {"device@1.0/b/7"};
    list();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_THAT(mNames, ElementsAre("device@3.2/a/1", "device@3.2/a/0", "device@1.0/b/7"));
    EXPECT_THAT(mLog.lines(), IsEmpty());
    EXPECT_THAT(activeDevices(), IsEmpty());
}

TEST_F(CameraIdListTest, RepeatedNamesStayRepeated) {
    script("a/0").value = {"same", "same"};
    script("b/0").value = {"same"};
    list();
    EXPECT_THAT(mNames, ElementsAre("same", "same", "same"));
}

TEST_F(CameraIdListTest, EmptyListsMakeAnEmptyList) {
    list();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_THAT(mNames, IsEmpty());
}

TEST_F(CameraIdListTest, AFailingProvidersNamesAreIncludedAndItsStatusIsAnswered) {
    recordFault("underlying `getCameraIdList`", "answers an error status",
                "an error line; its names are kept, its status is answered");
    script("a/0").status = Status::INTERNAL_ERROR;
    script("a/0").value = {"x"};
    script("b/0").value = {"y"};
    list();
    EXPECT_EQ(mStatus, Status::INTERNAL_ERROR);
    EXPECT_THAT(mNames, ElementsAre("x", "y"));
    EXPECT_THAT(mLog.lines(), ElementsAre(mFailure));
}

TEST_F(CameraIdListTest, TheLastFailureInSetOrderIsAnswered) {
    script("a/0").status = Status::CAMERA_DISCONNECTED;
    script("b/0").status = Status::INTERNAL_ERROR;
    list();
    EXPECT_EQ(mStatus, Status::INTERNAL_ERROR);
    EXPECT_THAT(mLog.take(), ElementsAre(mFailure, mFailure));

    // The order counts, and not the numbers of the statuses.
    script("a/0").status = Status::INTERNAL_ERROR;
    script("b/0").status = Status::CAMERA_DISCONNECTED;
    list();
    EXPECT_EQ(mStatus, Status::CAMERA_DISCONNECTED);
    EXPECT_THAT(mLog.take(), ElementsAre(mFailure, mFailure));
}

TEST_F(CameraIdListTest, AProviderThatDoesNotAnswerAddsNothing) {
    recordFault("underlying `getCameraIdList`", "returns without an answer", "it adds nothing");
    script("a/0").answers = 0;
    script("b/0").value = {"y"};
    list();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_THAT(mNames, ElementsAre("y"));
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(CameraIdListTest, TheShimIsAskedAndNotTheService) {
    list();
    EXPECT_EQ(script("a/0").calls, 1);
    EXPECT_EQ(script("b/0").calls, 1);
    for (const char* name : {"a/0", "b/0"}) {
        const auto* service = static_cast<ScriptedProvider*>(descriptor(name)->mProvider.get());
        EXPECT_EQ(service->cameraIds.calls, 0);
    }
}

TEST_F(CameraIdListTest, AShimIsAskedEvenIfTheServiceBehindItIsGone) {
    script("a/0").value = {"x"};
    descriptor("a/0")->mProvider = nullptr;
    list();
    EXPECT_THAT(mNames, ElementsAre("x"));
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(CameraIdListTest, AProviderWithoutAShimIsSkippedWithAWarning) {
    recordFault("shim creation", "a shim is gone when the cameras are listed",
                "a warning; the others are listed, the answer is OK");
    script("b/0").value = {"y"};
    mShims.drop("a/0");
    list();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_THAT(mNames, ElementsAre("y"));
    EXPECT_THAT(mLog.lines(),
                ElementsAre(warningLine("No shim to list the cameras of a/0, skipping it")));
}

TEST_F(CameraIdListTest, WithoutDescriptorsTheListIsEmpty) {
    mMapper->loadSucceeds = false;
    makeObject("legacy/0", {});
    list();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_THAT(mNames, IsEmpty());
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

using CameraIdListDeathTest = CameraIdListTest;

TEST_F(CameraIdListDeathTest, ATransportFailureIsLeftToThePlatformWhichEndsTheProcess) {
    recordFault("underlying `getCameraIdList`", "fails in transport",
                "the platform ends the process, which starts afresh");
    script("a/0").answers = 0;
    script("a/0").transportFails = true;
    EXPECT_EXIT(list(), ::testing::KilledBySignal(SIGABRT), "");
}

class TorchSupportTest : public ProviderTest {
  protected:
    // Asks whether the torch can be set and expects exactly one answer.
    Return<void> ask() {
        return mObject->isSetTorchModeSupported([this](Status status, bool supported) {
            mAnswers.emplace_back(status, supported);
        });
    }

    Script<bool>& script(const std::string& name) { return mShims.shim(name)->torchSupport; }

    std::vector<std::pair<Status, bool>> mAnswers;
};

TEST_F(TorchSupportTest, TheFirstProviderAnswersAlone) {
    recordFault("underlying `isSetTorchModeSupported`", "answers an error status",
                "the status is answered");
    makeConnectedObject({"b/0", "a/0"});
    script("a/0").value = true;
    script("b/0").status = Status::INTERNAL_ERROR;
    EXPECT_TRUE(ask().isOk());
    script("a/0").value = false;
    EXPECT_TRUE(ask().isOk());
    script("a/0").status = Status::METHOD_NOT_SUPPORTED;
    EXPECT_TRUE(ask().isOk());
    EXPECT_THAT(mAnswers, ElementsAre(Pair(Status::OK, true), Pair(Status::OK, false),
                                      Pair(Status::METHOD_NOT_SUPPORTED, false)));
    EXPECT_EQ(script("b/0").calls, 0);
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(TorchSupportTest, TheLockOfTheActiveDevicesIsNotTaken) {
    makeConnectedObject({"a/0"});
    std::future<bool> asked;
    {
        const std::lock_guard<std::mutex> lock(mObject->mActiveDevicesMutex);
        asked = std::async(std::launch::async, [this] { return ask().isOk(); });
        EXPECT_EQ(asked.wait_for(kPatience), std::future_status::ready);
    }
    EXPECT_TRUE(asked.get());
    EXPECT_THAT(mAnswers, SizeIs(1));
}

TEST_F(TorchSupportTest, ATransportFailureIsReturned) {
    recordFault("underlying `isSetTorchModeSupported`", "fails in transport",
                "the failure is returned");
    makeConnectedObject({"a/0"});
    script("a/0").answers = 0;
    script("a/0").transportFails = true;
    const Return<void> result = ask();
    EXPECT_FALSE(result.isOk());
    EXPECT_TRUE(result.isDeadObject());
    EXPECT_THAT(mAnswers, IsEmpty());
}

TEST_F(TorchSupportTest, WithoutDescriptorsItIsAnError) {
    mMapper->loadSucceeds = false;
    makeObject("legacy/0", {});
    EXPECT_TRUE(ask().isOk());
    EXPECT_THAT(mAnswers, ElementsAre(Pair(Status::INTERNAL_ERROR, false)));
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(TorchSupportTest, AFirstProviderWithoutAShimIsAnErrorEvenIfOthersCouldAnswer) {
    recordFault("shim creation",
                "the first provider's shim is gone when torch support is asked for",
                "answers (INTERNAL_ERROR, false)");
    makeConnectedObject({"a/0", "b/0"});
    mShims.drop("a/0");
    EXPECT_TRUE(ask().isOk());
    EXPECT_THAT(mAnswers, ElementsAre(Pair(Status::INTERNAL_ERROR, false)));
    EXPECT_EQ(script("b/0").calls, 0);
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

// The two versions of the operation differ in what they log and in which of the shim's operations
// they call; everything else is tested for both.
struct Version1 {
    using Device = UncalledDeviceV1;
    using Interface = ScriptedProvider::DeviceV1;
    static constexpr char kAsked[] = "1 ";
    static Script<sp<Interface>>& script(ScriptedProvider& shim) { return shim.deviceV1; }
    template <typename Object, typename Callback>
    static Return<void> get(Object& object, const std::string& name, const Callback& callback) {
        return object.getCameraDeviceInterface_V1_x(name, callback);
    }
    static std::vector<LogLine> askedLines(const std::string&, const std::string&) { return {}; }
    static LogLine foundLine(const std::string&, const std::string&, const std::string& provider) {
        return errorLine("Got camera for " + provider + " id = " + provider);
    }
};

struct Version3 {
    using Device = UncalledDeviceV3;
    using Interface = ScriptedProvider::DeviceV3;
    static constexpr char kAsked[] = "3 ";
    static Script<sp<Interface>>& script(ScriptedProvider& shim) { return shim.deviceV3; }
    template <typename Object, typename Callback>
    static Return<void> get(Object& object, const std::string& name, const Callback& callback) {
        return object.getCameraDeviceInterface_V3_x(name, callback);
    }
    static std::vector<LogLine> askedLines(const std::string& framework,
                                           const std::string& provider) {
        return {infoLine("Getting camera device interface for " + framework + " camera name " +
                         provider)};
    }
    static LogLine foundLine(const std::string& descriptor, const std::string& framework,
                             const std::string&) {
        return infoLine("Got provider " + descriptor + " for cameraDevice " + framework);
    }
};

template <typename Version>
class DeviceInterfaceTest : public ProviderTest {
  protected:
    using Interface = typename Version::Interface;

    DeviceInterfaceTest() {
        makeConnectedObject({"external/0", "virtual/0"});
        reportPresent({"device@3.2/external/100", "device@3.2/virtual/7"});
    }

    void TearDown() override {
        mAnswers.clear();
        ProviderTest::TearDown();
    }

    Return<void> get(const std::string& frameworkName) {
        return Version::get(*mObject, frameworkName,
                            [this](Status status, const sp<Interface>& device) {
                                mAnswers.emplace_back(status, device);
                                EXPECT_TRUE(activeDevicesAreUnlocked());
                            });
    }

    ScriptedProvider& shim(const std::string& name) { return *mShims.shim(name); }

    static std::vector<LogLine> lines(const std::string& descriptor, const std::string& framework,
                                      const std::string& provider) {
        std::vector<LogLine> all = Version::askedLines(framework, provider);
        all.push_back(Version::foundLine(descriptor, framework, provider));
        return all;
    }

    std::vector<std::pair<Status, sp<Interface>>> mAnswers;
};

using Versions = ::testing::Types<Version1, Version3>;
TYPED_TEST_SUITE(DeviceInterfaceTest, Versions);

TYPED_TEST(DeviceInterfaceTest, ThePresentDevicesProviderIsAskedUnderItsOwnName) {
    const sp<typename TypeParam::Interface> device = new typename TypeParam::Device;
    TypeParam::script(this->shim("virtual/0")).value = device;
    EXPECT_TRUE(this->get("device@3.2/legacy/7").isOk());
    EXPECT_THAT(this->mAnswers, ElementsAre(Pair(Status::OK, device)));
    EXPECT_THAT(this->shim("virtual/0").askedDevices(),
                ElementsAre(std::string(TypeParam::kAsked) + "device@3.2/virtual/7"));
    EXPECT_THAT(this->shim("external/0").askedDevices(), IsEmpty());
    EXPECT_EQ(this->mLog.lines(),
              this->lines("virtual/0", "device@3.2/legacy/7", "device@3.2/virtual/7"));
    TypeParam::script(this->shim("virtual/0")).value = nullptr;
}

TYPED_TEST(DeviceInterfaceTest, TheProvidersStatusIsAnsweredUnchanged) {
    recordFault("underlying `getCameraDeviceInterface`", "answers an error status",
                "the status is answered");
    TypeParam::script(this->shim("external/0")).status = Status::OPERATION_NOT_SUPPORTED;
    EXPECT_TRUE(this->get("device@3.2/legacy/100").isOk());
    EXPECT_THAT(this->mAnswers, ElementsAre(Pair(Status::OPERATION_NOT_SUPPORTED, nullptr)));
}

TYPED_TEST(DeviceInterfaceTest, ATransportFailureIsReturned) {
    recordFault("underlying `getCameraDeviceInterface`", "fails in transport",
                "the failure is returned");
    TypeParam::script(this->shim("external/0")).answers = 0;
    TypeParam::script(this->shim("external/0")).transportFails = true;
    const Return<void> result = this->get("device@3.2/legacy/100");
    EXPECT_FALSE(result.isOk());
    EXPECT_TRUE(result.isDeadObject());
    EXPECT_THAT(this->mAnswers, IsEmpty());
}

TYPED_TEST(DeviceInterfaceTest, ATypeWithoutADescriptorIsAnIllegalArgument) {
    this->reportPresent({"device@3.2/remote/5"});
    EXPECT_TRUE(this->get("device@3.2/legacy/5").isOk());
    EXPECT_THAT(this->mAnswers, ElementsAre(Pair(Status::ILLEGAL_ARGUMENT, nullptr)));
    std::vector<LogLine> expected =
            TypeParam::askedLines("device@3.2/legacy/5", "device@3.2/remote/5");
    expected.push_back(errorLine("FATAL(479): Invalid provider name remote/0"));
    EXPECT_EQ(this->mLog.lines(), expected);
}

TYPED_TEST(DeviceInterfaceTest, AProviderWithoutAShimIsAnInternalError) {
    recordFault("shim creation", "a shim is gone when a device is asked for",
                "answers (INTERNAL_ERROR, null)");
    this->mShims.drop("external/0");
    EXPECT_TRUE(this->get("device@3.2/legacy/100").isOk());
    EXPECT_THAT(this->mAnswers, ElementsAre(Pair(Status::INTERNAL_ERROR, nullptr)));
    EXPECT_EQ(this->mLog.lines(),
              this->lines("external/0", "device@3.2/legacy/100", "device@3.2/external/100"));
}

TYPED_TEST(DeviceInterfaceTest, ANameWithAnEmptyPartIsPassedOnAsItIs) {
    EXPECT_TRUE(this->get("device@3.2/external").isOk());
    EXPECT_THAT(this->mAnswers, ElementsAre(Pair(Status::OK, nullptr)));
    EXPECT_THAT(this->shim("external/0").askedDevices(),
                ElementsAre(std::string(TypeParam::kAsked) + "device@3.2/external"));
    std::vector<LogLine> expected = {
            errorLine("WARNING: Failed to parse device name device@3.2/external. Android "
                      "frameworkwill likely fail to recognize this camera")};
    for (const LogLine& line :
         this->lines("external/0", "device@3.2/external", "device@3.2/external")) {
        expected.push_back(line);
    }
    EXPECT_EQ(this->mLog.lines(), expected);
    EXPECT_THAT(this->activeDevices(), SizeIs(2));
}

template <typename Version>
using DeviceInterfaceDeathTest = DeviceInterfaceTest<Version>;
TYPED_TEST_SUITE(DeviceInterfaceDeathTest, Versions);

TYPED_TEST(DeviceInterfaceDeathTest, AnUnknownDeviceEndsTheProcess) {
    std::vector<LogLine> lines = TypeParam::askedLines("device@3.2/legacy/5", "");
    lines.push_back(errorLine("FATAL(462): Invalid device name "));
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                (void)this->get("device@3.2/legacy/5").isOk();
            },
            ::testing::ExitedWithCode(1), ::testing::EndsWith(shutdownText(lines)));
}

TYPED_TEST(DeviceInterfaceDeathTest, ANameThatDoesNotParseEndsTheProcess) {
    std::vector<LogLine> lines = {
            errorLine("WARNING: Failed to parse device name camera0. Android frameworkwill likely "
                      "fail to recognize this camera")};
    for (const LogLine& line : TypeParam::askedLines("camera0", "camera0")) lines.push_back(line);
    lines.push_back(errorLine("FATAL(462): Invalid device name camera0"));
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                (void)this->get("camera0").isOk();
            },
            ::testing::ExitedWithCode(1), ::testing::EndsWith(shutdownText(lines)));
}

}  // namespace
}  // namespace orvo::test
