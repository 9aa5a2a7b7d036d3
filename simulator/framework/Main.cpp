// SPDX-License-Identifier: Apache-2.0
// camera_framework: prints what a camera provider serves, then each status that it reports.

#include <chrono>
#include <iostream>
#include <string>

#include <hidl/HidlTransportSupport.h>

#include "host/TransportEnd.h"
#include "host/log/ProgramLog.h"
#include "simulator/framework/FrameworkClient.h"
#include "simulator/process/ProgramLife.h"

namespace {

using android::sp;
using orvo::simulator::Answer;
using orvo::simulator::CameraFacts;
using orvo::simulator::FrameworkClient;
using orvo::simulator::StatusEvent;
using orvo::simulator::StatusLog;

constexpr int kProviderGone = 1;

/** Notifications arrive while calls are made. */
constexpr size_t kPoolThreads = 4;

template <typename T>
std::string heading(const Answer<T>& answer) {
    return answer.arrived() ? toString(answer.status) : "no answer: " + answer.failure;
}

void printLists(FrameworkClient& client) {
    const auto names = client.cameraIdList();
    std::cout << "cameras: " << heading(names) << "\n";
    for (const std::string& name : names.value) std::cout << "  " << name << "\n";
    const auto torch = client.isTorchSupported();
    std::cout << "torch: " << heading(torch) << (torch.value ? ", supported" : ", not supported")
              << "\n";
    const auto tags = client.vendorTags();
    std::cout << "vendor tags: " << heading(tags) << "\n";
    for (const auto& section : tags.value) {
        std::cout << "  " << section.sectionName << "\n";
        for (const auto& tag : section.tags) {
            std::cout << "    0x" << std::hex << tag.tagId << std::dec << " " << tag.tagName << " "
                      << toString(tag.tagType) << "\n";
        }
    }
}

void printCamera(FrameworkClient& client, const std::string& name) {
    const Answer<CameraFacts> facts = client.readCamera(name);
    std::cout << "camera " << name << ": " << heading(facts) << "\n";
    if (!facts.ok()) return;
    std::cout << "  resource cost: " << facts.value.resourceCost << "\n";
    for (const std::string& other : facts.value.conflictingDevices) {
        std::cout << "  conflicts with: " << other << "\n";
    }
    if (!facts.value.info.empty()) std::cout << "  " << facts.value.info << "\n";
    for (const auto& entry : facts.value.characteristics) {
        std::cout << "  0x" << std::hex << entry.tag << std::dec << " " << toString(entry.type)
                  << " " << entry.toText() << "\n";
    }
}

/** Prints each status, and each camera that has come, until the log is closed. */
void watch(FrameworkClient& client) {
    using Device = StatusEvent::Device;
    const auto any = [](const StatusEvent&) { return true; };
    for (size_t next = 0;; next++) {
        std::optional<StatusEvent> event;
        while (!event && !client.log().isClosed()) {
            event = client.log().waitFor(any, std::chrono::hours(1), next);
        }
        if (!event) return;
        std::cout << "status: " << event->toText() << "\n";
        if (event->is(event->cameraDeviceName, Device::PRESENT)) {
            printCamera(client, event->cameraDeviceName);
        }
        std::cout.flush();
    }
}

/** @return why it goes on no more, in one line. */
std::string run(const std::string& instance, const sp<StatusLog>& log) {
    auto client = FrameworkClient::connect(instance, log);
    if (!client) return client.error().message();
    const auto registered = (*client)->registerCallback();
    if (!registered.ok()) return "the callback was not taken: " + heading(registered);
    printLists(**client);
    std::cout.flush();
    watch(**client);
    return "the provider's process is gone";
}

}  // namespace

int main(int argc, char** argv) {
    orvo::logToStandardError();
    const std::string instance =
            orvo::simulator::wordsOrLeave(
                    argc, argv,
                    {"camera_framework",
                     "Prints what a camera provider serves, then each status, until Ctrl-C.",
                     "INSTANCE", "instance name, such as legacy/0", 1})
                    .front();
    const sp<StatusLog> log = new StatusLog();
    const orvo::simulator::EndingSignals told([&log] {
        orvo::endTransport();
        log->close();
    });
    android::hardware::configureRpcThreadpool(kPoolThreads, false);
    const std::string why = run(instance, log);
    orvo::endTransport();
    if (told.came()) return 0;
    std::cerr << "camera_framework: " << why << "\n";
    return kProviderGone;
}
