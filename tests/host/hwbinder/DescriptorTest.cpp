// SPDX-License-Identifier: Apache-2.0
// File descriptors arrive duplicated and usable, and go with the message that brought them.

#include <fcntl.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/hwbinder/PeerProcess.h"
#include "tests/host/hwbinder/RecordingCallback.h"

namespace orvo::test {
namespace {

using namespace vendor::orvo::peer::V1_0;
using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using testing::ElementsAre;

struct DescriptorTest : testing::Test {
    PeerProcess process;
    sp<IPeer> peer = PeerProcess::context();
};

/** A descriptor from which `text` can be read. */
int pipeWith(const std::string& text) {
    int ends[2];
    EXPECT_EQ(0, pipe2(ends, O_CLOEXEC));
    EXPECT_EQ(static_cast<ssize_t>(text.size()), write(ends[1], text.data(), text.size()));
    close(ends[1]);
    return ends[0];
}

hidl_handle handleOf(const std::vector<int>& descriptors) {
    native_handle_t* handle = native_handle_create(descriptors.size(), 1);
    std::copy(descriptors.begin(), descriptors.end(), handle->data);
    handle->data[descriptors.size()] = 42;
    hidl_handle owner;
    owner.setTo(handle, true);
    return owner;
}

TEST_F(DescriptorTest, ThePeerReadsWhatIsBehindEachDescriptor) {
    const hidl_handle files = handleOf({pipeWith("first"), pipeWith("second"), pipeWith("")});
    std::vector<std::string> contents;
    ASSERT_TRUE(peer->readAll(files, [&](const hidl_vec<hidl_string>& all) {
                        contents.assign(all.begin(), all.end());
                    }).isOk());
    EXPECT_THAT(contents, ElementsAre("first", "second", ""));
}

TEST_F(DescriptorTest, TheSenderKeepsItsOwnDescriptors) {
    const int fd = pipeWith("shared");
    const hidl_handle files = handleOf({fd});
    ASSERT_TRUE(peer->readAll(files, [](const auto&) {}).isOk());
    EXPECT_NE(-1, fcntl(fd, F_GETFD));
}

TEST_F(DescriptorTest, DescriptorsComeBackInAReplyAndCloseWithIt) {
    int inside = -1;
    std::string content(5, ' ');
    ASSERT_TRUE(peer->openPipes({"hello", "there"}, [&](const hidl_handle& files) {
                        ASSERT_EQ(2, files->numFds);
                        inside = files->data[0];
                        EXPECT_EQ(5, read(inside, content.data(), 5));
                    }).isOk());
    EXPECT_EQ("hello", content);
    EXPECT_EQ(-1, fcntl(inside, F_GETFD)) << "closed with the reply";
}

TEST_F(DescriptorTest, ACopyOfTheHandleOutlivesTheReply) {
    hidl_handle kept;
    ASSERT_TRUE(peer->openPipes({"kept"}, [&](const hidl_handle& files) { kept = files; }).isOk());
    std::string content(4, ' ');
    EXPECT_EQ(4, read(kept->data[0], content.data(), 4));
    EXPECT_EQ("kept", content);
}

TEST_F(DescriptorTest, ANullHandleArrivesAsNullAlsoInsideAStructure) {
    std::vector<std::string> contents{"untouched"};
    ASSERT_TRUE(peer->readAll(hidl_handle(), [&](const hidl_vec<hidl_string>& all) {
                        contents.assign(all.begin(), all.end());
                    }).isOk());
    EXPECT_THAT(contents, ElementsAre());

    Parcelled parcelled;
    parcelled.label = "label";
    std::string seen;
    ASSERT_TRUE(peer->describe(parcelled, [&](const hidl_string& label, const hidl_string& text) {
                        seen = std::string(label) + ": " + std::string(text);
                    }).isOk());
    EXPECT_EQ("label: no handle", seen);
}

TEST_F(DescriptorTest, AHandleInsideAStructureArrives) {
    Parcelled parcelled;
    parcelled.label = "label";
    parcelled.content = handleOf({pipeWith("inside")});
    std::string seen;
    ASSERT_TRUE(peer->describe(parcelled, [&](const hidl_string& label, const hidl_string& text) {
                        seen = std::string(label) + ": " + std::string(text);
                    }).isOk());
    EXPECT_EQ("label: inside", seen);
}

TEST_F(DescriptorTest, ThePeerIsDebuggedIntoADescriptor) {
    int ends[2];
    ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
    ASSERT_TRUE(peer->debug(handleOf({ends[1]}), {"first", "second"}).isOk());
    std::string content(32, ' ');
    content.resize(std::max<ssize_t>(read(ends[0], content.data(), content.size()), 0));
    EXPECT_EQ("first\nsecond\n", content);
    close(ends[0]);
    EXPECT_TRUE(peer->debug(hidl_handle(), {"for nobody"}).isOk());
}

TEST_F(DescriptorTest, NoDescriptorIsLeftBehindInThePeer) {
    ASSERT_TRUE(peer->readAll(handleOf({pipeWith("warm up")}), [](const auto&) {}).isOk());
    const int32_t before = peer->countDescriptors();
    for (int i = 0; i < 50; i++) {
        const hidl_handle files = handleOf({pipeWith("a"), pipeWith("b"), pipeWith("c")});
        ASSERT_TRUE(peer->readAll(files, [](const auto&) {}).isOk());
        ASSERT_TRUE(peer->openPipes({"x", "y"}, [](const auto&) {}).isOk());
    }
    // What the last message brought may still be on its way out.
    int32_t after = peer->countDescriptors();
    for (int i = 0; i < 1000 && after > before; i++) after = peer->countDescriptors();
    EXPECT_LE(after, before);
}

TEST_F(DescriptorTest, AsManyDescriptorsAsTheKernelPassesCrossAndOneMoreDoesNot) {
    std::vector<int> descriptors;
    for (int i = 0; i < 253; i++) descriptors.push_back(pipeWith(std::to_string(i)));
    std::vector<std::string> contents;
    ASSERT_TRUE(peer->readAll(handleOf(descriptors), [&](const hidl_vec<hidl_string>& all) {
                        contents.assign(all.begin(), all.end());
                    }).isOk());
    ASSERT_EQ(253u, contents.size());
    EXPECT_EQ("0", contents.front());
    EXPECT_EQ("252", contents.back());

    descriptors.clear();
    for (int i = 0; i < 254; i++) descriptors.push_back(dup(STDIN_FILENO));
    EXPECT_FALSE(peer->readAll(handleOf(descriptors), [](const auto&) {}).isOk());
    EXPECT_TRUE(peer->ping().isOk());
}

TEST_F(DescriptorTest, ADescriptorThatIsNotOpenFailsTheCallAndNothingElse) {
    native_handle_t* handle = native_handle_create(1, 0);
    handle->data[0] = 123456;
    const hidl_handle files(handle);
    EXPECT_FALSE(peer->readAll(files, [](const auto&) {}).isOk());
    EXPECT_TRUE(peer->ping().isOk());
    native_handle_delete(handle);
}

}  // namespace
}  // namespace orvo::test
