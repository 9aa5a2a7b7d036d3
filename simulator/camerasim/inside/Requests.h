// SPDX-License-Identifier: Apache-2.0
// Requests: answers what other terminals ask of a headset that is up.

#pragma once

#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/camerasim/inside/Headset.h"
#include "simulator/control/ControlServer.h"
#include "simulator/control/Protocol.h"
#include "simulator/process/LimitedCalls.h"

namespace orvo::simulator {

/**
 * Any number of requests at once, each on its own thread. What calls into the headset has ten
 * seconds; the call itself goes on after that, as calls of the platform do, until whoever is hung
 * goes on or ends. So the headset's programs have to end before this does.
 */
class Requests {
  public:
    /** The headset must outlive this. */
    explicit Requests(Headset& headset) : mHeadset(headset) {}

    /** Reads one request and answers it. */
    void answer(const std::string& line, Reply& reply);

  private:
    template <typename T>
    using Result = android::base::Result<T>;

    /** Performs it, with the limit. */
    template <typename Kind>
    void answer(const Kind& request, Reply& reply);
    // These wait, and answer in their own ways.
    void answer(const EventsRequest& request, Reply& reply);
    void answer(const WaitRequest& request, Reply& reply);
    void answer(const StopRequest& request, Reply& reply);

    // Questions; of one service or of all.
    Result<HeadsetState> perform(const StateRequest& request);
    Result<std::vector<PropertyState>> perform(const PropsRequest& request);
    Result<std::vector<ServiceTags>> perform(const TagsRequest& request);
    Result<std::vector<ServiceDump>> perform(const DumpRequest& request);
    Result<std::vector<ServiceList>> perform(const ListRequest& request);

    // What the framework does.
    Result<OpenReply> perform(const OpenRequest& request);
    Result<CloseReply> perform(const CloseRequest& request);
    Result<TorchReply> perform(const TorchRequest& request);

    // What becomes of processes, and of what is plugged into them.
    Result<ProcessReply> perform(const KillRequest& request);
    Result<ProcessReply> perform(const HangRequest& request);
    Result<ProcessReply> perform(const StartRequest& request);
    Result<PlugReply> perform(const PlugRequest& request);

    /** The client that may be asked for a camera; an error says which cameras there are. */
    Result<Framework::Client> clientFor(const std::string& camera) const;
    /** The program of a provider, or of the service, that runs. */
    Result<std::string> runningProgram(const std::string& name) const;
    ProcessReply processNow(const std::string& name, const std::string& what) const;
    void note(const std::string& who, const std::string& what) {
        mHeadset.timeline().add("command", who, what);
    }

    Headset& mHeadset;
    LimitedCalls mCalls{16};
};

}  // namespace orvo::simulator
