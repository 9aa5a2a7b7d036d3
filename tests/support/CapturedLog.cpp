// SPDX-License-Identifier: Apache-2.0
// Hooks into the log library.

#include "tests/support/CapturedLog.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <utility>

#include <android/log.h>

namespace orvo::test {
namespace {

std::mutex gCurrentMutex;
CapturedLog* gCurrent = nullptr;  // Guarded by gCurrentMutex.

void capture(const __android_logger_data* data, const char* message) {
    const std::lock_guard<std::mutex> lock(gCurrentMutex);
    if (gCurrent == nullptr) return;
    gCurrent->add({data->priority, data->tag == nullptr ? "" : data->tag, message});
}

void mirror(const __android_logger_data* data, const char* message) {
    fputs(MirroredLog::text({{data->priority, data->tag, message}}).c_str(), stderr);
}

void setCurrent(CapturedLog* log) {
    const std::lock_guard<std::mutex> lock(gCurrentMutex);
    if (log != nullptr && gCurrent != nullptr) abort();  // Two captures would lose lines.
    gCurrent = log;
}

}  // namespace

bool operator==(const LogLine& left, const LogLine& right) {
    return left.priority == right.priority && left.tag == right.tag && left.text == right.text;
}

void PrintTo(const LogLine& line, std::ostream* stream) {
    *stream << line.priority << " " << line.tag << ": \"" << line.text << "\"";
}

CapturedLog::CapturedLog() {
    setCurrent(this);
    __android_log_set_logger(capture);
}

CapturedLog::~CapturedLog() {
    __android_log_set_logger(__android_log_stderr_logger);
    setCurrent(nullptr);
}

std::vector<LogLine> CapturedLog::lines() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mLines;
}

std::vector<LogLine> CapturedLog::take() {
    const std::lock_guard<std::mutex> lock(mMutex);
    return std::exchange(mLines, {});
}

size_t CapturedLog::count(const LogLine& line) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return countLocked(line);
}

bool CapturedLog::waitFor(const LogLine& line, std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mAdded.wait_for(lock, timeout, [&] { return countLocked(line) > 0; });
}

void CapturedLog::add(const LogLine& line) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mLines.push_back(line);
    mAdded.notify_all();
}

size_t CapturedLog::countLocked(const LogLine& line) const {
    return static_cast<size_t>(std::count(mLines.begin(), mLines.end(), line));
}

MirroredLog::MirroredLog() {
    __android_log_set_logger(mirror);
}

std::string MirroredLog::text(const std::vector<LogLine>& lines) {
    std::string all;
    for (const LogLine& line : lines) {
        all += std::to_string(line.priority) + " " + line.tag + ": " + line.text + "\n";
    }
    return all;
}

}  // namespace orvo::test
