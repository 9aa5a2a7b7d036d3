// SPDX-License-Identifier: Apache-2.0
// InnerHalf: logs, looks, and the way in which the outer half stops the inner one.

#include "simulator/camerasim/inside/InnerHalf.h"

#include <fcntl.h>
#include <stdio.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <android-base/file.h>
#include <android-base/strings.h>
#include <android/log.h>

#include "simulator/camerasim/ExitStatus.h"

namespace orvo::simulator {

namespace {

/** Lines of each log that are shown when something went wrong. */
constexpr size_t kTailLines = 12;

FILE* gLog = nullptr;  ///< set once before the first message, never closed

/** A line as the other programs' log library writes it, for one reader of all logs. */
void logToFile(const __android_logger_data* data, const char* message) {
    static constexpr char kPriorities[] = "??VDIWEFS";
    const bool known = data->priority >= 0 && data->priority <= ANDROID_LOG_SILENT;
    const time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    char moment[32];
    strftime(moment, sizeof(moment), "%m-%d %H:%M:%S", &local);
    fprintf(gLog, "%s %c %s %5d %5d %s\n", data->tag == nullptr ? "" : data->tag,
            kPriorities[known ? data->priority : 0], moment, getpid(), gettid(), message);
    fflush(gLog);
}

std::string tailOf(const std::string& file) {
    std::string content;
    if (!android::base::ReadFileToString(file, &content)) return "";
    std::vector<std::string> lines = android::base::Split(content, "\n");
    if (!lines.empty() && lines.back().empty()) lines.pop_back();
    const size_t from = lines.size() > kTailLines ? lines.size() - kTailLines : 0;
    std::string tail;
    for (size_t i = from; i < lines.size(); i++) tail += "  " + lines[i] + "\n";
    return tail;
}

}  // namespace

void redirectLog(const std::string& file) {
    gLog = fopen(file.c_str(), "ae");
    if (gLog != nullptr) __android_log_set_logger(logToFile);
}

void printTails(const Programs& device) {
    for (const std::string& program : device.programs()) {
        const std::string tail = tailOf(device.stage().logOf(program));
        if (!tail.empty()) std::cerr << "\nthe end of " << program << ".log:\n" << tail;
    }
    std::cerr.flush();
}

void whenTold(int stopFd, std::function<void()> function) {
    fcntl(stopFd, F_SETFD, FD_CLOEXEC);
    std::thread([stopFd, function = std::move(function)] {
        char nothing;
        while (TEMP_FAILURE_RETRY(read(stopFd, &nothing, 1)) > 0) {
        }
        function();
    }).detach();
}

int filesChanged() {
    std::cerr << "camerasim: the device's files have changed; try again" << std::endl;
    return kBadUse;
}

}  // namespace orvo::simulator
