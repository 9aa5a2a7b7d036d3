// SPDX-License-Identifier: Apache-2.0
// HeadsetCheck: each file for itself, then what one says of another.

#include "simulator/description/HeadsetCheck.h"

#include <algorithm>
#include <set>

#include "host/vintf/VintfManifest.h"
#include "mapcheck/EntryChecks.h"
#include "mapcheck/Finding.h"
#include "mapcheck/MapFile.h"
#include "simulator/description/HeadsetDescription.h"
#include "simulator/description/HeadsetFiles.h"

namespace orvo::simulator {

namespace {

constexpr char kProviderControl[] = "vendor.orvo.simulator@1.0::ISimulatedProvider";

bool contains(const std::vector<std::string>& all, const std::string& one) {
    return std::find(all.begin(), all.end(), one) != all.end();
}

/** Looks at one device; the parts are in the order in which they need one another. */
class Check {
  public:
    explicit Check(const std::string& directory)
        : mDevice(HeadsetDescription::read(directory, &mMistakes)) {}

    std::vector<std::string> run() {
        // Without a vendor tree everything that is in there would be missing.
        if (!mMistakes.empty() && mDevice.name.empty()) return mMistakes;
        readManifest();
        for (const ProviderProgram& program : mDevice.providers) {
            std::vector<std::string> alreadyTold;
            addProvider(ProviderDescription::read(program.description, &alreadyTold), &mProviders);
        }
        const auto& served = mDevice.serviceInstances;
        if (!std::all_of(served.begin(), served.end(), isMrInstance)) checkMap();
        if (std::any_of(served.begin(), served.end(), isMrInstance)) checkMrProvider();
        return mMistakes;
    }

  private:
    void readManifest() {
        const std::string directory = mDevice.vendorTree() + "/etc/vintf";
        VintfManifest manifest;
        const ManifestMistakes mistakes = manifest.addDirectory(directory);
        for (const ManifestMistake& mistake : mistakes) mMistakes.push_back(mistake.toText());
        if (!mistakes.empty()) return;  // what is not declared may only be misspelt

        const std::vector<std::string> declared = manifest.instancesOf(kCameraProvider);
        mDeclared.emplace(declared.begin(), declared.end());
        const auto require = [&](const char* interface, const std::string& instance) {
            if (manifest.transportOf(interface, instance)) return;
            mMistakes.push_back(directory + "/manifest.xml: does not declare " + interface + "/" +
                                instance + ", so nobody finds it; add it");
        };
        for (const std::string& instance : mDevice.serviceInstances) {
            require(kCameraProvider, instance);
        }
        for (const ProviderProgram& provider : mDevice.providers) {
            require(kCameraProvider, provider.instance);
            require(kProviderControl, provider.instance);
        }
    }

    void checkMap() {
        const std::string file = mDevice.vendorTree() + "/etc/orvo_vendor_manifest.xml";
        mapcheck::Findings findings(file);
        const mapcheck::MapFile map = mapcheck::MapFile::read(file, &findings);
        if (map.usable) {
            mapcheck::checkEntries(map.entries, {mDeclared, mProviders}, &findings);
            checkProvided(map, &findings);
        }
        for (const mapcheck::Finding& finding : findings.byLine()) {
            // A warning is of what works.
            if (finding.severity != mapcheck::Severity::ERROR) continue;
            const std::string line = finding.line > 0 ? std::to_string(finding.line) + ":" : "";
            mMistakes.push_back(file + ":" + line + " " + finding.message);
        }
    }

    /** Something stands behind what is served, and it has a process or is served itself. */
    void checkProvided(const mapcheck::MapFile& map, mapcheck::Findings* findings) {
        std::set<std::string> fronts;
        for (const mapcheck::MapEntry& entry : map.entries) {
            fronts.insert(entry.key);
            const bool served = contains(mDevice.serviceInstances, entry.value);
            const bool declared = mDeclared && mDeclared->count(entry.value) != 0;
            if (!declared || served || mProviders.count(entry.value) != 0) continue;
            findings->error(entry.line, "",
                            "nothing provides " + mapcheck::quoted(entry.value) +
                                    ", and who looks for it waits for ever; add its description to "
                                    "device.yaml, or take the entry out");
        }
        for (const std::string& instance : mDevice.serviceInstances) {
            if (isMrInstance(instance) || fronts.count(instance) != 0) continue;
            findings->error(mapcheck::kWholeFile, "",
                            "nothing stands behind " + mapcheck::quoted(instance) +
                                    ", which is to be served; add an entry such as <instance "
                                    "replace=\"external/0\">" +
                                    mapcheck::escaped(instance) + "</instance>");
        }
    }

    void checkMrProvider() {
        const std::string file = mDevice.vendorTree() + "/etc/mrprovider.yaml";
        const std::string instance = ProviderDescription::read(file, &mMistakes).instance;
        if (instance.empty() || instance == kMrInstance) return;
        mMistakes.push_back(file + ": describes " + instance + "; the service asks it for " +
                            kMrInstance);
    }

    std::vector<std::string> mMistakes;
    const HeadsetDescription mDevice;
    std::optional<std::set<std::string>> mDeclared;  ///< nothing if the manifest is malformed
    mapcheck::Providers mProviders;
};

}  // namespace

std::vector<std::string> checkHeadset(const std::string& directory) {
    std::vector<std::string> mistakes;
    // One description that is named twice has each mistake once.
    for (const std::string& mistake : Check(directory).run()) {
        if (!contains(mistakes, mistake)) mistakes.push_back(mistake);
    }
    return mistakes;
}

void addProvider(const ProviderDescription& description, mapcheck::Providers* providers) {
    if (description.instance.empty()) return;
    mapcheck::Provider& provider = (*providers)[description.instance];
    for (const CameraDescription& camera : description.cameras) {
        provider.devices.push_back(camera.name);
    }
    for (const auto& section : description.vendorTags) {
        for (const auto& tag : section.tags) {
            provider.vendorTags.push_back(
                    {tag.tagId, std::string(section.sectionName) + "." + std::string(tag.tagName)});
        }
    }
}

}  // namespace orvo::simulator
