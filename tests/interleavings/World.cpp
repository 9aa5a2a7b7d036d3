// SPDX-License-Identifier: Apache-2.0
// Sets a run up, and says what came of it.

#include "tests/interleavings/World.h"

#include <stdlib.h>

#include <algorithm>
#include <functional>
#include <utility>

#include "tests/interleavings/Faults.h"
#include "tests/interleavings/Peers.h"

namespace orvo::interleavings {

using android::sp;
using android::wp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;
using android::hardware::camera::provider::V2_4::implementation::ServiceInteractionProxy;

namespace {

World* gCurrent = nullptr;

constexpr char kInstance[] = "legacy/0";

// One bit for each thing that has one; names share what is left.
constexpr Cells kCallbackCell = 1;
constexpr Cells providerCell(int number) {
    return Cells{1} << (1 + number);
}
constexpr Cells shimCell(int number) {
    return Cells{1} << (5 + number);
}
constexpr Cells processCell(int number) {
    return Cells{1} << (9 + number);
}
constexpr Cells kEndCell = Cells{1} << 13;
constexpr int kFirstPropertyCell = 20;
constexpr int kFirstCameraCell = 32;
constexpr Cells kOutsideCells = ~Cells{0} << kFirstPropertyCell;

// The service manager.
class Proxy : public ServiceInteractionProxy {
  public:
    explicit Proxy(std::vector<hidl_string> names) : mNames(std::move(names)) {}

    bool registerForNotifications(
            const std::string&,
            const sp<android::hidl::manager::V1_0::IServiceNotification>&) override {
        return false;
    }

    sp<ICameraProvider> getService(const std::string& name) override {
        World& world = *World::current();
        ProviderProcess& process = world.process(name);
        Step call;
        call.kind = "look up";
        call.detail = name;
        call.writes = process.cell;
        world.machine().before(call);
        if (!process.alive && process.failures > 0) {
            --process.failures;
        } else if (!process.alive) {
            process.alive = true;
            process.registered = false;
            ++process.generation;
            process.service = new Peer(process, process.generation);
            process.memories.push_back(process.service);
        }
        const sp<ICameraProvider> service = process.service;
        world.machine().after();
        return service;
    }

    hidl_vec<hidl_string> listServices() override {
        World::current()->machine().pass("list services", "");
        return mNames;
    }

  private:
    const std::vector<hidl_string> mNames;
};

class Mapper : public orvo::camera::IProviderMapper {
  public:
    explicit Mapper(std::vector<std::string> names) : mNames(std::move(names)) {}
    bool loadMapFromFile(const char*) override { return true; }
    std::vector<std::string> getReplacementProviderNames(const char*) override { return mNames; }

