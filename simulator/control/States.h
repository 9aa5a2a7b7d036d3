// SPDX-License-Identifier: Apache-2.0
// States: what a running headset tells of itself, and what its answers are made of.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

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
    int deaths;           ///< how often its process has ended since the headset was booted
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

/** The whole headset at one moment. */
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
    /** "camera", "torch", "process", "service", "provider", "warning" or "command" */
    std::string kind;
    std::string who;   ///< the camera or program that it is about
    std::string what;  ///< such as "PRESENT" or "ended by signal 9 (Killed)"
};

/** A stored property. */
struct PropertyState {
    std::string name;
    std::string value;
};

/** One vendor tag. */
struct VendorTag {
    uint32_t id;
    std::string name;
    std::string type;  ///< such as "FLOAT"
};

struct TagSection {
    std::string name;
    std::vector<VendorTag> tags;
};

/** The vendor tags that one instance of the service answers with. */
struct ServiceTags {
    std::string service;
    std::string status;  ///< such as "OK"
    std::vector<TagSection> sections;
};

/** What one instance of the service writes for whoever looks at it. */
struct ServiceDump {
    std::string service;
    std::string text;
};

/** What one instance of the service answers when it is asked for its cameras and for torches. */
struct ServiceList {
    std::string service;
    std::string status;              ///< of the list
    std::vector<std::string> names;  ///< in the providers' words
    std::string torchStatus;
    bool torchSupported;
};

/** One static characteristic of a camera. */
struct Characteristic {
    uint32_t tag;
    std::string type;   ///< such as "INT32"
    std::string value;  ///< for people
};

}  // namespace orvo::simulator
