// SPDX-License-Identifier: Apache-2.0
// Protocol: all that a running headset can be asked, tells and answers. Both ends are made from it.

#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include <android-base/result.h>
#include <nlohmann/json_fwd.hpp>

#include "simulator/control/States.h"

namespace orvo::simulator {

// What can be asked. A member that a request does not have is as it is here.

struct NoMembers {};

struct StateRequest : NoMembers {
    static constexpr char kCommand[] = "state";
    using Reply = HeadsetState;
};

/** @see ServiceTags; of all instances if none is named. Likewise the next two. */
struct TagsRequest {
    static constexpr char kCommand[] = "tags";
    using Reply = std::vector<ServiceTags>;
    std::string service;
};

struct DumpRequest {
    static constexpr char kCommand[] = "dump";
    using Reply = std::vector<ServiceDump>;
    std::string service;
};

struct ListRequest {
    static constexpr char kCommand[] = "list";
    using Reply = std::vector<ServiceList>;
    std::string service;
};

struct PropsRequest : NoMembers {
    static constexpr char kCommand[] = "props";
    using Reply = std::vector<PropertyState>;
};

/** What a camera told before it was opened, and whether it was. */
struct OpenReply {
    std::string camera;
    std::string status;  ///< of the last call, such as "CAMERA_IN_USE"
    int64_t resourceCost;
    std::vector<std::string> conflictingDevices;
    std::string info;  ///< of a camera of version 1; else ""
    std::vector<Characteristic> characteristics;
    int64_t characteristicsBytes;
    bool opened;                        ///< one of version 1 is read and never opened
    std::vector<std::string> heldOpen;  ///< cameras that were held open when it was tried
};

struct OpenRequest {
    static constexpr char kCommand[] = "open";
    using Reply = OpenReply;
    std::string camera;
    bool hold = false;
};

struct CloseReply {
    std::string camera;
};

struct CloseRequest {
    static constexpr char kCommand[] = "close";
    using Reply = CloseReply;
    std::string camera;
};

struct TorchReply {
    std::string camera;
    std::string status;
};

struct TorchRequest {
    static constexpr char kCommand[] = "torch";
    using Reply = TorchReply;
    std::string camera;
    bool on = false;
};

/** What became of a process: "ended by signal 9 (Killed)", "hangs", "goes on", "runs". */
struct ProcessReply {
    std::string provider;
    std::string what;
    int pid;
    bool ended;
};

struct KillRequest {
    static constexpr char kCommand[] = "kill";
    using Reply = ProcessReply;
    std::string provider;  ///< or "service"; likewise the next two
    std::string signal = "KILL";
};

struct HangRequest {
    static constexpr char kCommand[] = "hang";
    using Reply = ProcessReply;
    std::string provider;
};

struct StartRequest {
    static constexpr char kCommand[] = "start";
    using Reply = ProcessReply;
    std::string provider;
};

struct PlugReply {
    std::string device;  ///< in the provider's words
    std::string status;
    std::vector<std::string> dropped;  ///< cameras that were held open and are gone with it
};

struct PlugRequest {
    static constexpr char kCommand[] = "plug";
    using Reply = PlugReply;
    std::string provider;
    std::string device;  ///< its name in the provider's words, or its id
    bool present = true;
};

struct WaitReply {
    bool met;
    double seconds;
};

struct WaitRequest {
    static constexpr char kCommand[] = "wait";
    using Reply = WaitReply;
    std::vector<std::string> condition;  ///< its words
    double timeout = 60;                 ///< seconds
};

struct EventsReply {
    int64_t next;  ///< number of the event that will be the next
};

/** Answered with events, and with the reply only if it does not follow. */
struct EventsRequest {
    static constexpr char kCommand[] = "events";
    using Reply = EventsReply;
    int64_t from = 1;
    bool follow = false;
};

struct StopReply {
    std::vector<std::string> complaints;  ///< a line for each program that did not end well
};

/** The connection is closed when the headset has ended. */
struct StopRequest : NoMembers {
    static constexpr char kCommand[] = "stop";
    using Reply = StopReply;
};

using Request = std::variant<StateRequest, TagsRequest, DumpRequest, ListRequest, PropsRequest,
                             OpenRequest, CloseRequest, TorchRequest, KillRequest, HangRequest,
                             StartRequest, PlugRequest, WaitRequest, EventsRequest, StopRequest>;

/** "state", "tags" and so on, in the order of Request. */
std::vector<std::string> commandNames();

/** Differs between builds that declare different messages. */
std::string protocolId();

/** One line without its end, such as {"command":"hang","protocol":"...","provider":"external/0"}.
 */
std::string lineOf(const Request& request);

/** @return an error, one line, for what is no request, and for one of another build. */
android::base::Result<Request> parseRequest(const std::string& line);

// Messages as JSON: their members by their names. A reply that lacks one is refused by an
// exception.
#define ORVO_AS_JSON(Type)                                 \
    void to_json(nlohmann::json& json, const Type& value); \
    void from_json(const nlohmann::json& json, Type& /* NOLINT */ value)
ORVO_AS_JSON(HeadsetState);
ORVO_AS_JSON(CameraState);
ORVO_AS_JSON(TimelineEvent);
ORVO_AS_JSON(PropertyState);
ORVO_AS_JSON(ServiceTags);
ORVO_AS_JSON(ServiceDump);
ORVO_AS_JSON(ServiceList);
ORVO_AS_JSON(OpenReply);
ORVO_AS_JSON(CloseReply);
ORVO_AS_JSON(TorchReply);
ORVO_AS_JSON(ProcessReply);
ORVO_AS_JSON(PlugReply);
ORVO_AS_JSON(WaitReply);
ORVO_AS_JSON(EventsReply);
ORVO_AS_JSON(StopReply);
#undef ORVO_AS_JSON

}  // namespace orvo::simulator
