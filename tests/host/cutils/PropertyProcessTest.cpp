// SPDX-License-Identifier: Apache-2.0
// The property store between processes: shared, whole, and proof against killed writers.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include <cutils/properties.h>
#include <gtest/gtest.h>

#include "tests/host/device/ChildProcess.h"
#include "tests/host/device/TemporaryDevice.h"

namespace {

using orvo::testing::ChildProcess;

std::string get(const std::string& name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name.c_str(), value, "");
    return value;
}

bool isWhole(const std::string& value) {
    return value.empty() || value == std::string(91, value[0]);
}

class PropertyProcessTest : public ::testing::Test {
  protected:
    static std::unique_ptr<ChildProcess> start(const std::vector<std::string>& arguments) {
        return std::make_unique<ChildProcess>(PROPERTY_PROGRAM, arguments);
    }

    const orvo::testing::TemporaryDevice mDevice;
};

TEST_F(PropertyProcessTest, WhatOneProcessSetsAnotherReadsAtOnce) {
    ASSERT_EQ(0, property_set("camera.legacy.ids", "0,1"));
    auto reader = start({"get", "camera.legacy.ids"});
    EXPECT_EQ("0,1", reader->readLine());
    EXPECT_EQ(0, reader->wait());

    EXPECT_EQ(0, start({"set", "camera.legacy.ids", "2"})->wait());
    EXPECT_EQ("2", get("camera.legacy.ids"));
}

TEST_F(PropertyProcessTest, PropertiesOutliveEveryProcess) {
    EXPECT_EQ(0, start({"set", "persist.a", "kept"})->wait());
    EXPECT_EQ(0, start({"set", "b", "kept too"})->wait());
    auto reader = start({"get", "persist.a"});
    EXPECT_EQ("kept", reader->readLine());
    EXPECT_EQ("kept too", get("b"));
}

TEST_F(PropertyProcessTest, AReadOnlyPropertyIsSetOnceByAllProcessesTogether) {
    std::vector<std::unique_ptr<ChildProcess>> writers;
    for (const char* value : {"one", "two", "three", "four"}) {
        writers.push_back(start({"set", "ro.board", value}));
    }
    int succeeded = 0;
    for (auto& writer : writers) succeeded += writer->wait() == 0 ? 1 : 0;
    EXPECT_EQ(1, succeeded);
}

TEST_F(PropertyProcessTest, NoWriteIsLostAmongConcurrentWriters) {
    constexpr int kPropertiesEach = 200;
    std::vector<std::unique_ptr<ChildProcess>> writers;
    for (const char* prefix : {"a", "b", "c", "d"}) {
        writers.push_back(start({"fill", prefix, std::to_string(kPropertiesEach)}));
    }
    for (auto& writer : writers) EXPECT_EQ(0, writer->wait());
    for (const std::string prefix : {"a", "b", "c", "d"}) {
        for (int i = 0; i < kPropertiesEach; ++i) {
            EXPECT_EQ(std::to_string(i), get(prefix + "." + std::to_string(i)));
        }
    }
}

TEST_F(PropertyProcessTest, AReaderNeverSeesATornValue) {
    std::vector<std::unique_ptr<ChildProcess>> writers;
    for (int i = 0; i < 4; ++i) writers.push_back(start({"rewrite", "shared", "2000"}));
    for (int i = 0; i < 20000; ++i) {
        const std::string value = get("shared");
        ASSERT_TRUE(isWhole(value)) << value;
    }
    for (auto& writer : writers) EXPECT_EQ(0, writer->wait());
    EXPECT_TRUE(isWhole(get("shared")));
}

TEST_F(PropertyProcessTest, AKilledWriterLeavesAUsableStore) {
    for (int round = 0; round < 50; ++round) {
        auto first = start({"rewrite-until-killed", "shared"});
        auto second = start({"rewrite-until-killed", "shared"});
        ASSERT_EQ("started", first->readLine());
        ASSERT_EQ("started", second->readLine());
        first->kill();
        const std::string mark = std::to_string(round);
        ASSERT_EQ(0, property_set("mark", mark.c_str()));
        ASSERT_EQ(mark, get("mark"));
        second->kill();
        ASSERT_EQ(0, property_set("mark", "after both"));
        ASSERT_EQ("after both", get("mark"));
        ASSERT_TRUE(isWhole(get("shared")));
    }
}

TEST_F(PropertyProcessTest, WhatAWriterCommittedBeforeItWasKilledIsReadAtOnce) {
    ASSERT_EQ(0, property_set("camera.legacy.ids", "0"));
    EXPECT_EQ(128 + SIGKILL, start({"set-and-die", "camera.legacy.ids", "0, 1"})->wait());
    EXPECT_EQ("0, 1", get("camera.legacy.ids"));
    auto reader = start({"get", "camera.legacy.ids"});
    EXPECT_EQ("0, 1", reader->readLine());
}

TEST_F(PropertyProcessTest, AForkedChildUsesTheStoreToo) {
    ASSERT_EQ(0, property_set("a", "parent's"));
    const pid_t child = fork();
    if (child == 0) {
        const bool read = get("a") == "parent's";
        const bool written = property_set("b", "child's") == 0;
        _exit(read && written ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
    EXPECT_EQ("child's", get("b"));
    EXPECT_EQ(0, property_set("a", "parent's again"));
    EXPECT_EQ("parent's again", get("a"));
}

TEST_F(PropertyProcessTest, AnEndedForkedChildLeavesTheParentsHoldOnTheStore) {
    ASSERT_EQ(0, property_set("a", "1"));
    for (int i = 0; i < 20; ++i) {
        const pid_t child = fork();
        if (child == 0) _exit(property_set("b", "child's") == 0 ? 0 : 1);
        int status = -1;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        ASSERT_EQ(0, status);
        // Another program opens the store: it must find that it is in use and join it.
        ASSERT_EQ(0, start({"set", "c", std::to_string(i)})->wait());
        ASSERT_EQ(std::to_string(i), get("c"));
        ASSERT_EQ(0, property_set("a", std::to_string(i).c_str()));
    }
}

}  // namespace
