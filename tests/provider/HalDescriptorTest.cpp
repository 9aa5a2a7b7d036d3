// SPDX-License-Identifier: Apache-2.0
// The descriptors of the underlying providers: building the set and looking into it.

#include <algorithm>

#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using android::sp;
using android::wp;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HalDescriptorTest : public ProviderTest {
  protected:
    static std::vector<std::string> namesOf(const std::set<Descriptor>& descriptors) {
        std::vector<std::string> names;
        for (const Descriptor& descriptor : descriptors) names.push_back(descriptor.mName);
        return names;
    }

    static std::set<Descriptor> makeSet(const std::vector<std::string>& names) {
        return Descriptor::fromProviderNames(names);
    }
};

TEST_F(HalDescriptorTest, AFreshOneIsEmpty) {
    const Descriptor descriptor;
    EXPECT_EQ(descriptor.mName, "");
    EXPECT_EQ(descriptor.mType, "");
    EXPECT_EQ(descriptor.mProvider, nullptr);
    EXPECT_EQ(descriptor.mShim.promote(), nullptr);
}

TEST_F(HalDescriptorTest, ACopyTakesReferencesOfItsOwn) {
    sp<ScriptedProvider> provider = new ScriptedProvider;
    sp<ScriptedProvider> shim = new ScriptedProvider;
    Descriptor copy;
    {
        Descriptor descriptor;
        descriptor.mName = "external/0";
        descriptor.mType = "external";
        descriptor.mProvider = provider;
        descriptor.mShim = shim;
        copy = descriptor;
    }
    EXPECT_EQ(copy.mName, "external/0");
    EXPECT_EQ(copy.mType, "external");
    EXPECT_EQ(copy.mShim.promote(), shim);
    const wp<ScriptedProvider> weakProvider = provider;
    provider.clear();
    EXPECT_NE(weakProvider.promote(), nullptr) << "held strongly by the copy";
    shim.clear();
    EXPECT_EQ(copy.mShim.promote(), nullptr) << "held weakly by the copy";
}

TEST_F(HalDescriptorTest, TheOrderIsThatOfTheNamesAlone) {
    Descriptor left;
    Descriptor right;
    left.mName = "a";
    right.mName = "a/";
    EXPECT_TRUE(left < right) << "a prefix comes first";
    EXPECT_FALSE(right < left);
    right.mName = "\xff";
    EXPECT_TRUE(left < right) << "bytes are compared as unsigned";
    right.mName = "a";
    right.mType = "z";
    right.mProvider = new ScriptedProvider;
    EXPECT_FALSE(left < right);
    EXPECT_FALSE(right < left);
}

TEST_F(HalDescriptorTest, TheMembersAreDeclaredInTheirOrder) {
    const Descriptor descriptor;
    const std::vector<const void*> addresses = {&descriptor.mName, &descriptor.mType,
                                                &descriptor.mProvider, &descriptor.mShim};
    EXPECT_TRUE(std::is_sorted(addresses.begin(), addresses.end()));
}

