// SPDX-License-Identifier: Apache-2.0
// Everything around the provider object in one run: who it calls, who calls it, and what is left.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "provider/OrvoCameraServiceImplementation.h"
#include "tests/interleavings/Machine.h"
#include "tests/interleavings/Scenario.h"

namespace orvo::interleavings {

using Object =
        android::hardware::camera::provider::V2_4::implementation::OrvoCameraServiceImplementation;
using android::hardware::camera::provider::V2_4::ICameraProvider;
using android::hardware::camera::provider::V2_4::ICameraProviderCallback;

/** Whether somebody holds a callback: read by each call of it, written when the last one lets go.
 */
constexpr Cells kCallbackHeldCell = Cells{1} << 15;

/** Thrown to end the one thread that ends the process. */
struct ProcessEnded {};

class Framework;
class Peer;

/** The processes of one underlying provider, one after the other, as the service manager sees it.
 */
struct ProviderProcess {
    struct Link {
        android::wp<android::hardware::hidl_death_recipient> recipient;
        uint64_t cookie;
    };

    std::string name;
    Cells cell = 0;      ///< Whether it lives, its links and its callback.
    Cells shimCell = 0;  ///< Its shim, and the library's reference to it.
    int generation = 0;  ///< Of the one that runs or ran last; from 1.
    bool alive = false;
    int failures = 0;         ///< So many look-ups fail before it runs again.
    bool registered = false;  ///< The provider object is the callback of the one that runs.
    android::sp<Peer> service;
    android::sp<Peer> shim;  ///< The newest; its library keeps it.
    /** Of all of both: a bare pointer may be all that is left of one. */
    std::vector<android::wp<Peer>> memories;
    std::vector<Link> links;
};

/** The library's entry point. */
ICameraProvider* loadInstance(const char* name);
/** The library has not loaded the MR library any more. */
void forgetMrLibrary();

/** Set by a test: every operation may touch every member, whatever it is known to touch. */
extern bool gTouchAnything;

/** At most one exists at a time. */
class World {
  public:
    World(const Scenario& scenario, Machine& machine);
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /** Null outside of a run. */
    static World* current();

    /** One fact in each line: what is left, what was told, logged and answered. */
    std::string outcome();
    /** Lets go of everything; a finding for everything that is still there. */
    void close();

    // For those around the object.
    Machine& machine() { return mMachine; }
    ProviderProcess& process(const std::string& name);
    /** A finding when nobody holds `called` while it is being called. */
    void expectHeld(const android::RefBase* called, Cells cell, const std::string& what);
    void tell(int framework, const std::string& camera, const std::string& what);
    void log(int priority, const std::string& text);
    std::string property(const std::string& name) const;
    void setProperty(const std::string& name, const std::string& value);
    /** The process ends here, whatever else is going on in it. */
    [[noreturn]] void endProcess(const std::string& why);
    /** What an MR provider is to the caller. */
    ICameraProvider* mrProvider();
    bool mrLibraryIsOpen = false;

    static Cells cameraCell(const std::string& name);
    static Cells allCameraCells();
    static Cells propertyCell(const std::string& name);

  private:
    void addOperation(const Operation& operation);
    Cells members(const Operation& operation) const;
    bool isReady(const Operation& operation) const;
    void perform(const Operation& operation);
    void report(const Operation& operation);
    android::sp<Framework> makeFramework(int number);
    void setCallback(android::sp<Framework> framework);
    void die(ProviderProcess& process);
    void ask(const Operation& operation);
    void load(const Operation& operation);
    void answer(const std::string& text);
    Cells changes();
    std::string visibleOutside() const;

    const Scenario mScenario;
    Machine& mMachine;
    std::map<std::string, ProviderProcess> mProcesses;  // Key: instance name.
    std::map<std::string, std::string> mProperties;     // Key: name. Value: value.
    std::map<std::string, std::string> mTold;           // Key: camera. Value: what, in order.
    std::map<std::string, std::string> mLogs;           // Key: operation. Value: its lines.
    std::map<std::string, std::string> mAnswers;        // Key: operation. Value: its answers.
    std::string mEnd;                                   // What was visible when the process ended.
    std::vector<android::wp<Framework>> mMemories;      // Of callbacks, for bare pointers.
    android::sp<Peer> mMrProvider;
    std::shared_ptr<
            android::hardware::camera::provider::V2_4::implementation::ServiceInteractionProxy>
            mProxy;
    std::shared_ptr<orvo::camera::IProviderMapper> mMapper;
    android::sp<Object> mObject;
    std::vector<android::sp<Object>> mFurther;
    std::vector<const void*> mMembers;  // Of all objects, as changes() saw them last.
    std::map<std::string, std::string> mActive;
};

}  // namespace orvo::interleavings
