// SPDX-License-Identifier: Apache-2.0
// Requests: answers what other terminals ask of a device that is up.

#pragma once

#include <functional>
#include <string>

#include <android-base/result.h>

#include "simulator/camerasim/inside/Headset.h"
#include "simulator/control/ControlServer.h"
#include "simulator/control/Request.h"

namespace orvo::simulator {

/**
 * Any number of requests at once, each on its own thread. What calls into the device has ten
 * seconds; the call itself goes on after that, as calls of the platform do, until whoever is hung
 * goes on or ends.
 */
class Requests {
  public:
    /** The device must outlive the process's last request. */
    explicit Requests(Headset& device) : mDevice(device) {}

    /** Reads one request and answers it. */
    void answer(const std::string& line, Reply& reply);

  private:
    using Answer = android::base::Result<nlohmann::json>;

    /** Answers what needs no more than one answer. */
    Answer perform(const Request& request);
    Answer performWithinLimit(const Request& request);

    void tellEvents(const Request& request, Reply& reply);
    void waitFor(const Request& request, Reply& reply);
    void stop(Reply& reply);

    // Questions; the first two to one service or to all.
    Answer tags(const Request& request);
    Answer dump(const Request& request);
    Answer askServices(const Request& request,
                       const std::function<Answer(FrameworkClient& client)>& question);
    Answer props() const;

    // What the framework does.
    Answer open(const Request& request);
    Answer close(const Request& request);
    Answer torch(const Request& request);

    // What becomes of processes, and of what is plugged into them.
    Answer kill(const Request& request);
    Answer exit(const Request& request);
    Answer hang(const Request& request);
    Answer resume(const Request& request);
    Answer start(const Request& request);
    Answer plug(const Request& request, bool present);
    Answer end(const std::string& who, int signal, const std::string& what);

    /** The client that may be asked for a camera; an error says which cameras there are. */
    android::base::Result<Framework::Client> clientFor(const std::string& camera) const;
    /** The full name of a device of a provider, which may be given by its id alone. */
    android::base::Result<std::string> deviceOf(
            const std::string& provider, const android::sp<ProviderConnections::Control>& control,
            const std::string& word) const;
    void note(const std::string& who, const std::string& what) {
        mDevice.timeline().add("command", who, what);
    }

    Headset& mDevice;
};

}  // namespace orvo::simulator
