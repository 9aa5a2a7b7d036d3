// SPDX-License-Identifier: Apache-2.0
// ServiceLog: the kernel tells of each write, so nobody need look again and again.

#include "tests/simulator/support/ServiceLog.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include <gtest/gtest.h>

namespace orvo::simulator::testing {

ServiceLog::ServiceLog(std::string file)
    : mFile(std::move(file)), mWatch(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    EXPECT_GE(inotify_add_watch(mWatch.get(), mFile.c_str(), IN_MODIFY), 0)
            << "cannot watch " << mFile;
}

size_t ServiceLog::mark() const {
    std::error_code failure;
    const auto size = std::filesystem::file_size(mFile, failure);
    return failure ? 0 : size;
}

std::string ServiceLog::since(size_t mark) const {
    std::ifstream file(mFile, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(mark));
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

size_t ServiceLog::count(const std::string& text, size_t mark) const {
    return occurrences(text, since(mark));
}

bool ServiceLog::waitFor(const Predicate& predicate, size_t mark,
                         std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    // Looked at once more after time is up: the last write may have been the one.
    for (;;) {
        const auto now = std::chrono::steady_clock::now();
        if (predicate(since(mark))) return true;
        if (now >= deadline) return false;
        awaitGrowth(std::chrono::ceil<std::chrono::milliseconds>(deadline - now));
    }
}

bool ServiceLog::waitForCount(const std::string& text, size_t count, size_t mark,
                              std::chrono::milliseconds patience) {
    const auto enough = [&](const std::string& written) {
        return occurrences(text, written) >= count;
    };
    return waitFor(enough, mark, patience);
}

void ServiceLog::awaitGrowth(std::chrono::milliseconds patience) {
    pollfd grown{mWatch.get(), POLLIN, 0};
    if (poll(&grown, 1, static_cast<int>(patience.count())) <= 0) return;
    // Each event says the same; all that have come so far are answered by one look at the file.
    alignas(inotify_event) char events[4096];
    while (read(mWatch.get(), events, sizeof(events)) > 0) {
    }
}

size_t occurrences(const std::string& text, const std::string& in) {
    size_t count = 0;
    for (size_t at = in.find(text); at != std::string::npos; at = in.find(text, at + text.size())) {
        count++;
    }
    return count;
}

}  // namespace orvo::simulator::testing
