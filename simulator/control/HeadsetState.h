// SPDX-License-Identifier: Apache-2.0
// HeadsetState: what a running device tells of itself, in C++ and as JSON.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace orvo::simulator {

/** A camera of a provider process, as the process itself sees it. */
struct CameraOfProvider {
    std::string name;    ///< in the provider's words, such as "device@3.2/external/100"
    std::string status;  ///< "PRESENT", "NOT_PRESENT" or "ENUMERATING"
};

/** A provider: a process of its own, an in-process one, or only a name in some file. */
struct ProviderState {
    std::string instance;  ///< such as "external/0"
    std::string behind;    ///< the instance that the map puts it behind; "" if the map has none
    bool declared;         ///< in the VINTF manifest
    bool described;        ///< the device description has a process for it
    bool inProcess;        ///< served inside the camera provider service itself
    bool running;
    bool hung;            ///< running, but stopped by a signal
    int pid;              ///< 0 if it does not run
    bool connected;       ///< the service has registered its callback with this very process
    int deaths;           ///< how often its process has ended since the device was booted
    std::string lastEnd;  ///< how it ended last, such as "ended by signal 9 (Killed)"; or ""
    std::string problem;  ///< why none of its cameras can be seen, one line; "" if nothing is wrong
    std::vector<CameraOfProvider> devices;  ///< empty if it does not run or does not answer
};

/** A camera as the framework sees it. */
struct CameraState {
    std::string name;     ///< in the framework's words, such as "device@3.2/legacy/100"
    std::string service;  ///< the instance that serves it
    std::string status;   ///< as last reported
    std::string torch;    ///< as last reported; "" if never
    bool open;            ///< held open by `camerasim open --hold`
};

/** The camera provider service. */
struct ServiceState {
    bool running;
    int pid;       ///< 0 if it does not run
    int restarts;  ///< how often it has been started again after it had ended
    std::string lastEnd;
    std::vector<std::string> instances;  ///< what it serves
};

/** The whole device at one moment. */
struct HeadsetState {
    std::string name;       ///< from its description
    std::string directory;  ///< of its description
    std::string root;       ///< its temporary directory
    int pid;                ///< of the program that booted it
    double uptimeSeconds;
    ServiceState service;
    std::vector<ProviderState> providers;
    std::vector<CameraState> cameras;
};

/** One line of the timeline. */
struct TimelineEvent {
    int64_t number;    ///< 1 and up, without gaps
    std::string time;  ///< of day, local, such as "14:03:07.123456"
    double seconds;    ///< since the boot
    std::string kind;  ///< "camera", "torch", "process", "service", "provider" or "command"
    std::string who;   ///< the camera or program that it is about
    std::string what;  ///< such as "PRESENT" or "ended by signal 9 (Killed)"
};

/** A stored property. */
struct PropertyState {
    std::string name;
    std::string value;
};

/** The members as JSON, by their names; from_json() throws at one that is missing. */
void to_json(nlohmann::json& json, const CameraOfProvider& value);
void from_json(const nlohmann::json& json, CameraOfProvider& value);
void to_json(nlohmann::json& json, const ProviderState& value);
void from_json(const nlohmann::json& json, ProviderState& value);
void to_json(nlohmann::json& json, const CameraState& value);
void from_json(const nlohmann::json& json, CameraState& value);
void to_json(nlohmann::json& json, const ServiceState& value);
void from_json(const nlohmann::json& json, ServiceState& value);
void to_json(nlohmann::json& json, const HeadsetState& value);
void from_json(const nlohmann::json& json, HeadsetState& value);
void to_json(nlohmann::json& json, const TimelineEvent& value);
void from_json(const nlohmann::json& json, TimelineEvent& value);
void to_json(nlohmann::json& json, const PropertyState& value);
void from_json(const nlohmann::json& json, PropertyState& value);

}  // namespace orvo::simulator
