// SPDX-License-Identifier: Apache-2.0
// TourInside: the inner half of `camerasim tour`, which supervises the device and walks through it.

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include <android-base/file.h>
#include <android-base/strings.h>
#include <android/log.h>
#include <hidl/HidlTransportSupport.h>

#include "simulator/camerasim/Installation.h"
#include "simulator/camerasim/RunningDevice.h"
#include "simulator/camerasim/Tour.h"
#include "simulator/camerasim/TourCommand.h"

namespace orvo::simulator {

namespace {

/** Notifications come while the tour waits for them. */
constexpr size_t kPoolThreads = 4;

/** Lines of each log that a failed tour shows. */
constexpr size_t kTailLines = 12;

FILE* gLog = nullptr;  ///< set once before the first message, never closed

/** The tour's own platform log would run through its words; it goes to a file as the others' do. */
void logToFile(const __android_logger_data* data, const char* message) {
    fprintf(gLog, "%s %d %s\n", data->tag == nullptr ? "" : data->tag, data->priority, message);
    fflush(gLog);
}

void redirectLog(const std::string& file) {
    gLog = fopen(file.c_str(), "ae");
    if (gLog != nullptr) __android_log_set_logger(logToFile);
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

void printTails(const RunningDevice& device) {
    for (const std::string& program : device.programs()) {
        const std::string tail = tailOf(device.stage().logOf(program));
        if (!tail.empty()) std::cerr << "\nthe end of " << program << ".log:\n" << tail;
    }
    std::cerr.flush();
}

bool wantsColour() {
    return isatty(STDOUT_FILENO) != 0 && getenv("NO_COLOR") == nullptr;
}

/** Ends the device and this process when the outer half says so or is gone. */
void stopWhenTold(int stopFd, Supervisor& supervisor) {
    std::thread([stopFd, &supervisor] {
        char nothing;
        while (TEMP_FAILURE_RETRY(read(stopFd, &nothing, 1)) > 0) {
        }
        supervisor.stopAll();
        _exit(kNotAsExpected);
    }).detach();
}

/** The outer half has found them in order a moment ago. */
int filesChanged() {
    std::cerr << "camerasim: the device's files have changed; try again" << std::endl;
    return kBadUse;
}

}  // namespace

int runTourInside(const TourOptions& options, const std::string& root, int stopFd) {
    fcntl(stopFd, F_SETFD, FD_CLOEXEC);
    const Stage stage(root);
    redirectLog(stage.logOf("camerasim"));
    const auto device = DeviceDescription::read(options.deviceDirectory);
    if (!device) return filesChanged();
    const auto plan = TourPlan::make(*device);
    const auto installation = Installation::ofThisProgram();
    if (!plan || !installation) return filesChanged();
    android::hardware::configureRpcThreadpool(kPoolThreads, false);
    Narrator narrator(std::cout, wantsColour());
    RunningDevice running(*device, *installation, stage);
    stopWhenTold(stopFd, running.supervisor());
    narrator.title("A guided tour of the simulated device \"" + device->name + "\"");
    const auto start = std::chrono::steady_clock::now();
    const bool good =
            Tour(*plan, running, narrator, std::chrono::seconds(options.pauseSeconds)).run();
    if (!good) {
        printTails(running);
        running.supervisor().stopAll();
        std::cerr << "camerasim: the tour was not as expected" << std::endl;
    } else {
        char seconds[32];
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        snprintf(seconds, sizeof(seconds), "%.1f s", took.count());
        narrator.closing("All " + std::to_string(narrator.steps()) +
                                 " steps were as expected, in " + seconds + ".",
                         true);
    }
    std::cout.flush();
    // Threads of the pool still run; ending without destructors is the only safe way out.
    _exit(good ? kAsExpected : kNotAsExpected);
}

}  // namespace orvo::simulator
