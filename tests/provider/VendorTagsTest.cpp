// SPDX-License-Identifier: Apache-2.0
// The merge of the providers' vendor tag sections.

#include <signal.h>

#include "tests/support/Fault.h"
#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using android::sp;
using android::hardware::hidl_vec;
using android::hardware::camera::common::V1_0::CameraMetadataType;
using android::hardware::camera::common::V1_0::VendorTag;
using android::hardware::camera::common::V1_0::VendorTagSection;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

VendorTagSection section(const std::string& name, const std::vector<VendorTag>& tags = {}) {
    VendorTagSection made;
    made.sectionName = name;
    made.tags = tags;
    return made;
}

class VendorTagsTest : public ProviderTest {
  protected:
    // Connects the object; each provider's own script is reached with script().
    void connect(const std::vector<std::string>& names) {
        for (const std::string& name : names) mServices[name] = startService(name);
        makeObject("legacy/0", names);
        mObject->initialize();
        mLog.take();
    }

    void TearDown() override {
        mServices.clear();
        ProviderTest::TearDown();
    }

    Script<std::vector<VendorTagSection>>& script(const std::string& name) {
        return mServices[name]->vendorTags;
    }

    // Asks for the tags and expects exactly one answer.
    void get() {
        int answers = 0;
        EXPECT_TRUE(mObject->getVendorTags(
                                   [&](Status status, const hidl_vec<VendorTagSection>& sections) {
                                       ++answers;
                                       mStatus = status;
                                       mSections = sections;
                                       EXPECT_TRUE(activeDevicesAreUnlocked());
                                   })
                            .isOk());
        EXPECT_EQ(answers, 1);
    }

    std::map<std::string, sp<ScriptedProvider>> mServices;  // Key: instance name.
    Status mStatus = Status::OK;
    std::vector<VendorTagSection> mSections;
    const LogLine mFailure = errorLine("Failed to get vendor tags");
};

TEST_F(VendorTagsTest, EachProvidersSectionsFollowItsMarkerInSetOrder) {
    connect({"legacy/0", "external/0"});
    const VendorTag tag1 = {0x80000001u, "one", CameraMetadataType::BYTE};
    const VendorTag tag2 = {0x80000001u, "two", CameraMetadataType::RATIONAL};
    script("external/0").value = {section("s1", {tag1, tag2})};
    script("legacy/0").value = {section("s3"), section("s2", {tag2})};
    get();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_THAT(mSections, ElementsAre(section("external/0"), section("s1", {tag1, tag2}),
                                       section("legacy/0"), section("s3"), section("s2", {tag2})));
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(VendorTagsTest, WithoutDescriptorsThereAreNoSections) {
    mMapper->loadSucceeds = false;
    makeObject("legacy/0", {});
    get();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_THAT(mSections, IsEmpty());
}

TEST_F(VendorTagsTest, AProviderWithoutSectionsStillHasItsMarker) {
    connect({"a/0", "b/0"});
    script("b/0").value = {section("s")};
    get();
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("b/0"), section("s")));
}

TEST_F(VendorTagsTest, SectionsOfOneNameStaySeparate) {
    connect({"a/0", "b/0"});
    const VendorTag tag = {0x80000001u, "tag", CameraMetadataType::BYTE};
    script("a/0").value = {section("same", {tag})};
    script("b/0").value = {section("same", {tag}), section("b/0")};
    get();
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("same", {tag}), section("b/0"),
                                       section("same", {tag}), section("b/0")));
}

TEST_F(VendorTagsTest, AFailingProvidersSectionsAreKeptAndItsStatusIsAnswered) {
    recordFault("underlying `getVendorTags`", "answers an error status",
                "an error line; its sections are kept, its status is answered");
    connect({"a/0", "b/0"});
    script("a/0").status = Status::INTERNAL_ERROR;
    script("a/0").value = {section("s")};
    get();
    EXPECT_EQ(mStatus, Status::INTERNAL_ERROR);
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("s"), section("b/0")));
    EXPECT_THAT(mLog.lines(), ElementsAre(mFailure));
}

TEST_F(VendorTagsTest, TheLastFailureInSetOrderIsAnswered) {
    connect({"a/0", "b/0", "c/0"});
    script("a/0").status = Status::INTERNAL_ERROR;
    script("b/0").status = Status::CAMERA_DISCONNECTED;
    get();
    EXPECT_EQ(mStatus, Status::CAMERA_DISCONNECTED);
    EXPECT_THAT(mLog.take(), ElementsAre(mFailure, mFailure));

    // The order counts, and not the numbers of the statuses.
    script("a/0").status = Status::CAMERA_DISCONNECTED;
    script("b/0").status = Status::INTERNAL_ERROR;
    get();
    EXPECT_EQ(mStatus, Status::INTERNAL_ERROR);
    EXPECT_THAT(mLog.take(), ElementsAre(mFailure, mFailure));
}

