// SPDX-License-Identifier: Apache-2.0
// Stands in front of the log library: defines the function that code logs with. The library's own
// hook is younger than the device's platform, and these tests run there, too.

#include "tests/support/CapturedLog.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include <android/log.h>

namespace orvo::test {
namespace {

constexpr size_t kLongestText = 1024;  // Where the log library cuts a text, its NUL included.

std::mutex gCurrentMutex;
CapturedLog* gCurrent = nullptr;  // Guarded by gCurrentMutex.
std::atomic<bool> gMirrored = false;
std::atomic<void (*)(const char* text)> gOnUnkept = nullptr;

// False when nobody captures.
bool capture(const LogLine& line) {
    const std::lock_guard<std::mutex> lock(gCurrentMutex);
    if (gCurrent == nullptr) return false;
    gCurrent->add(line);
    return true;
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
}

CapturedLog::~CapturedLog() {
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
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mLines.push_back(line);
        mAdded.notify_all();
    }
    if (onLine) onLine(line);
}

size_t CapturedLog::countLocked(const LogLine& line) const {
    return static_cast<size_t>(std::count(mLines.begin(), mLines.end(), line));
}

UnkeptLog::UnkeptLog(void (*onText)(const char* text)) {
    gOnUnkept = onText;
}

UnkeptLog::~UnkeptLog() {
    gOnUnkept = nullptr;
}

MirroredLog::MirroredLog() {
    gMirrored = true;
}

std::string MirroredLog::text(const std::vector<LogLine>& lines) {
    std::string all;
    for (const LogLine& line : lines) {
        all += std::to_string(line.priority) + " " + line.tag + ": " + line.text + "\n";
    }
    return all;
}

}  // namespace orvo::test

// The program's own definition comes before that of any library, also for the libraries' calls.
extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    char text[orvo::test::kLongestText];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);

    if (const auto onUnkept = orvo::test::gOnUnkept.load()) {
        onUnkept(text);
        return 1;
    }
    const orvo::test::LogLine line = {priority, tag == nullptr ? "" : tag, text};
    if (orvo::test::gMirrored) {
        fputs(orvo::test::MirroredLog::text({line}).c_str(), stderr);
    } else if (!orvo::test::capture(line)) {
        __android_log_write(priority, tag, text);
    }
    return 1;
}
