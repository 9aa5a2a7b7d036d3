// SPDX-License-Identifier: Apache-2.0
// Tests that the two sides of every measured operation do the same: a floor that did less would
// make the library look worse than it is, and one that did more, better.

#include <ostream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "benchmarks/fakes/Journal.h"
#include "benchmarks/operations/Operation.h"

namespace orvo::benchmarks {

void PrintTo(const Operation& operation, std::ostream* stream) {
    *stream << operation.title();
}

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;

// Larger ones do no more of anything.
constexpr size_t kLargestSize = 10'000;

std::vector<Operation> testedOperations() {
    std::vector<Operation> tested;
    for (const Operation& operation : allOperations()) {
        if (operation.size <= kLargestSize) tested.push_back(operation);
    }
    return tested;
}

// Everything that one call did; addresses are left out.
std::vector<std::string> eventsOf(Side& side) {
    static const std::regex kAddress("0x[0-9a-f]+");
    Journal::begin();
    side.call();
    std::vector<std::string> events = Journal::end();
    for (std::string& event : events) event = std::regex_replace(event, kAddress, "ADDRESS");
    side.restore();
    return events;
}

class OperationsTest : public ::testing::TestWithParam<Operation> {
  protected:
    OperationsTest() { dropLogLines(); }
};

TEST_P(OperationsTest, BothSidesDoTheSameInTheSameOrder) {
    const std::vector<std::string> ofProduct = eventsOf(*GetParam().product());
    EXPECT_FALSE(ofProduct.empty());
    EXPECT_EQ(ofProduct, eventsOf(*GetParam().floor()));
}

TEST_P(OperationsTest, EveryCallOfASideDoesTheSame) {
    for (const SideMaker& make : {GetParam().product, GetParam().floor}) {
        const std::unique_ptr<Side> side = make();
        const std::vector<std::string> first = eventsOf(*side);
        EXPECT_EQ(first, eventsOf(*side));
        EXPECT_EQ(first, eventsOf(*side));
    }
}

INSTANTIATE_TEST_SUITE_P(All, OperationsTest, ::testing::ValuesIn(testedOperations()),
                         [](const auto& info) {
                             return std::regex_replace(info.param.title(),
                                                       std::regex("[^A-Za-z0-9]"), "_");
                         });

TEST(OperationListTest, HoldsEveryOperationAndAmountOnce) {
    std::set<std::string> titles;
    for (const Operation& operation : allOperations()) {
        EXPECT_TRUE(titles.insert(operation.title()).second) << operation.title();
    }
    EXPECT_THAT(titles, IsSupersetOf({"getCameraDeviceInterface_V3_x/1",
                                      "getCameraDeviceInterface_V3_x/1000",
                                      "getCameraDeviceInterface_V1_x/1",
                                      "getCameraDeviceInterface_V1_x/1000",
                                      "getCameraIdList/1",
                                      "getCameraIdList/8",
                                      "getCameraIdList/64",
                                      "getVendorTags/8",
                                      "cameraDeviceStatusChange PRESENT/1",
                                      "cameraDeviceStatusChange PRESENT/64",
                                      "cameraDeviceStatusChange PRESENT/1000",
                                      "cameraDeviceStatusChange NOT_PRESENT/1",
                                      "cameraDeviceStatusChange NOT_PRESENT/64",
                                      "cameraDeviceStatusChange NOT_PRESENT/1000",
                                      "torchModeStatusChange/1",
                                      "death of a provider/1000",
                                      "loading a map file/10",
                                      "loading a map file/10000",
                                      "loading a map file/300000",
                                      "entry point/8"}));
}

// The amounts of work are what the titles say.
TEST(OperationWorkTest, IsAsMuchAsTheTitleSays) {
    dropLogLines();
    for (const Operation& operation : testedOperations()) {
        const std::vector<std::string> events = eventsOf(*operation.product());
        if (operation.title() == "getCameraIdList/8") {
            EXPECT_THAT(events, Contains(HasSubstr("device@3.2/vendor17/15")));
        } else if (operation.title() == "getVendorTags/8") {
            EXPECT_THAT(events, Contains(HasSubstr("com.vendor17.section31")));
        } else if (operation.title() == "death of a provider/1000") {
            EXPECT_THAT(events, Contains(HasSubstr("Notified framework about 1000/1000 devices")));
        } else if (operation.title() == "cameraDeviceStatusChange PRESENT/1000") {
            // The report, its translation, the property, the dump and the framework's call.
            EXPECT_EQ(events.size(), 1000u + 4u);
        } else if (operation.title() == "loading a map file/10000") {
            EXPECT_EQ(events.size(), 10'000u);
        } else if (operation.title() == "entry point/8") {
            EXPECT_THAT(events, Contains(HasSubstr("vendor17/0 linkToDeath")));
        }
    }
}

}  // namespace
}  // namespace orvo::benchmarks
