// SPDX-License-Identifier: Apache-2.0
// TourPlan: everything that can be wrong with a device's files is found here, before anything runs.

#include "simulator/camerasim/tour/TourPlan.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include <VintfManifest.h>

#include "provider/naming/DeviceInfo.h"
#include "simulator/description/ProviderMap.h"

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;
using android::base::unexpected;

namespace {

constexpr char kCameraProvider[] = "android.hardware.camera.provider@2.4::ICameraProvider";
constexpr char kProviderControl[] = "vendor.orvo.simulator@1.0::ISimulatedProvider";
constexpr char kMrInstance[] = "default/0";

std::string typeOf(const std::string& instance) {
    namespace naming = ::android::hardware::camera::provider::V2_4::implementation;
    return naming::typeOfInstance(instance).value_or(instance);
}

/** Every instance that a program registers must be declared, or nobody would find it. */
Result<void> checkDeclared(const HeadsetDescription& device) {
    const std::string directory = device.vendorTree() + "/etc/vintf";
    orvo::VintfManifest manifest;
    if (auto added = manifest.addDirectory(directory); !added) return added;
    const auto isDeclared = [&](const char* interface, const std::string& instance) {
        return manifest.transportOf(interface, instance).has_value();
    };
    for (const ProviderProgram& provider : device.providers) {
        for (const char* interface : {kCameraProvider, kProviderControl}) {
            if (isDeclared(interface, provider.instance)) continue;
            return Error() << "nobody declares " << interface << "/" << provider.instance
                           << "; add it to " << directory << "/manifest.xml";
        }
    }
    for (const std::string& instance : device.serviceInstances) {
        if (isDeclared(kCameraProvider, instance)) continue;
        return Error() << "nobody declares " << kCameraProvider << "/" << instance << "; add it to "
                       << directory << "/manifest.xml";
    }
    return {};
}

/** The parts of a name that a description has checked already. */
TourCamera asSeenThrough(const std::string& aggregator, const ProviderDescription& provider,
                         const CameraDescription& camera) {
    TourCamera seen;
    const size_t versionEnd = camera.name.find('/');
    seen.provider = provider.instance;
    seen.described = camera;
    seen.id = camera.name.substr(camera.name.find('/', versionEnd + 1) + 1);
    seen.frameworkName =
            camera.name.substr(0, versionEnd) + "/" + typeOf(aggregator) + "/" + seen.id;
    seen.idProperty = "camera." + typeOf(provider.instance) + ".ids";
    return seen;
}

/** The first service instance with something behind it, and the descriptions of that. */
Result<void> planProviders(const HeadsetDescription& device, TourPlan* plan) {
    const std::string file = device.vendorTree() + "/etc/orvo_vendor_manifest.xml";
    const Result<ProviderMap> map = ProviderMap::read(file);
    if (!map) return unexpected(map.error());
    for (const std::string& instance : device.serviceInstances) {
        const std::vector<std::string> names = map->behind(instance);
        if (instance == kMrInstance || names.empty()) continue;
        plan->aggregator = instance;
        for (const std::string& name : names) {
            const auto same = [&](const ProviderProgram& one) { return one.instance == name; };
            const auto program =
                    std::find_if(device.providers.begin(), device.providers.end(), same);
            if (program == device.providers.end()) {
                return Error() << file << ": nothing provides '" << name << "' behind " << instance
                               << "; add its description to device.yaml, or take the entry out";
            }
            const auto provider = ProviderDescription::read(program->description);
            if (!provider) return unexpected(provider.error());
            plan->behind.push_back(*provider);
        }
        return {};
    }
    return Error() << file << ": no instance that device.yaml's service serves has an entry; add "
                   << "one such as <instance replace=\"external/0\">legacy/0</instance>";
}

std::string namesBehind(const TourPlan& plan) {
    std::string names;
    for (const ProviderDescription& provider : plan.behind) names += " " + provider.instance;
    return names;
}

Result<void> planCameras(TourPlan* plan) {
    std::optional<TourCamera> lit, plugged;
    for (const ProviderDescription& provider : plan->behind) {
        std::map<std::string, CameraDescription> byName;  // a provider reports them in this order
        for (const CameraDescription& camera : provider.cameras) byName[camera.name] = camera;
        for (const auto& [name, camera] : byName) {
            const TourCamera seen = asSeenThrough(plan->aggregator, provider, camera);
            if (camera.present && (provider.reportsBuiltIn || !camera.builtIn())) {
                plan->announced.push_back(seen);
                const bool usable = camera.flash && camera.majorVersion == 3;
                if (usable && provider.torchSupported && !lit) lit = seen;
            } else if (!camera.builtIn() && !camera.present && !plugged) {
                plugged = seen;
            }
        }
    }
    if (!lit) {
        return Error()
               << "the tour opens a camera behind " << plan->aggregator
               << " that is of version 3, present and reported, with a flash; describe one"
               << " with 'flash: true', and 'reportsBuiltIn: true' for its provider; the map"
               << " has behind it:" << namesBehind(*plan);
    }
    if (!plugged) {
        return Error() << "the tour plugs in a camera behind " << plan->aggregator
                       << "; describe one with 'facing: EXTERNAL' and 'present: false'";
    }
    plan->lit = *lit;
    plan->plugged = *plugged;
    return {};
}

Result<void> planMrProvider(const HeadsetDescription& device, TourPlan* plan) {
    const auto& served = device.serviceInstances;
    if (std::find(served.begin(), served.end(), kMrInstance) == served.end()) {
        return Error() << device.directory << "/device.yaml: the tour ends with " << kMrInstance
                       << "; add it to the service";
    }
    const auto provider = ProviderDescription::read(device.vendorTree() + "/etc/mrprovider.yaml");
    if (!provider) return unexpected(provider.error());
    plan->mrProvider = *provider;
    return {};
}

}  // namespace

Result<TourPlan> TourPlan::make(const HeadsetDescription& device) {
    TourPlan plan;
    Result<void> step = checkDeclared(device);
    if (step) step = planProviders(device, &plan);
    if (step) step = planCameras(&plan);
    if (step) step = planMrProvider(device, &plan);
    if (!step) return unexpected(step.error());
    return plan;
}

}  // namespace orvo::simulator
