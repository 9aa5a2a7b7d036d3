// SPDX-License-Identifier: Apache-2.0
// Tests of ProgramLog: what a program's log looks like, and what becomes of a full file or disk.

#include "host/log/ProgramLog.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/device/TemporaryDevice.h"

namespace orvo {
namespace {

using ::testing::EndsWith;
using ::testing::ExitedWithCode;
using ::testing::MatchesRegex;

constexpr size_t kLine = 1000;

void log(const std::string& message) {
    __android_log_write(ANDROID_LOG_INFO, "Tag", message.c_str());
}

std::vector<std::string> linesOf(const std::string& file) {
    std::vector<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::string messageOf(const std::string& line) {
    static const std::regex kHead("\\S+ [VDIWEF] \\d\\d-\\d\\d \\S+ +\\d+ +\\d+ ");
    std::smatch head;
    return std::regex_search(line, head, kHead, std::regex_constants::match_continuous)
                   ? head.suffix().str()
                   : line;
}

/** Logs lines of kLine bytes or a few more that begin with their number. @return the next one. */
int logBytes(size_t bytes, int number) {
    for (size_t written = 0; written < bytes; written += kLine) {
        log(std::to_string(number++) + " " + std::string(kLine - 40, 'x'));
    }
    return number;
}

/** The numbers that the lines of both files begin with are one after the other. @return the last */
int expectNoneMissing(const std::string& file) {
    std::vector<std::string> lines = linesOf(file + ".1");
    for (const std::string& line : linesOf(file)) lines.push_back(line);
    int last = -1;
    for (const std::string& line : lines) {
        const std::string message = messageOf(line);
        if (!isdigit(message[0]) || message.find("bytes") != std::string::npos) continue;
        const int number = std::stoi(message);
        EXPECT_TRUE(last < 0 || number == last + 1) << number << " after " << last;
        last = number;
    }
    return last;
}

class ProgramLogTest : public ::testing::Test {
  protected:
    const testing::TemporaryDevice mDevice;
    const std::string mFile = mDevice.path() / "a.log";
};

TEST_F(ProgramLogTest, ALineHasItsTimeToTheMicrosecond) {
    logToFile(mFile);
    __android_log_write(ANDROID_LOG_WARN, "Some Tag", "it is so");
    const auto lines = linesOf(mFile);
    ASSERT_EQ(1u, lines.size());
    EXPECT_THAT(lines[0], MatchesRegex("Some Tag W [0-9-]{5} [0-9:]{8}[.][0-9]{6} +[0-9]+ +[0-9]+ "
                                       "it is so"));
}

TEST_F(ProgramLogTest, AFullFileMakesWayAndTheSecondTimeSaysWhatIsGone) {
    logToFile(mFile);
    const int first = logBytes(kMostLogBytes + 10 * kLine, 0);
    EXPECT_EQ(0, std::stoi(messageOf(linesOf(mFile + ".1").front())));
    EXPECT_EQ(first - 1, expectNoneMissing(mFile));
    const auto gone = std::filesystem::file_size(mFile + ".1");

    const int second = logBytes(kMostLogBytes, first);
    EXPECT_EQ(second - 1, expectNoneMissing(mFile));
    EXPECT_EQ(std::to_string(gone) + " bytes of older lines are gone; " + mFile +
                      ".1 has the ones before this",
              messageOf(linesOf(mFile).front()));
    for (const std::string& file : {mFile, mFile + ".1"}) {
        EXPECT_LE(std::filesystem::file_size(file), kMostLogBytes + 2 * kLine);
    }
}

TEST_F(ProgramLogTest, ManyThreadsLoseNothing) {
    logToFile(mFile);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; i++) threads.emplace_back([] { logBytes(kMostLogBytes / 3, 0); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(4 * (kMostLogBytes / 3 / kLine + 1),
              linesOf(mFile).size() + linesOf(mFile + ".1").size());
}

TEST_F(ProgramLogTest, LinesThatCannotBeWrittenAreCountedAndToldOf) {
    logToFile(mFile);
    log("before");
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &limit));
    // There is room for half a line.
    const rlimit small{std::filesystem::file_size(mFile) + 20, limit.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
    for (int i = 0; i < 3; i++) log("lost");
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
    log("after");

    const auto lines = linesOf(mFile);
    ASSERT_EQ(4u, lines.size());
    EXPECT_EQ("before", messageOf(lines[0]));
    EXPECT_EQ(20u, lines[1].size());
    EXPECT_EQ("3 lines could not be written (File too large)", messageOf(lines[2]));
    EXPECT_EQ("after", messageOf(lines[3]));
}

TEST_F(ProgramLogTest, ErrorOutputThatIsALogOfTheDeviceMakesWayWithWhatIsPrinted) {
    const std::string file = mDevice.path() / "log/program.log";
    std::filesystem::create_directories(mDevice.path() / "log");
    EXPECT_EXIT(
            {
                const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
                dup2(fd, STDERR_FILENO);
                dup2(fd, STDOUT_FILENO);
                logToStandardError();
                logBytes(kMostLogBytes + kLine, 0);
                dprintf(STDOUT_FILENO, "printed\n");
                dprintf(STDERR_FILENO, "complained\n");
                _exit(0);
            },
            ExitedWithCode(0), "");
    EXPECT_LT(std::filesystem::file_size(file), kMostLogBytes / 10);
    const auto lines = linesOf(file);
    ASSERT_GT(lines.size(), 2u);
    EXPECT_EQ("printed", lines[lines.size() - 2]);
    EXPECT_EQ("complained", lines.back());
    EXPECT_EQ(kMostLogBytes / kLine + 1, static_cast<size_t>(expectNoneMissing(file)));
}

TEST_F(ProgramLogTest, AFileOfAPersonIsLeftAlone) {
    const std::string file = mDevice.path() / "mine.log";
    EXPECT_EXIT(
            {
                dup2(open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644), STDERR_FILENO);
                logToStandardError();
                logBytes(kMostLogBytes + kLine, 0);
                _exit(0);
            },
            ExitedWithCode(0), "");
    EXPECT_GT(std::filesystem::file_size(file), kMostLogBytes);
    EXPECT_FALSE(std::filesystem::exists(file + ".1"));
}

TEST_F(ProgramLogTest, AThreadThatKeepsItsLogKeepsNobodyElses) {
    logToFile(mFile);
    {
        const KeptLog kept;
        log("mine");
        std::thread([] { log("theirs"); }).join();
        ASSERT_EQ(1u, kept.lines().size());
        EXPECT_EQ("mine", kept.lines()[0].message);
        EXPECT_EQ("Tag", kept.lines()[0].tag);
        EXPECT_EQ(ANDROID_LOG_INFO, kept.lines()[0].priority);
    }
    log("later");
    const auto lines = linesOf(mFile);
    ASSERT_EQ(2u, lines.size());
    EXPECT_THAT(lines[0], EndsWith(" theirs"));
    EXPECT_THAT(lines[1], EndsWith(" later"));
}

}  // namespace
}  // namespace orvo