TEST_F(VendorTagsTest, TheServiceIsAskedAndNotTheShim) {
    connect({"a/0"});
    mShims.drop("a/0");
    script("a/0").value = {section("s")};
    get();
    EXPECT_EQ(script("a/0").calls, 1);
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("s")));
}

TEST_F(VendorTagsTest, AfterAProviderThatDoesNotAnswerTheOthersSectionsMoveUp) {
    recordFault("underlying `getVendorTags`", "returns without an answer",
                "the later sections move up by one marker");
    connect({"a/0", "b/0", "c/0"});
    script("a/0").answers = 0;
    script("b/0").value = {section("of b")};
    script("c/0").value = {section("of c")};
    get();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("of b"), section("b/0"),
                                       section("of c"), section("c/0")));
}

TEST_F(VendorTagsTest, OnlyTheSectionsBehindAProviderThatDoesNotAnswerMoveUp) {
    connect({"a/0", "b/0", "c/0", "d/0"});
    script("a/0").value = {section("of a")};
    script("b/0").answers = 0;
    script("c/0").value = {section("of c"), section("too")};
    script("d/0").value = {section("of d")};
    get();
    EXPECT_THAT(mSections,
                ElementsAre(section("a/0"), section("of a"), section("b/0"), section("of c"),
                            section("too"), section("c/0"), section("of d"), section("d/0")));
}

TEST_F(VendorTagsTest, ALastProviderThatDoesNotAnswerHasItsMarkerAlone) {
    connect({"a/0", "b/0"});
    script("a/0").value = {section("of a")};
    script("b/0").answers = 0;
    get();
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("of a"), section("b/0")));
}

TEST_F(VendorTagsTest, ProvidersThatDoNotAnswerLeaveTheLastPlacesEmpty) {
    connect({"a/0", "b/0", "c/0", "d/0"});
    script("a/0").answers = 0;
    script("b/0").value = {section("of b")};
    script("c/0").answers = 0;
    script("d/0").value = {section("of d")};
    get();
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("of b"), section("b/0"),
                                       section("of d"), section("c/0"), section("d/0")));
}

TEST_F(VendorTagsTest, AProviderThatIsNotConnectedIsNotAskedAndTheOthersKeepTheirMarkers) {
    recordFault("underlying `getVendorTags`", "the provider is not connected",
                "it is not asked; its marker stands alone");
    connect({"a/0", "b/0", "c/0"});
    script("a/0").value = {section("of a")};
    script("c/0").value = {section("of c")};
    descriptor("b/0")->mProvider = nullptr;
    get();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_EQ(script("b/0").calls, 0);
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("of a"), section("b/0"),
                                       section("c/0"), section("of c")));
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(VendorTagsTest, SeveralUnconnectedProvidersInARowLeaveTheirMarkersAlone) {
    connect({"a/0", "b/0", "c/0", "d/0", "e/0", "f/0", "g/0"});
    for (const char* name : {"a/0", "b/0", "c/0", "e/0", "f/0"}) {
        descriptor(name)->mProvider = nullptr;
    }
    script("d/0").value = {section("of d"), section("too")};
    script("g/0").value = {section("of g")};
    get();
    EXPECT_THAT(mSections,
                ElementsAre(section("a/0"), section("b/0"), section("c/0"), section("d/0"),
                            section("of d"), section("too"), section("e/0"), section("f/0"),
                            section("g/0"), section("of g")));
}

TEST_F(VendorTagsTest, SectionsMoveUpPastUnconnectedProviders) {
    connect({"a/0", "b/0", "c/0", "d/0", "e/0"});
    script("a/0").answers = 0;
    descriptor("b/0")->mProvider = nullptr;
    descriptor("c/0")->mProvider = nullptr;
    script("d/0").value = {section("of d")};
    script("e/0").value = {section("of e")};
    get();
    EXPECT_THAT(mSections,
                ElementsAre(section("a/0"), section("of d"), section("b/0"), section("c/0"),
                            section("d/0"), section("of e"), section("e/0")));
}

TEST_F(VendorTagsTest, AnUnconnectedProviderInFrontOfOneThatDoesNotAnswerGetsNoSections) {
    connect({"a/0", "b/0", "c/0", "d/0"});
    descriptor("a/0")->mProvider = nullptr;
    script("b/0").answers = 0;
    script("c/0").value = {section("of c")};
    descriptor("d/0")->mProvider = nullptr;
    get();
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("b/0"), section("of c"),
                                       section("c/0"), section("d/0")));
}

TEST_F(VendorTagsTest, NoConnectedProviderLeavesTheMarkersAlone) {
    makeObject("legacy/0", {"a/0", "b/0"});
    get();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("b/0")));
}

