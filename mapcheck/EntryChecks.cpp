// SPDX-License-Identifier: Apache-2.0
// Duplicates, providers that go together, undeclared instances and cameras with one name.

#include "mapcheck/EntryChecks.h"

#include <unordered_map>

#include "mapcheck/NameChecks.h"
#include "provider/naming/DeviceInfo.h"

namespace orvo::mapcheck {
namespace {

namespace naming = ::android::hardware::camera::provider::V2_4::implementation;

/** One camera of a provider. */
struct Camera {
    const MapEntry* entry;
    std::string name;  // As its provider reports it.
};

/** What stands behind one key so far. */
struct Instance {
    std::unordered_map<std::string, const MapEntry*> byValue;  // Key: the provider.
    std::unordered_map<std::string, const MapEntry*> byType;   // Key: the type of the provider.
    std::unordered_map<std::string, Camera> byFrameworkName;   // Key: the camera's name outside.
};

class Checker {
  public:
    Checker(const Surroundings& surroundings, Findings* findings)
        : mSurroundings(surroundings), mFindings(findings) {}

    void check(const MapEntry& entry) {
        Instance& instance = mInstances[entry.key];
        // What is wrong with the names of a repeated entry was said about the first one.
        if (!addValue(entry, &instance)) return;
        if (checkKey(entry, mFindings)) checkDeclared(entry, entry.key, "key");
        if (!checkValue(entry, mFindings)) return;
        checkDeclared(entry, entry.value, "value");
        addCameras(entry, &instance);
    }

  private:
    // False for a repeated entry.
    bool addValue(const MapEntry& entry, Instance* instance) {
        const auto [first, isNew] = instance->byValue.try_emplace(entry.value, &entry);
        if (isNew) {
            addType(entry, instance);
            return true;
        }
        mFindings->warning(entry.line, "duplicate",
                           quoted(entry.value) + " is already behind " + quoted(entry.key) +
                                   ", so this entry adds nothing; remove it");
        mFindings->note(first->second->line, "the first entry of the two");
        return false;
    }

    void addType(const MapEntry& entry, Instance* instance) {
        if (!isPlainName(entry.value)) return;
        const std::string type = typeOf(entry.value);
        const auto [first, isNew] = instance->byType.try_emplace(type, &entry);
        if (isNew) return;
        mFindings->warning(entry.line, "same-type",
                           quoted(entry.value) + " and " + quoted(first->second->value) +
                                   " are both of the type " + quoted(type) +
                                   ": the death of one withdraws the cameras of both");
        mFindings->note(first->second->line, "the first provider of this type");
    }

    void checkDeclared(const MapEntry& entry, const std::string& name, const std::string& what) {
        if (mSurroundings.manifest == nullptr || mSurroundings.manifest->declares(name)) return;
        const char* const consequence =
                what == "key" ? "nobody can get a service of that name" : "it is never connected";
        mFindings->error(entry.line, ("undeclared-" + what).c_str(),
                         "the manifest does not declare the " + what + " " + quoted(name) + ": " +
                                 consequence + "; declare it or correct the name");
    }

    void addCameras(const MapEntry& entry, Instance* instance) {
        const auto found = mSurroundings.devices.find(entry.value);
        if (found == mSurroundings.devices.end() || !isAskedFor(entry.key)) return;
        for (const std::string& name : found->second) {
            naming::DeviceInfo info;
            naming::parseDeviceString(name, info);
            const std::string frameworkName =
                    info.prefix + "@" + info.version + "/" + typeOf(entry.key) + "/" + info.id;
            const auto [first, isNew] =
                    instance->byFrameworkName.try_emplace(frameworkName, Camera{&entry, name});
            if (isNew || first->second.entry == &entry) continue;
            mFindings->error(entry.line, "device-collision",
                             first->second.name + " and " + name + " are both " + frameworkName +
                                     " to the framework: only the one that is reported last can " +
                                     "be opened; give one of them another id");
            mFindings->note(first->second.entry->line, "the provider of " + first->second.name);
        }
    }

    const Surroundings& mSurroundings;
    Findings* const mFindings;
    std::unordered_map<std::string, Instance> mInstances;  // Key: the key of its entries.
};

}  // namespace

void checkEntries(const std::vector<MapEntry>& entries, const Surroundings& surroundings,
                  Findings* findings) {
    Checker checker(surroundings, findings);
    for (const MapEntry& entry : entries) checker.check(entry);
}

}  // namespace orvo::mapcheck
