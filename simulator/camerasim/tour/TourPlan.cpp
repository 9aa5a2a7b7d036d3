// SPDX-License-Identifier: Apache-2.0
// TourPlan: from the map to the providers behind it, and to the cameras of those.

#include "simulator/camerasim/tour/TourPlan.h"

#include <algorithm>
#include <map>

#include "provider/naming/DeviceInfo.h"
#include "simulator/description/HeadsetFiles.h"

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;
using android::base::unexpected;

namespace {

std::string typeOf(const std::string& instance) {
    namespace naming = ::android::hardware::camera::provider::V2_4::implementation;
    return naming::typeOfInstance(instance).value_or(instance);
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
Result<void> planProviders(const HeadsetFiles& files, TourPlan* plan) {
    for (const std::string& instance : plan->served) {
        if (instance == kMrInstance || files.allBehind(instance).empty()) continue;
        plan->aggregator = instance;
        for (const std::string& behind : files.allBehind(instance)) {
            const auto& programs = files.description().providers;
            const auto program =
                    std::find_if(programs.begin(), programs.end(),
                                 [&](const auto& one) { return one.instance == behind; });
            if (program == programs.end()) {
                return Error() << "nothing provides '" << behind << "', which the map puts behind "
                               << instance << "; add its description to device.yaml, or take the"
                               << " entry out";
            }
            const auto provider = ProviderDescription::read(program->description);
            if (!provider) return unexpected(provider.error());
            plan->behind.push_back(*provider);
        }
        return {};
    }
    return {};
}

void planCameras(TourPlan* plan) {
    for (const ProviderDescription& provider : plan->behind) {
        std::map<std::string, CameraDescription> byName;  // a provider reports them in this order
        for (const CameraDescription& camera : provider.cameras) byName[camera.name] = camera;
        for (const auto& [name, camera] : byName) {
            const TourCamera seen = asSeenThrough(plan->aggregator, provider, camera);
            if (camera.present && (provider.reportsBuiltIn || !camera.builtIn())) {
                plan->announced.push_back(seen);
                const bool better = !plan->opened || (camera.flash && !plan->hasTorch());
                if (camera.majorVersion == 3 && better) plan->opened = seen;
            } else if (!camera.builtIn() && !camera.present && !plan->plugged) {
                plan->plugged = seen;
            }
        }
    }
}

}  // namespace

Result<TourPlan> TourPlan::make(const std::string& directory) {
    const auto description = HeadsetDescription::read(directory);
    if (!description) return unexpected(description.error());
    const auto files = HeadsetFiles::read(*description);
    if (!files) return unexpected(files.error());

    TourPlan plan;
    plan.name = description->name;
    plan.served = description->serviceInstances;
    for (const ProviderProgram& program : description->providers) {
        plan.processes.push_back(program.instance);
    }
    const auto providers = planProviders(*files, &plan);
    if (!providers) return unexpected(providers.error());
    planCameras(&plan);
    if (std::count(plan.served.begin(), plan.served.end(), kMrInstance) == 0) return plan;
    const auto mr = ProviderDescription::read(description->vendorTree() + "/etc/mrprovider.yaml");
    if (!mr) return unexpected(mr.error());
    plan.mrProvider = *mr;
    return plan;
}

}  // namespace orvo::simulator
