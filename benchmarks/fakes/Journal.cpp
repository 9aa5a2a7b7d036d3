// SPDX-License-Identifier: Apache-2.0
// Keeps the events in memory.

#include "benchmarks/fakes/Journal.h"

#include <mutex>
#include <utility>

#include <android/log.h>

namespace orvo::benchmarks {
namespace {

std::mutex gMutex;
std::vector<std::string> gEvents;  // Guarded by gMutex.

void drop(const __android_logger_data* data, const char* message) {
    if (!Journal::isOn()) return;
    Journal::add("log " + std::to_string(data->priority) + " " + data->tag + ": " + message);
}

}  // namespace

bool Journal::sOn = false;

void Journal::begin() {
    gEvents.clear();
    sOn = true;
}

std::vector<std::string> Journal::end() {
    sOn = false;
    return std::exchange(gEvents, {});
}

void Journal::add(std::string event) {
    const std::lock_guard<std::mutex> lock(gMutex);
    gEvents.push_back(std::move(event));
}

void dropLogLines() {
    __android_log_set_logger(drop);
}

}  // namespace orvo::benchmarks
