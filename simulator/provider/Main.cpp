// SPDX-License-Identifier: Apache-2.0
// simulated_provider: a process that serves the cameras of one YAML description.

#include <iostream>
#include <memory>
#include <string>

#include <hidl/HidlTransportSupport.h>

#include "host/TransportEnd.h"
#include "host/log/ProgramLog.h"
#include "simulator/process/ProgramLife.h"
#include "simulator/provider/ProviderControl.h"
#include "simulator/provider/SimulatedProvider.h"

namespace {

using android::OK;
using android::sp;
using orvo::simulator::EndingSignals;
using orvo::simulator::ProviderControl;
using orvo::simulator::ProviderDescription;
using orvo::simulator::SimulatedCameras;
using orvo::simulator::SimulatedProvider;

constexpr int kBadUse = 2;
constexpr int kNotRegistered = 1;

/** Listeners call back, and a person's request must get through while they do. */
constexpr size_t kPoolThreads = 8;

int serve(const ProviderDescription& description) {
    // Before there is a second thread, so that only who waits for them hears of them.
    orvo::simulator::blockEndingSignals();
    const auto cameras = std::make_shared<SimulatedCameras>(description);
    const EndingSignals told([cameras] {
        cameras->reporter().stop();
        orvo::endTransport();
    });
    android::hardware::configureRpcThreadpool(kPoolThreads, true);
    // The control first: who sees the provider can rely on its control.
    const sp<ProviderControl> control = new ProviderControl(cameras);
    const sp<SimulatedProvider> provider = new SimulatedProvider(cameras);
    if (control->registerAsService(description.instance) != OK ||
        provider->registerAsService(description.instance) != OK) {
        orvo::endTransport();
        if (told.came()) return 0;
        std::cerr << "simulated_provider: " << description.instance
                  << " cannot be registered; start it inside a running device\n";
        return kNotRegistered;
    }
    orvo::simulator::announceReady();
    android::hardware::joinRpcThreadpool();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    orvo::logToStandardError();
    const std::string file =
            orvo::simulator::wordsOrLeave(
                    argc, argv,
                    {"simulated_provider",
                     "Serves the cameras of a YAML description as one camera provider process.",
                     "DESCRIPTION", "YAML description of the provider", 1})
                    .front();
    const auto description = ProviderDescription::read(file);
    if (!description) {
        std::cerr << "simulated_provider: " << description.error().message() << "\n";
        return kBadUse;
    }
    return serve(*description);
}
