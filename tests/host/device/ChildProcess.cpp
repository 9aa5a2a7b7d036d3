// SPDX-License-Identifier: Apache-2.0
// Child processes of tests, by posix_spawn and pipes.

#include "tests/host/device/ChildProcess.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

extern char** environ;

namespace orvo::testing {

namespace {

struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;
};

Pipe makePipe() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) ADD_FAILURE() << "pipe2: " << strerror(errno);
    return {ends[0], ends[1]};
}

ssize_t readSome(int fd, char* buffer, size_t size) {
    return TEMP_FAILURE_RETRY(read(fd, buffer, size));
}

void closeOnce(int* fd) {
    if (*fd >= 0) close(*fd);
    *fd = -1;
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           StandardError standardError) {
    std::vector<char*> argv = {const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);

    Pipe input = makePipe();
    Pipe output = makePipe();
    Pipe error = standardError == StandardError::CAPTURED ? makePipe() : Pipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.readEnd, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.writeEnd, STDOUT_FILENO);
    if (error.writeEnd >= 0) {
        posix_spawn_file_actions_adddup2(&actions, error.writeEnd, STDERR_FILENO);
    }
    const int result = posix_spawn(&mPid, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (result != 0) {
        ADD_FAILURE() << "cannot start " << program << ": " << strerror(result);
        mPid = -1;
    }
    closeOnce(&input.readEnd);
    closeOnce(&output.writeEnd);
    closeOnce(&error.writeEnd);
    mInput = input.writeEnd;
    mOutput = output.readEnd;
    mError = error.readEnd;
}

ChildProcess::~ChildProcess() {
    if (mPid > 0) kill();
    closeOnce(&mInput);
    closeOnce(&mOutput);
    closeOnce(&mError);
}

std::optional<std::string> ChildProcess::readLine() {
    for (;;) {
        const size_t newline = mUnread.find('\n');
        if (newline != std::string::npos) {
            std::string line = mUnread.substr(0, newline);
            mUnread.erase(0, newline + 1);
            return line;
        }
        char buffer[4096];
        const ssize_t size = readSome(mOutput, buffer, sizeof(buffer));
        if (size <= 0) return std::nullopt;
        mUnread.append(buffer, static_cast<size_t>(size));
    }
}

std::string ChildProcess::readStandardError() {
    std::string text;
    char buffer[4096];
    ssize_t size = 0;
    while ((size = readSome(mError, buffer, sizeof(buffer))) > 0) {
        text.append(buffer, static_cast<size_t>(size));
    }
    return text;
}

void ChildProcess::writeLine(const std::string& line) {
    const std::string text = line + "\n";
    const ssize_t written = TEMP_FAILURE_RETRY(write(mInput, text.data(), text.size()));
    EXPECT_EQ(static_cast<ssize_t>(text.size()), written) << strerror(errno);
}

void ChildProcess::closeInput() {
    closeOnce(&mInput);
}

void ChildProcess::signal(int number) {
    ASSERT_GT(mPid, 0);
    EXPECT_EQ(0, ::kill(mPid, number));
}

int ChildProcess::wait() {
    if (mPid <= 0) return -1;
    int status = 0;
    const pid_t ended = TEMP_FAILURE_RETRY(waitpid(mPid, &status, 0));
    EXPECT_EQ(mPid, ended);
    mPid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

void ChildProcess::kill() {
    if (mPid <= 0) return;
    ::kill(mPid, SIGKILL);
    wait();
}

}  // namespace orvo::testing
