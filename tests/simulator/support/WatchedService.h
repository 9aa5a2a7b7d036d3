// SPDX-License-Identifier: Apache-2.0
// WatchedService: the camera provider service of the device under test, as init watches over it.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include <android-base/result.h>

#include "simulator/camerasim/inside/Programs.h"
#include "simulator/framework/FrameworkClient.h"
#include "tests/simulator/support/ProcessUse.h"
#include "tests/simulator/support/ServiceLog.h"

namespace orvo::simulator::testing {

/** The service must be running when this is made. For the main thread. */
class WatchedService {
  public:
    explicit WatchedService(Programs& device);

    bool isRunning() const;
    /** 0 if it is not running. */
    pid_t pid() const;
    bool awaitEnd(std::chrono::milliseconds patience) const;
    /** How it ended last, such as "ended by signal 6 (Aborted)". */
    std::string end() const;

    /** Starts it again, as the platform's init does with a service that has ended; counted. */
    android::base::Result<void> restart();
    size_t restarts() const { return mRestarts; }

    ServiceLog& log() { return mLog; }
    const ServiceLog& log() const { return mLog; }
    /** Where the log of the process that was started last begins. */
    size_t start() const { return mStart; }

    /**
     * Makes the service's thread pool as large as it ever gets. Threads of the pool come when many
     * calls come at once and never go; after this, a thread more is one that is left over.
     */
    bool fillThreadPool(FrameworkClient& framework) const;

    /**
     * Whether no reconnection of the provider is under way and its process has a listener.
     *
     * @param written what the present service has logged.
     */
    bool hasReconnected(const std::string& instance, const std::string& written) const;

    ProcessUse use() const { return ProcessUse::of(pid()); }

  private:
    Programs& mDevice;
    ServiceLog mLog;
    size_t mStart = 0;
    size_t mRestarts = 0;
};

/** What the service logs of a provider: the end of the line, or, for providerBackLine, its start.
 */
std::string providerDiedLine(const std::string& instance);
std::string providerBackLine(const std::string& instance);
std::string providerGivenUpLine(const std::string& instance);

/** Waits until a provider's reports so far have been answered; false if it dies or is too slow. */
bool settle(const Programs& device, const std::string& instance);

/** Has a provider process plug one of its cameras in or out; what refused it, or "". */
std::string setDeviceStatus(const Programs& device, const std::string& instance,
                            const std::string& cameraDeviceName, StatusEvent::Device status);

/** The value of the id property of a provider type. */
std::string listedIds(const std::string& type);
/** The value of the property that says whether external/0 was ever connected. */
std::string externalAdded();

}  // namespace orvo::simulator::testing
