// SPDX-License-Identifier: Apache-2.0
// Measures a reconnection end to end: a provider process is killed and started again, and the time
// counts from the end of the pause to the registration with the new process. All of it runs in the
// namespace of a simulated device; this process is the camera provider service of that device.

#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <semaphore.h>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <thread>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <android/log.h>
#include <hidl/HidlTransportSupport.h>

#include "benchmarks/fakes/AnsweringProvider.h"
#include "simulator/camerasim/inside/Programs.h"
#include "simulator/camerasim/outside/Session.h"

extern "C" android::hardware::camera::provider::V2_4::ICameraProvider*
HIDL_FETCH_ICameraProvider_shim(
        const char* name, android::hardware::camera::provider::V2_4::ICameraProvider* provider);

namespace orvo::benchmarks {
namespace {

using android::sp;
using android::hardware::hidl_death_recipient;
using android::hardware::camera::provider::V2_4::ICameraProvider;
using simulator::Programs;
using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr char kInstance[] = "external/0";
constexpr char kReconnected[] = "Successfully reinitialized provider external/0";
constexpr timespec kPause = {0, 500'000'000};
constexpr time_t kPatience = 30;  // Seconds.

Clock::time_point gPauseEnded;  // Written by the thread that posts gReconnected below.
Clock::time_point gRegistered;
sem_t gReconnected;

/** The directory that is set for the inner process only, below the root of the stage. */
const char* runDirectory() {
    return getenv("ORVO_DEVICE_DIR");
}

// The library logs the reconnection at once after it has registered.
void watchForReconnection(const __android_logger_data*, const char* message) {
    if (strncmp(message, kReconnected, strlen(kReconnected)) != 0) return;
    gRegistered = Clock::now();
    sem_post(&gReconnected);
}

bool awaitReconnection() {
    timespec until;
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += kPatience;
    return sem_timedwait(&gReconnected, &until) == 0;
}

// A new process of the provider in place of the one that runs.
bool replaceProvider(Programs& device) {
    const std::string program = Programs::programOf(kInstance);
    device.supervisor().signal(program, SIGKILL);
    if (!device.supervisor().awaitEnd(program, std::chrono::seconds(kPatience))) return false;
    const auto started = device.startProvider(kInstance);
    if (!started) std::cerr << started.error().message() << "\n";
    return started.has_value();
}

std::optional<Microseconds> timeProduct(Programs& device) {
    if (!replaceProvider(device) || !awaitReconnection()) return std::nullopt;
    return gRegistered - gPauseEnded;
}

struct Mourner : hidl_death_recipient {
    void serviceDied(uint64_t, const android::wp<android::hidl::base::V1_0::IBase>&) override {}
};

// The same calls by hand, as long after the start as the library makes them.
std::optional<Microseconds> timeFloor(Programs& device) {
    const sp<SilentFramework> framework = new SilentFramework;
    const sp<Mourner> mourner = new Mourner;
    const auto death = Clock::now();
    if (!replaceProvider(device)) return std::nullopt;
    std::this_thread::sleep_until(death + std::chrono::nanoseconds(kPause.tv_nsec));

    const auto start = Clock::now();
    const sp<ICameraProvider> service = ICameraProvider::getService(kInstance, false);
    if (service == nullptr || !service->linkToDeath(mourner, 1).withDefault(false)) {
        return std::nullopt;
    }
    const sp<ICameraProvider> shim = HIDL_FETCH_ICameraProvider_shim(kInstance, service.get());
    if (shim == nullptr || !shim->setCallback(framework).isOk()) return std::nullopt;
    return Clock::now() - start;
}

int measure(const std::string& side, int rounds) {
    const auto description = simulator::HeadsetDescription::read(ORVO_HEADSET);
    const auto installation = simulator::Installation::ofThisProgram();
    if (!description || !installation) return 1;
    android::hardware::configureRpcThreadpool(4, false);
    sem_init(&gReconnected, 0, 0);
    Programs device(*description, *installation,
                    simulator::Stage(std::filesystem::path(runDirectory()).parent_path()));
    if (const auto booted = device.boot(); !booted) {
        std::cerr << booted.error().message() << "\n";
        return 1;
    }
    // This process takes the place of the service.
    device.supervisor().signal(Programs::kService, SIGKILL);
    device.supervisor().awaitEnd(Programs::kService, std::chrono::seconds(kPatience));
    __android_log_set_logger(watchForReconnection);
    const sp<SilentFramework> framework = new SilentFramework;
    sp<ICameraProvider> product;
    if (side == "product") {
        product = ICameraProvider::getService("legacy/0", true);
        if (product == nullptr || !product->setCallback(framework).isOk()) return 1;
    }
    for (int i = 0; i < rounds; ++i) {
        const auto time = side == "product" ? timeProduct(device) : timeFloor(device);
        if (!time) {
            std::cerr << "the provider was not reconnected\n";
            return 1;
        }
        std::cout << time->count() << std::endl;
    }
    device.supervisor().stopAll();
    return 0;
}

int runOutside(char** arguments) {
    simulator::SessionOptions options;
    options.directory = ORVO_HEADSET;
    options.command = {std::filesystem::read_symlink("/proc/self/exe"), arguments[1], arguments[2]};
    auto session = simulator::Session::start(options);
    if (!session) {
        std::cerr << session.error().message() << "\n";
        return 1;
    }
    const int status = session->awaitEnd();
    session->finish();
    return status;
}

}  // namespace
}  // namespace orvo::benchmarks

// Takes the place of the C library's for the library, too, which is loaded later: notes the end of
// the pause.
extern "C" int nanosleep(const timespec* duration, timespec* remaining) {
    using namespace orvo::benchmarks;
    const bool isPause = duration->tv_sec == kPause.tv_sec && duration->tv_nsec == kPause.tv_nsec;
    const int failure = clock_nanosleep(CLOCK_REALTIME, 0, duration, remaining);
    if (isPause) gPauseEnded = Clock::now();
    if (failure == 0) return 0;
    errno = failure;
    return -1;
}

// Prints the microseconds of each round.
// usage: benchmark_reconnection product|floor ROUNDS
int main(int argc, char** argv) {
    if (argc != 3 || (strcmp(argv[1], "product") != 0 && strcmp(argv[1], "floor") != 0) ||
        atoi(argv[2]) < 1) {
        std::cerr << "usage: benchmark_reconnection product|floor ROUNDS\n";
        return 1;
    }
    if (orvo::benchmarks::runDirectory() == nullptr) return orvo::benchmarks::runOutside(argv);
    const int status = orvo::benchmarks::measure(argv[1], atoi(argv[2]));
    // Threads of the pool still run; ending without destructors is the only safe way out.
    _exit(status);
}
