// SPDX-License-Identifier: Apache-2.0
// Programs: boots the programs of a device and knows what has been registered.

#pragma once

#include <string>
#include <vector>

#include <android-base/result.h>

#include <vendor/orvo/simulator/1.0/ISimulatedProvider.h>

#include "simulator/camerasim/inside/Supervisor.h"
#include "simulator/camerasim/outside/Installation.h"
#include "simulator/camerasim/outside/Stage.h"
#include "simulator/description/HeadsetDescription.h"

namespace orvo::simulator {

/**
 * The programs of one device, started from inside its namespace and in order: the service manager,
 * the provider processes, the camera provider service. Each is waited for until it says that it is
 * ready, or has ended. boot() belongs on the main thread.
 */
class Programs {
  public:
    using Control = vendor::orvo::simulator::V1_0::ISimulatedProvider;

    static constexpr char kServiceManager[] = "hwservicemanager";
    static constexpr char kService[] = "camera_provider_service";

    Programs(HeadsetDescription device, Installation installation, Stage stage);

    /** Starts everything. An error, one line, names the program that did not come up. */
    android::base::Result<void> boot();

    /** The first step of boot() alone. */
    android::base::Result<void> startServiceManager();

    /** One step of boot() alone: for a provider process that has ended. */
    android::base::Result<void> startProvider(const std::string& instance);

    /** The last step of boot() alone: for a service that has ended. */
    android::base::Result<void> startService();

    /** The handle of a provider process; null if it is not registered. */
    android::sp<Control> control(const std::string& instance) const;

    const HeadsetDescription& description() const { return mDevice; }
    const Stage& stage() const { return mStage; }
    Supervisor& supervisor() { return mSupervisor; }
    const Supervisor& supervisor() const { return mSupervisor; }
    /** Names of all programs in the order of their start. */
    std::vector<std::string> programs() const;
    /** Ends all programs. @return one line for each that did not end well; empty if all did. */
    std::vector<std::string> shutDown();

    /** The name under which a provider process runs and logs, such as "provider-external-0". */
    static std::string programOf(const std::string& instance);

  private:
    /** Starts a program and waits until it says that it is ready. */
    android::base::Result<void> startProgram(const std::string& program,
                                             std::vector<std::string> command);
    /** What became of a program that did not do what it was started for. */
    std::string failureOf(const std::string& program, const std::string& what) const;

    const HeadsetDescription mDevice;
    const Installation mInstallation;
    const Stage mStage;
    Supervisor mSupervisor;
};

}  // namespace orvo::simulator
