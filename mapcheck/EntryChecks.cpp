// SPDX-License-Identifier: Apache-2.0
// Duplicates, providers that go together or wait for one another, undeclared instances, and vendor
// tags that hide others.

#include "mapcheck/EntryChecks.h"

#include <unordered_map>

#include "mapcheck/CameraChecks.h"
#include "mapcheck/NameChecks.h"
#include "mapcheck/Utf8.h"

namespace orvo::mapcheck {
namespace {

constexpr char kServedHere[] = "value-is-served-here";

/** A vendor tag of an entry's provider. */
struct KnownTag {
    const MapEntry* entry;
    std::string name;
};

/** What stands behind one key so far. */
struct Instance {
    std::unordered_map<std::string, const MapEntry*> byValue;  // Key: the provider.
    std::unordered_map<std::string, const MapEntry*> byType;   // Key: the type of the provider.
    std::unordered_map<uint32_t, KnownTag> byTag;              // Key: the tag's id.
};

class Checker {
  public:
    Checker(const std::vector<MapEntry>& entries, const Surroundings& surroundings,
            Findings* findings)
        : mSurroundings(surroundings), mFindings(findings), mCameras(findings) {
        for (const MapEntry& entry : entries) {
            if (isAskedFor(entry.key)) mServed.try_emplace(entry.key, &entry);
        }
    }

    void check(const MapEntry& entry) {
        Instance& instance = mInstances[entry.key];
        // What is wrong with the names of a repeated entry was said about the first one.
        if (!addValue(entry, &instance)) return;
        const bool isTaken = checkKey(entry, mFindings);
        if (isTaken) checkDeclared(entry, entry.key, "key");
        const bool isGood = checkValue(entry, mFindings);
        if (!checkServedElsewhere(entry) || !isGood) return;
        checkDeclared(entry, entry.value, "value");
        const auto provider = mSurroundings.providers.find(entry.value);
        if (provider == mSurroundings.providers.end() || !isTaken) return;
        mCameras.add(entry, provider->second.devices);
        for (const VendorTag& tag : provider->second.vendorTags) addTag(entry, tag, &instance);
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

    // Without a manifest everything is.
    bool isDeclared(const std::string& name) const {
        return !mSurroundings.declared || mSurroundings.declared->count(name) != 0;
    }

    void checkDeclared(const MapEntry& entry, const std::string& name, const std::string& what) {
        if (isDeclared(name)) return;
        const char* const consequence =
                what == "key" ? "nobody can get a service of that name" : "it is never connected";
        mFindings->error(entry.line, ("undeclared-" + what).c_str(),
                         "the manifest does not declare the " + what + " " + quoted(name) + ": " +
                                 consequence + "; declare it or correct the name");
    }

    // False for a provider that the library itself serves. The start of one instance waits for the
    // providers behind it, and a service starts its instances one after the other.
    bool checkServedElsewhere(const MapEntry& entry) {
        // What is not declared is not waited for, and a provider behind itself was found already.
        if (!isDeclared(entry.value) || !isAskedFor(entry.key) || entry.value == entry.key) {
            return true;
        }
        const std::string wait = ": a service that is started for " + quoted(entry.key) +
                                 " waits until " + quoted(entry.value) +
                                 " is registered, for ever if it is to register that later itself";
        if (isMRInstance(entry.value)) {
            mFindings->error(entry.line, kServedHere,
                             "the value " + quoted(entry.value) + " is the MR provider, which " +
                                     "this library serves, too" + wait + "; remove the entry");
            return false;
        }
        const auto served = mServed.find(entry.value);
        if (served == mServed.end()) return true;
        mFindings->error(entry.line, kServedHere,
                         "the value " + quoted(entry.value) + " is a key of this map" + wait +
                                 " or if " + quoted(entry.value) + " waits for it; name the " +
                                 "providers behind " + quoted(entry.value));
        mFindings->note(served->second->line, "the first entry of that key");
        return false;
    }

    // The library asks the providers in the order of their names; the framework keeps what it reads
    // last.
    void addTag(const MapEntry& entry, const VendorTag& tag, Instance* instance) {
        const auto [first, isNew] = instance->byTag.try_emplace(tag.id, KnownTag{&entry, tag.name});
        if (isNew) return;
        const KnownTag& other = first->second;
        mFindings->warning(
                entry.line, "vendor-tag-collision",
                quoted(entry.value) + " and " + quoted(other.entry->value) +
                        " both have the vendor tag 0x" + hexadecimal(tag.id, 8) + ", " +
                        escaped(tag.name) + " and " + escaped(other.name) +
                        ": of all tags with one id the framework knows only that of the provider " +
                        "whose name sorts last; give one of them another id");
        mFindings->note(other.entry->line, "the first provider with this tag");
    }

    const Surroundings& mSurroundings;
    Findings* const mFindings;
    CameraChecks mCameras;
    std::unordered_map<std::string, Instance> mInstances;      // Key: the key of its entries.
    std::unordered_map<std::string, const MapEntry*> mServed;  // Key: that of its first entry.
};

}  // namespace

void checkEntries(const std::vector<MapEntry>& entries, const Surroundings& surroundings,
                  Findings* findings) {
    Checker checker(entries, surroundings, findings);
    for (const MapEntry& entry : entries) checker.check(entry);
}

}  // namespace orvo::mapcheck