TEST_F(VendorTagsTest, AProviderThatDiesDuringAnEarlierAnswerIsNotAsked) {
    connect({"a/0", "b/0", "c/0"});
    script("c/0").value = {section("of c")};
    mServices["a/0"]->onCall = [this](const std::string&) {
        descriptor("b/0")->mProvider = nullptr;
    };
    get();
    EXPECT_EQ(script("b/0").calls, 0);
    EXPECT_THAT(mSections,
                ElementsAre(section("a/0"), section("b/0"), section("c/0"), section("of c")));
}

TEST_F(VendorTagsTest, AProviderThatDiesDuringItsOwnAnswerIsHeard) {
    recordFault("underlying `getVendorTags`", "the provider dies during its answer",
                "it is held until then, and its sections are kept");
    connect({"a/0", "b/0"});
    script("a/0").value = {section("of a")};
    mServices["a/0"]->onCall = [this](const std::string&) {
        descriptor("a/0")->mProvider = nullptr;
    };
    get();
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("of a"), section("b/0")));
}

TEST_F(VendorTagsTest, AnswersBeyondTheNumberOfProvidersAreDroppedWithAnError) {
    connect({"a/0", "b/0"});
    script("a/0").value = {section("of a")};
    script("b/0").value = {section("of b")};
    script("b/0").answers = 3;
    get();
    EXPECT_EQ(mStatus, Status::OK);
    EXPECT_THAT(mSections,
                ElementsAre(section("a/0"), section("of a"), section("b/0"), section("of b")));
    const LogLine dropped = errorLine("Dropping vendor tags: more answers than providers");
    EXPECT_THAT(mLog.lines(), ElementsAre(dropped, dropped));
}

TEST_F(VendorTagsTest, ASecondAnswerOfTheOnlyConnectedProviderIsDropped) {
    const LogLine dropped = errorLine("Dropping vendor tags: more answers than providers");
    connect({"a/0", "b/0"});
    script("a/0").value = {section("of a")};
    script("a/0").answers = 2;
    descriptor("b/0")->mProvider = nullptr;
    get();
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("of a"), section("b/0")));
    EXPECT_THAT(mLog.take(), ElementsAre(dropped));

    descriptor("b/0")->mProvider = mServices["b/0"];
    descriptor("a/0")->mProvider = nullptr;
    script("b/0").value = {section("of b")};
    script("b/0").answers = 2;
    get();
    EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("b/0"), section("of b")));
    EXPECT_THAT(mLog.take(), ElementsAre(dropped));
}

// A provider that answers, and then answers again that it failed.
class SecondThoughts : public ScriptedProvider {
  public:
    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override {
        _hidl_cb(Status::OK, {section("first")});
        _hidl_cb(Status::CAMERA_DISCONNECTED, {section("second")});
        return android::hardware::Void();
    }
};

TEST_F(VendorTagsTest, TheStatusOfADroppedAnswerCountsWhetherOrNotAllProvidersAreConnected) {
    recordFault("underlying `getVendorTags`", "answers twice",
                "an error line; the surplus sections are dropped, their status counts");
    connect({"a/0", "b/0"});
    mServices["b/0"] = new SecondThoughts;
    descriptor("b/0")->mProvider = mServices["b/0"];
    for (const bool otherIsConnected : {true, false}) {
        SCOPED_TRACE(otherIsConnected);
        if (!otherIsConnected) descriptor("a/0")->mProvider = nullptr;
        get();
        EXPECT_EQ(mStatus, Status::CAMERA_DISCONNECTED);
        EXPECT_THAT(mSections, ElementsAre(section("a/0"), section("b/0"), section("first")));
        EXPECT_THAT(mLog.take(),
                    ElementsAre(mFailure, errorLine("Dropping vendor tags: more answers than "
                                                    "providers")));
    }
}

TEST_F(VendorTagsTest, AnEarlySecondAnswerTakesTheNextProvidersPlace) {
    connect({"a/0", "b/0"});
    script("a/0").value = {section("of a")};
    script("a/0").answers = 2;
    script("b/0").value = {section("of b")};
    get();
    EXPECT_THAT(mSections,
                ElementsAre(section("a/0"), section("of a"), section("b/0"), section("of a")));
}

TEST_F(VendorTagsTest, ASecondAnswerTakesThePlaceOfAProviderThatDoesNotAnswer) {
    connect({"a/0", "b/0"});
    script("a/0").value = {section("of a")};
    script("a/0").answers = 2;
    script("b/0").answers = 0;
    get();
    EXPECT_THAT(mSections,
                ElementsAre(section("a/0"), section("of a"), section("b/0"), section("of a")));
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

using VendorTagsDeathTest = VendorTagsTest;

TEST_F(VendorTagsDeathTest, ATransportFailureIsLeftToThePlatformWhichEndsTheProcess) {
    recordFault("underlying `getVendorTags`", "fails in transport",
                "the platform ends the process, which starts afresh");
    connect({"a/0"});
    script("a/0").answers = 0;
    script("a/0").transportFails = true;
    EXPECT_EXIT(get(), ::testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace orvo::test
