// SPDX-License-Identifier: Apache-2.0
// HeadsetReport: puts together what a headset tells of itself.

#include <unistd.h>

#include <string>
#include <vector>

#include <cutils/properties.h>

#include "simulator/camerasim/inside/Diagnosis.h"
#include "simulator/camerasim/inside/Headset.h"

namespace orvo::simulator {

using android::sp;

namespace {

/** How long a provider may take to tell what it has. */
constexpr std::chrono::seconds kAskPatience{2};

std::vector<CameraOfProvider> camerasOf(const sp<ProviderConnections::Control>& control) {
    std::vector<CameraOfProvider> cameras;
    // One that has died meanwhile has none.
    (void)control
            ->getState([&](const auto& state) {
                for (const auto& device : state.devices) {
                    cameras.push_back({device.cameraDeviceName, toString(device.status)});
                }
            })
            .isOk();
    return cameras;
}

std::string propertyOf(const std::string& name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name.c_str(), value, "");
    return value;
}

ProviderFacts::Time timeOf(std::chrono::steady_clock::time_point moment) {
    return moment.time_since_epoch();
}

}  // namespace

ServiceState Headset::serviceState() const {
    ServiceState service{};
    const Supervisor& supervisor = mPrograms.supervisor();
    const auto pid = supervisor.pidOf(Programs::kService);
    service.running = pid.has_value();
    service.pid = pid.value_or(0);
    service.lastEnd = supervisor.historyOf(Programs::kService).lastEnd;
    service.instances = mFramework.instances();
    MutexLock lock(mLock);
    service.restarts = mServiceStarts > 0 ? mServiceStarts - 1 : 0;
    return service;
}

ProviderState Headset::providerState(const std::string& instance) const {
    ProviderState state{};
    state.instance = instance;
    state.behind = mFiles.behind(instance);
    state.declared = mFiles.isDeclared(instance);
    state.described = mFiles.isDescribed(instance);
    state.inProcess = mFiles.isServed(instance) && !state.described;
    const Supervisor& supervisor = mPrograms.supervisor();
    const std::string program =
            state.inProcess ? Programs::kService : Programs::programOf(instance);
    const auto pid = supervisor.pidOf(program);
    const bool served = mFramework.clientOf(instance) != nullptr;
    state.running = pid && (served || !state.inProcess);
    state.pid = state.running ? *pid : 0;
    state.hung = state.running && supervisor.isHung(program);
    state.connected = state.inProcess ? mFramework.isRegistered(instance)
                                      : mProviders.connectionOf(instance).connected;
    const Supervisor::History history = supervisor.historyOf(program);
    state.deaths = history.ends;
    state.lastEnd = history.lastEnd;
    state.problem = problemOfProvider(state);
    return state;
}

std::string Headset::problemOfProvider(const ProviderState& state) const {
    ProviderFacts facts;
    facts.instance = state.instance;
    facts.behind = state.behind;
    facts.declared = state.declared;
    facts.described = state.described;
    facts.served = state.inProcess;
    facts.frontServed = mFramework.clientOf(state.behind) != nullptr;
    facts.serviceRunning = mPrograms.supervisor().isRunning(Programs::kService);
    facts.running = state.running;
    facts.hung = state.hung;
    facts.connected = state.connected;
    facts.lastEnd = state.lastEnd;
    const ProviderConnections::Connection connection = mProviders.connectionOf(state.instance);
    facts.now = timeOf(Clock::now());
    facts.startedAt = timeOf(connection.startedAt);
    if (connection.lostAt) facts.lostAt = timeOf(*connection.lostAt);
    MutexLock lock(mLock);
    facts.serviceReadyAt = timeOf(mServiceReadyAt);
    return problemOf(facts);
}

HeadsetState Headset::state(bool ask) {
    HeadsetState state{};
    state.name = mFiles.description().name;
    state.directory = mFiles.description().directory;
    state.root = stage().root();
    state.pid = getpid();
    state.uptimeSeconds = mTimeline.secondsSinceStart();
    state.service = serviceState();
    for (const std::string& instance : mFiles.instances()) {
        ProviderState provider = providerState(instance);
        const auto control = mProviders.controlOf(instance);
        if (ask && provider.running && !provider.hung && control != nullptr) {
            const auto cameras = mCalls.within<std::vector<CameraOfProvider>>(
                    kAskPatience, [control] { return camerasOf(control); });
            if (cameras) provider.devices = *cameras;
        }
        state.providers.push_back(provider);
    }
    state.cameras = mCameras.cameras();
    return state;
}

ConditionFacts Headset::facts() {
    ConditionFacts facts;
    facts.cameras = mCameras.cameras();
    facts.everReported = mCameras.everReported();
    for (const std::string& instance : mFiles.instances()) {
        facts.providers.push_back(providerState(instance));
    }
    facts.property = propertyOf;
    return facts;
}

std::string Headset::whoIsHung() const {
    std::string hung;
    const Supervisor& supervisor = mPrograms.supervisor();
    const auto look = [&](const std::string& who, const std::string& program) {
        if (!supervisor.isHung(program)) return;
        hung += (hung.empty() ? "" : ", ") + who + " is hung";
    };
    for (const ProviderProgram& provider : mFiles.description().providers) {
        look(provider.instance, Programs::programOf(provider.instance));
    }
    look("the camera provider service", Programs::kService);
    return hung;
}

}  // namespace orvo::simulator