  private:
    const std::vector<std::string> mNames;
};

std::string generationOf(const ICameraProvider* peer) {
    if (peer == nullptr) return "none";
    return std::to_string(static_cast<const Peer*>(peer)->generation());
}

}  // namespace

bool gTouchAnything = false;

World* World::current() {
    return gCurrent;
}

Cells World::cameraCell(const std::string& name) {
    return Cells{1} << (kFirstCameraCell + std::hash<std::string>()(name) % 32);
}

Cells World::allCameraCells() {
    return ~Cells{0} << kFirstCameraCell;
}

Cells World::propertyCell(const std::string& name) {
    return Cells{1} << (kFirstPropertyCell + std::hash<std::string>()(name) % 12);
}

World::World(const Scenario& scenario, Machine& machine) : mScenario(scenario), mMachine(machine) {
    gCurrent = this;
    forgetMrLibrary();
    std::vector<std::string> names;
    for (int number = 0; number < scenario.providers; ++number) {
        names.push_back(scenario.provider(number));
        ProviderProcess& process = mProcesses[names.back()];
        process.name = names.back();
        process.cell = processCell(number);
        process.shimCell = shimCell(number);
    }
    mProxy = std::make_shared<Proxy>(std::vector<hidl_string>(names.begin(), names.end()));
    mMapper = std::make_shared<Mapper>(names);
    mObject = makeObject(kInstance, mProxy, mMapper);
    mObject->initialize();
    mMrProvider = new Peer(mProcesses["default/0"], 1);
    for (const Operation& operation : scenario.operations)
        mTold[Scenario::frameworkDevice(operation)];
    if (scenario.callback) mObject->setCallback(makeFramework(1));
    if (scenario.present) {
        mObject->cameraDeviceStatusChange(scenario.device({'+', 0, 1}),
                                          CameraDeviceStatus::PRESENT);
    }
    mLogs.clear();
    for (auto& [name, process] : mProcesses) process.failures = scenario.failures;

    changes();
    machine.changes = [this] { return changes(); };
    machine.describe = [this](int parent, std::string& kind, std::string& name, Cells& members) {
        const Operation& death = mScenario.operations[parent % kMostOperations];
        kind = "reconnection";
        name = kind + " of " + mMachine.name(parent % kMostOperations);
        members = providerCell(death.provider) | shimCell(death.provider);
        if (gTouchAnything) members = this->members(death);
    };
    for (const Operation& operation : mScenario.operations) addOperation(operation);
}

World::~World() {
    gCurrent = nullptr;
}

void World::addOperation(const Operation& operation) {
    std::function<bool()> ready;
    Step first;
    first.kind = "begin";
    first.runsLibrary = true;
    if (operation.what == 'E' || operation.what == '^') {
        ready = [this, &operation] { return isReady(operation); };
        first.reads = processCell(operation.provider);
    }
    if (operation.kind() == "death") {
        first.kind = "die";
        first.detail = mScenario.provider(operation.provider);
        first.writes = processCell(operation.provider);
        first.runsLibrary = false;
    }
    size_t earlier = 0;
    const auto& all = mScenario.operations;
    for (const Operation& other : all) {
        if (&other < &operation && other.text() == operation.text()) ++earlier;
    }
    const std::string name = operation.text() + std::string(earlier, '\'');
    mMachine.add(
            operation.kind(), name, members(operation), first,
            [this, &operation] { perform(operation); }, ready);
}

Cells World::members(const Operation& operation) const {
    Cells all = 0;
    for (int number = 0; number < mScenario.providers; ++number) {
        if (gTouchAnything) all |= kCallbackCell | providerCell(number) | shimCell(number);
        if (operation.what == 'V') all |= providerCell(number);
        if (operation.kind() == "load legacy/0") all |= providerCell(number) | shimCell(number);
        if (operation.kind() == "list" || operation.kind() == "torch support" ||
            operation.kind() == "interface" || operation.kind() == "setCallback") {
            all |= shimCell(number);
        }
    }
    if (operation.kind() == "death") {
        all |= providerCell(operation.provider) | kCallbackCell;
    }
    if (operation.kind() == "setCallback" || operation.kind() == "torch" ||
        operation.kind() == "report") {
        all |= kCallbackCell;
    }
    return all;
}

bool World::isReady(const Operation& operation) const {
    const ProviderProcess& process = mProcesses.at(mScenario.provider(operation.provider));
    return process.alive && process.generation > 1 && (operation.what == 'E' || process.registered);
}

void World::answer(const std::string& text) {
    mAnswers[mMachine.name(mMachine.self())] += text + "; ";
}

ICameraProvider* World::mrProvider() {
    return mMrProvider.get();
}

ProviderProcess& World::process(const std::string& name) {
    return mProcesses.at(name);
}

void World::expectHeld(const android::RefBase* called, Cells cell, const std::string& what) {
    mMachine.touch(cell, 0);
    if (called->getStrongCount() > 0) return;
    mMachine.fail(mMachine.name(mMachine.self()) + " uses a reference of nobody: " + what);
}

void World::tell(int framework, const std::string& camera, const std::string& what) {
    mTold[camera] += what + " (" + std::to_string(framework) + ") ";
}

void World::log(int priority, const std::string& text) {
    if (Machine::current() == nullptr) return;
    mLogs[mMachine.name(mMachine.self())] += std::to_string(priority) + " " + text + "; ";
}

std::string World::property(const std::string& name) const {
    const auto found = mProperties.find(name);
    return found == mProperties.end() ? "" : found->second;
}

void World::setProperty(const std::string& name, const std::string& value) {
    mProperties[name] = value;
}

void World::endProcess(const std::string& why) {
    Step end;
    end.kind = "end the process";
    end.detail = why;
    end.reads = kOutsideCells;
    end.writes = kEndCell;
    mMachine.before(end);
    if (mEnd.empty()) mEnd = "the process ends: " + why + "\n" + visibleOutside();
    throw ProcessEnded();
}

Cells World::changes() {
    std::vector<const void*> members;
    std::vector<Cells> cells;
    const auto add = [&](const void* member, Cells cell) {
        members.push_back(member);
        cells.push_back(cell);
    };
    const auto addObject = [&](const Object& object) {
        add(object.mCallback.get(), kCallbackCell);
        for (int number = 0; number < mScenario.providers; ++number) {
            const auto* const descriptor = Object::HALDescriptor::findByName(
                    object.mHalDescriptors, mScenario.provider(number));
            add(descriptor->mProvider.get(), providerCell(number));
            add(descriptor->mShim.unsafe_get(), shimCell(number));
        }
    };
    addObject(*mObject);
    for (const sp<Object>& further : mFurther) addObject(*further);
    Cells changed = 0;
    for (size_t i = 0; i < mMembers.size(); ++i) {
        if (members[i] != mMembers[i]) changed |= cells[i];
    }
    mMembers = std::move(members);
    if (mActive != mObject->mActiveDevices) {
        mActive = mObject->mActiveDevices;
        if (Machine::current() != nullptr && !mMachine.holds()) {
            mMachine.fail(mMachine.name(mMachine.self()) +
                          " changes the active devices without the lock");
        }
    }
    return changed;
}

std::string World::visibleOutside() const {
    std::string text;
    for (const auto& [name, value] : mProperties) text += name + " = " + value + "\n";
    for (const auto& [camera, told] : mTold) text += camera + " told: " + told + "\n";
    return text;
}

std::string World::outcome() {
    if (!mEnd.empty()) return mEnd;
    std::string text = visibleOutside();
    const auto* const used = static_cast<const Framework*>(mObject->mCallback.get());
    text += "callback in use: " + (used == nullptr ? "none" : std::to_string(used->number)) + "\n";
    for (const auto& [key, value] : mObject->mActiveDevices) {
        text += "active: " + key + " = " + value + "\n";
    }
    for (int number = 0; number < mScenario.providers; ++number) {
        const ProviderProcess& process = mProcesses.at(mScenario.provider(number));
        const void* const shim = mMembers[2 + 2 * number];
        const bool shimIsNew = process.shim != nullptr && shim == process.shim.get();
        text += process.name + ": process " + std::to_string(process.generation) +
                (process.alive ? "" : " dead") + (process.registered ? " registered" : "") +
                ", links " + std::to_string(process.links.size()) + ", service " +
                generationOf(static_cast<const ICameraProvider*>(mMembers[1 + 2 * number])) +
                ", shim " +
                (shim == nullptr ? "none"
                 : shimIsNew     ? "newest"
                                 : "gone") +
                "\n";
    }
    for (const auto& [name, lines] : mLogs) text += name + " logs: " + lines + "\n";
    for (const auto& [name, said] : mAnswers) text += name + " is answered: " + said + "\n";
    return text;
}

void World::close() {
    mMachine.changes = nullptr;
    for (auto& [name, process] : mProcesses) {
        process.service.clear();
        process.shim.clear();
        process.memories.clear();
    }
    const wp<Object> object = mObject;
    mObject.clear();
    mFurther.clear();
    mMemories.clear();
    mMrProvider.clear();
    if (object.promote() != nullptr) mMachine.fail("the provider object is left");
    if (Watched<ICameraProvider>::alive + Watched<ICameraProviderCallback>::alive > 0) {
        mMachine.fail("a provider, a shim or a callback is left");
        Watched<ICameraProvider>::alive = Watched<ICameraProviderCallback>::alive = 0;
    }
}

}  // namespace orvo::interleavings
