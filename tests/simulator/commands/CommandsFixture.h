// SPDX-License-Identifier: Apache-2.0
// CommandsFixture: runs camerasim with a TMPDIR of the test's own, where fake devices are.

#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/commands/FakeDevice.h"
#include "tests/simulator/support/FreshDirectory.h"
#include "tests/simulator/support/ProgramRun.h"

namespace orvo::simulator::testing {

class CommandsFixture : public ::testing::Test {
  protected:
    using Json = nlohmann::json;
    using Words = std::vector<std::string>;

    std::map<std::string, std::string> environment() const {
        return {{"TMPDIR", mTemporary.path()}};
    }

    static Words commandLine(Words words) {
        words.insert(words.begin(), programPath("camerasim"));
        return words;
    }

    ProgramEnd camerasim(Words words) const {
        return runProgram(commandLine(std::move(words)), environment());
    }

    /** It did what it was asked, and printed exactly this. */
    void expectPrints(Words words, const std::string& out) const {
        const ProgramEnd end = camerasim(std::move(words));
        EXPECT_EQ(0, end.status) << end.err;
        EXPECT_EQ(out, end.out);
        EXPECT_EQ("", end.err);
    }

    /** It printed one document, equal to this. */
    void expectDocument(Words words, const Json& document) const {
        const ProgramEnd end = camerasim(std::move(words));
        EXPECT_EQ(0, end.status) << end.err;
        EXPECT_EQ(document, Json::parse(end.out, nullptr, false)) << end.out;
        EXPECT_EQ("", end.err);
    }

    /** It ended with the status, and said why in this one line. */
    void expectComplaint(Words words, int status, const std::string& line) const {
        const ProgramEnd end = camerasim(std::move(words));
        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(status, end.status) << end.out;
        EXPECT_EQ("camerasim: " + line + "\n", end.err);
    }

    FreshDirectory mTemporary;
};

}  // namespace orvo::simulator::testing
