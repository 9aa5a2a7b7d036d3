// SPDX-License-Identifier: Apache-2.0
// hidl_vec: ownership of its elements, and what it shows.

#include <algorithm>
#include <iterator>
#include <memory>
#include <numeric>
#include <sstream>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>

namespace {

using android::hardware::hidl_string;
using android::hardware::hidl_vec;

TEST(HidlVecTest, AnEmptyVectorHasNoBuffer) {
    const hidl_vec<int> empty;
    EXPECT_EQ(nullptr, empty.data());
    EXPECT_EQ(0u, empty.size());
    const hidl_vec<int> copy(empty);
    EXPECT_EQ(nullptr, copy.data());
}

TEST(HidlVecTest, ElementsOfASizedVectorAreValueInitialised) {
    const hidl_vec<int> three(size_t{3});
    EXPECT_EQ((hidl_vec<int>{0, 0, 0}), three);
}

TEST(HidlVecTest, AListBecomesTheElements) {
    const hidl_vec<hidl_string> words = {"a", "b"};
    ASSERT_EQ(2u, words.size());
    EXPECT_EQ("a", words[0]);
    EXPECT_EQ("b", words[1]);
    hidl_vec<int> assigned;
    assigned = {4, 5};
    EXPECT_EQ((hidl_vec<int>{4, 5}), assigned);
}

TEST(HidlVecTest, StdVectorsGoInAndOut) {
    const std::vector<int> original = {1, 2, 3};
    const hidl_vec<int> vec = original;
    EXPECT_EQ(original, std::vector<int>(vec));
    hidl_vec<int> assigned;
    assigned = original;
    EXPECT_EQ(vec, assigned);
}

TEST(HidlVecTest, IteratorsGiveTheElements) {
    const std::vector<int> original = {1, 2, 3};
    EXPECT_EQ((hidl_vec<int>{2, 3}), hidl_vec<int>(original.begin() + 1, original.end()));
    // These can be walked only once.
    std::istringstream stream("7 8 9");
    EXPECT_EQ((hidl_vec<int>{7, 8, 9}),
              hidl_vec<int>(std::istream_iterator<int>(stream), std::istream_iterator<int>()));
}

TEST(HidlVecTest, CopiesAreDeep) {
    const hidl_vec<int> original = {1, 2};
    hidl_vec<int> copy(original);
    hidl_vec<int> assigned;
    assigned = original;
    copy[0] = 5;
    assigned[0] = 6;
    EXPECT_EQ((hidl_vec<int>{1, 2}), original);
    EXPECT_EQ((hidl_vec<int>{5, 2}), copy);
    EXPECT_EQ((hidl_vec<int>{6, 2}), assigned);
}

TEST(HidlVecTest, AssigningAVectorToItselfKeepsTheElements) {
    hidl_vec<int> vec = {1, 2};
    const hidl_vec<int>& alias = vec;
    vec = alias;
    EXPECT_EQ((hidl_vec<int>{1, 2}), vec);
}

TEST(HidlVecTest, AVectorMovedFromStillShowsTheElementsOfTheTarget) {
    hidl_vec<int> source = {1, 2, 3};
    const int* buffer = source.data();
    hidl_vec<int> target(std::move(source));
    EXPECT_EQ(buffer, target.data());
    EXPECT_EQ(buffer, source.data());
    EXPECT_EQ(3u, source.size());
    target[0] = 9;
    EXPECT_EQ(9, source[0]);

    hidl_vec<int> assigned = {4};
    assigned = std::move(target);
    EXPECT_EQ(buffer, assigned.data());
    EXPECT_EQ(buffer, target.data());
}

TEST(HidlVecTest, ElementsAreReleasedOnceHoweverOftenTheVectorMoves) {
    auto shared = std::make_shared<int>(1);
    {
        hidl_vec<std::shared_ptr<int>> first = {shared};
        hidl_vec<std::shared_ptr<int>> second(std::move(first));
        hidl_vec<std::shared_ptr<int>> third;
        third = std::move(second);
        EXPECT_EQ(2, shared.use_count());
    }
    EXPECT_EQ(1, shared.use_count());
}

TEST(HidlVecTest, ResizingKeepsTheCommonPrefixInANewArray) {
    hidl_vec<int> vec = {1, 2, 3};
    const int* old = vec.data();
    vec.resize(5);
    EXPECT_NE(old, vec.data());
    EXPECT_EQ((hidl_vec<int>{1, 2, 3, 0, 0}), vec);
    vec.resize(2);
    EXPECT_EQ((hidl_vec<int>{1, 2}), vec);
}

TEST(HidlVecTest, ResizingToNothingLeavesABuffer) {
    hidl_vec<int> vec;
    vec.resize(0);
    EXPECT_NE(nullptr, vec.data());
    EXPECT_EQ(0u, vec.size());
}

TEST(HidlVecTest, ResizingExternalElementsLeavesThemAsTheyAre) {
    hidl_string external[] = {"a", "b"};
    hidl_vec<hidl_string> vec;
    vec.setToExternal(external, 2);
    vec.resize(3);
    EXPECT_EQ((hidl_vec<hidl_string>{"a", "b", ""}), vec);
    EXPECT_EQ("a", external[0]);
}

TEST(HidlVecTest, ExternalElementsAreShownAndNotCopied) {
    int external[] = {1, 2};
    hidl_vec<int> vec = {7};
    vec.setToExternal(external, 2);
    EXPECT_EQ(external, vec.data());
    EXPECT_EQ(2u, vec.size());
}

TEST(HidlVecTest, ExternalElementsMayBeHandedOver) {
    auto shared = std::make_shared<int>(1);
    {
        auto* elements = new std::shared_ptr<int>[1] { shared };
        hidl_vec<std::shared_ptr<int>> vec;
        vec.setToExternal(elements, 1, true);
        EXPECT_EQ(2, shared.use_count());
    }
    EXPECT_EQ(1, shared.use_count());
}

TEST(HidlVecTest, ReleasedElementsBelongToTheCallerAndStayInView) {
    hidl_vec<int> vec = {1, 2};
    const int* buffer = vec.data();
    const std::unique_ptr<int[]> released(vec.releaseData());
    EXPECT_EQ(buffer, released.get());
    EXPECT_EQ(buffer, vec.data());
    EXPECT_EQ(2u, vec.size());
}

TEST(HidlVecTest, ReleasingExternalElementsGivesACopy) {
    int external[] = {1, 2};
    hidl_vec<int> vec;
    vec.setToExternal(external, 2);
    const std::unique_ptr<int[]> released(vec.releaseData());
    EXPECT_NE(external, released.get());
    EXPECT_EQ(released.get(), vec.data());
    EXPECT_EQ((hidl_vec<int>{1, 2}), vec);
}

TEST(HidlVecTest, VectorsAreEqualIfTheirElementsAre) {
    EXPECT_TRUE((hidl_vec<int>{1, 2} == hidl_vec<int>{1, 2}));
    EXPECT_TRUE((hidl_vec<int>{1, 2} != hidl_vec<int>{1, 3}));
    EXPECT_TRUE((hidl_vec<int>{1, 2} != hidl_vec<int>{1, 2, 3}));
    EXPECT_TRUE(hidl_vec<int>() == hidl_vec<int>(size_t{0}));
}

TEST(HidlVecTest, AlgorithmsOfRandomAccessWork) {
    hidl_vec<int> vec = {3, 1, 2};
    std::sort(vec.begin(), vec.end());
    EXPECT_EQ((hidl_vec<int>{1, 2, 3}), vec);
    const hidl_vec<int>& view = vec;
    EXPECT_EQ(6, std::accumulate(view.begin(), view.end(), 0));
    EXPECT_EQ(3, view.end() - view.begin());
    EXPECT_EQ(2, *(1 + view.begin()));
    EXPECT_EQ(3, view.begin()[2]);
    hidl_vec<int>::const_iterator position = vec.begin();
    EXPECT_EQ(1, *position++);
    EXPECT_EQ(3, *++position);
    EXPECT_EQ(3, *position--);
    EXPECT_EQ(1, *--position);
    EXPECT_TRUE(view.begin() < view.end() && view.begin() <= view.begin());
    EXPECT_TRUE(view.end() > view.begin() && view.end() >= view.end());
}

TEST(HidlVecDeathTest, MoreThanFourThousandMillionElementsAreTooMany) {
    char element = 0;
    hidl_vec<char> vec;
    EXPECT_DEATH(vec.setToExternal(&element, size_t{UINT32_MAX} + 1), "limited to");
    EXPECT_DEATH(vec.resize(size_t{UINT32_MAX} + 1), "limited to");
}

}  // namespace