TEST_F(HalDescriptorTest, TheSetHoldsEachNameOnceInOrder) {
    EXPECT_THAT(namesOf(makeSet({"legacy/0", "external/0", "legacy/0"})),
                ElementsAre("external/0", "legacy/0"));
    EXPECT_THAT(namesOf(makeSet({"b/10", "b/1", "a/2", "B/0"})),
                ElementsAre("B/0", "a/2", "b/1", "b/10"));
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(HalDescriptorTest, TheTypeIsTheTextBeforeTheFirstSlash) {
    const std::set<Descriptor> descriptors = makeSet({"legacy/0/x", "/0", "external/", "/"});
    EXPECT_EQ(Descriptor::findByName(descriptors, "legacy/0/x")->mType, "legacy");
    EXPECT_EQ(Descriptor::findByName(descriptors, "/0")->mType, "");
    EXPECT_EQ(Descriptor::findByName(descriptors, "external/")->mType, "external");
    EXPECT_EQ(Descriptor::findByName(descriptors, "/")->mType, "");
}

TEST_F(HalDescriptorTest, NewDescriptorsAreUnconnected) {
    for (const Descriptor& descriptor : makeSet({"legacy/0", "external/0"})) {
        EXPECT_EQ(descriptor.mProvider, nullptr);
        EXPECT_EQ(descriptor.mShim.promote(), nullptr);
    }
}

TEST_F(HalDescriptorTest, NoNamesMakeAnEmptySetSilently) {
    EXPECT_THAT(makeSet({}), IsEmpty());
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(HalDescriptorTest, AFoundOneIsTheElementItself) {
    const std::set<Descriptor> descriptors = makeSet({"legacy/0", "external/0"});
    EXPECT_EQ(Descriptor::findByName(descriptors, "external/0"), &*descriptors.begin());
    EXPECT_EQ(Descriptor::findByName(descriptors, "legacy/0"), &*descriptors.rbegin());
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(HalDescriptorTest, AnUnknownNameIsLoggedAndNotFound) {
    const std::set<Descriptor> descriptors = makeSet({"legacy/0", "external/0"});
    for (const std::string name : {"virtual/0", "legacy", "legacy/00", "", "Legacy/0"}) {
        EXPECT_EQ(Descriptor::findByName(descriptors, name), nullptr);
        EXPECT_THAT(mLog.take(),
                    ElementsAre(errorLine("FATAL(479): Invalid provider name " + name)));
    }
    EXPECT_EQ(Descriptor::findByName({}, "legacy/0"), nullptr);
}

TEST_F(HalDescriptorTest, ADeviceIsServedByNumberZeroOfItsType) {
    const std::set<Descriptor> descriptors = makeSet({"legacy/0", "external/0", "external/1"});
    EXPECT_EQ(Descriptor::findProviderForAndroidDevice(descriptors, "device@3.2/external/5")->mName,
              "external/0");
    EXPECT_EQ(Descriptor::findProviderForAndroidDevice(descriptors, "device@1.0/legacy")->mName,
              "legacy/0");
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(HalDescriptorTest, AProviderOfAnotherNumberServesNoDevice) {
    const std::set<Descriptor> descriptors = makeSet({"external/1"});
    EXPECT_EQ(Descriptor::findProviderForAndroidDevice(descriptors, "device@3.2/external/1"),
              nullptr);
    EXPECT_THAT(mLog.take(),
                ElementsAre(errorLine("FATAL(479): Invalid provider name external/0")));
}

TEST_F(HalDescriptorTest, ADeviceWithoutATypeIsServedByTheProviderWithoutOne) {
    EXPECT_EQ(Descriptor::findProviderForAndroidDevice(makeSet({"external/0"}), "@/"), nullptr);
    EXPECT_THAT(mLog.take(), ElementsAre(errorLine("FATAL(479): Invalid provider name /0")));
    const std::set<Descriptor> descriptors = makeSet({"/0"});
    EXPECT_EQ(Descriptor::findProviderForAndroidDevice(descriptors, "@/"), &*descriptors.begin());
}

using HalDescriptorDeathTest = HalDescriptorTest;

TEST_F(HalDescriptorDeathTest, ANameWithoutASlashEndsTheProcessWhereverItStands) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                makeSet({"legacy/0", "external/0", "external"});
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(
                    shutdownText({errorLine("FATAL: Invalid provider name external")})));
}

TEST_F(HalDescriptorDeathTest, OfTwoNamesWithoutASlashTheFirstOneOfTheListIsReported) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                makeSet({"legacy/0", "virtual", "external"});
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(shutdownText({errorLine("FATAL: Invalid provider name virtual")})));
}

TEST_F(HalDescriptorDeathTest, AnEmptyNameEndsTheProcess) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                makeSet({""});
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(shutdownText({errorLine("FATAL: Invalid provider name ")})));
}

TEST_F(HalDescriptorDeathTest, ADeviceNameThatDoesNotParseEndsTheProcess) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                Descriptor::findProviderForAndroidDevice(makeSet({"legacy/0"}), "legacy/0");
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(
                    shutdownText({errorLine("FATAL(462): Invalid device name legacy/0")})));
}

}  // namespace
}  // namespace orvo::test
