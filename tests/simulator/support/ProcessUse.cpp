// SPDX-License-Identifier: Apache-2.0
// ProcessUse: counting entries below /proc.

#include "tests/simulator/support/ProcessUse.h"

#include <stdlib.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <thread>

#include <android-base/file.h>

namespace orvo::simulator::testing {

namespace {

constexpr std::chrono::milliseconds kLookAgain{5};

size_t entriesOf(const std::string& directory) {
    size_t count = 0;
    std::error_code failure;  // threads and descriptors come and go while they are counted
    for (std::filesystem::directory_iterator it(directory, failure), end; !failure && it != end;
         it.increment(failure)) {
        count++;
    }
    return count;
}

/** The fourth word of /proc/N/stat, behind a name in parentheses that may hold anything. */
pid_t parentOf(const std::filesystem::path& process) {
    std::string stat;  // stays empty if the process has gone meanwhile
    (void)android::base::ReadFileToString(process / "stat", &stat);
    const size_t name = stat.rfind(") ");
    if (name == std::string::npos) return 0;
    return static_cast<pid_t>(strtol(stat.c_str() + name + 4, nullptr, 10));
}

}  // namespace

ProcessUse ProcessUse::of(pid_t process) {
    const std::string directory = "/proc/" + std::to_string(process);
    const size_t pipes = 2 * childrenOf(process).size();
    return {entriesOf(directory + "/task"), entriesOf(directory + "/fd") - pipes};
}

std::ostream& operator<<(std::ostream& out, const ProcessUse& use) {
    return out << use.threads << " threads and " << use.descriptors << " descriptors";
}

ProcessUse awaitUse(pid_t process, const ProcessUse& wanted, std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        const ProcessUse use = ProcessUse::of(process);
        if (use == wanted || std::chrono::steady_clock::now() >= deadline) return use;
        std::this_thread::sleep_for(kLookAgain);
    }
}

std::set<pid_t> childrenOf(pid_t parent) {
    std::set<pid_t> children;
    std::error_code failure;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", failure)) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        if (parentOf(entry.path()) == parent) children.insert(std::stoi(name));
    }
    return children;
}

}  // namespace orvo::simulator::testing
