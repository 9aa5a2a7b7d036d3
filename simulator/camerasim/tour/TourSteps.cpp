// SPDX-License-Identifier: Apache-2.0
// TourSteps: the steps in their order, what is said of each, and why one may be left out.

#include "simulator/camerasim/tour/Tour.h"

#include <chrono>
#include <cstdio>

namespace orvo::simulator {

std::vector<Tour::Step> Tour::steps() {
    const std::string noFront =
            mPlan.aggregator.empty() ? "nothing that the service serves has a map entry" : "";
    const std::string noCamera =
            mPlan.opened ? "" : "no camera of version 3 is present and reported from the start";
    const std::string noFlash = mPlan.hasTorch() ? "" : "no camera that is reported has a flash";
    const std::string noPlug =
            mPlan.plugged ? "" : "no external camera is described with 'present: false'";
    const std::string noMr = mPlan.mrProvider ? "" : "the service does not serve default/0";
    const TourCamera opened = mPlan.opened.value_or(TourCamera());
    const TourCamera plugged = mPlan.plugged.value_or(TourCamera());
    const std::string first = mPlan.behind.empty() ? "" : mPlan.behind[0].instance;
    return {
            {"Boot",
             "The service manager, " + std::to_string(mPlan.processes.size()) +
                     " provider processes, and the service that loads the library.",
             "", [this] { return boot(); }},
            {"The framework registers with " + mPlan.aggregator,
             "Each provider process reports its cameras; the library renames them.", noFront,
             [this] { return hearOfCameras(); }},
            {"The camera list",
             "One list for all providers, in their own words: names are translated in notifications"
             " only.",
             noFront, [this] { return listCameras(); }},
            {"Torch support", "The first provider answers for all: " + first + ".", noFront,
             [this] { return askForTorch(); }},
            {"Vendor tags",
             "Every provider's sections, behind an empty section of the provider's name.", noFront,
             [this] { return readVendorTags(); }},
            {"A camera's device interface",
             opened.frameworkName + " is " + opened.described.name + " of " + opened.provider +
                     "; the library finds the way back.",
             noCamera, [this] { return readCamera(); }},
            {"The camera is opened and closed",
             "While a camera is open its flash belongs to the session.", noCamera,
             [this] { return openCamera(); }},
            {"A camera is plugged in",
             plugged.described.name + " of " + plugged.provider +
                     " comes; its id is entered in a property.",
             noPlug, [this] { return plugIn(); }},
            {"It is pulled out again", "The framework is told, and the id leaves the property.",
             noPlug, [this] { return pullOut(); }},
            {"The torch of " + opened.frameworkName,
             "Switched through the library; the provider process reports each change.", noFlash,
             [this] { return switchTorch(); }},
            {"The MR provider default/0",
             "Another library inside the service; its own provider answers, untranslated.", noMr,
             [this] { return askMrProvider(); }},
            {"The process of " + opened.provider + " is killed",
             "Its cameras are withdrawn, its ids leave the property; the others stay.", noCamera,
             [this] { return loseProvider(); }},
            {"It is started again",
             "The library tries every half second; the cameras return when it reports them.",
             noCamera, [this] { return regainProvider(); }},
            {"Shutdown", "Every program is told to end, the last one started first.", "",
             [this] { return shutDown(); }},
    };
}

bool Tour::run() {
    mNarrator.title("A guided tour of the simulated device \"" + mPlan.name + "\"");
    const auto start = std::chrono::steady_clock::now();
    const std::vector<Step> all = steps();
    const std::string total = std::to_string(all.size());
    for (const Step& step : all) {
        if (!step.whyNot.empty()) {
            mNarrator.step(step.title, "Left out: " + step.whyNot + ".");
            continue;
        }
        mNarrator.step(step.title, step.explanation);
        if (step.walk()) {
            if (mPause.count() > 0) mWitness.rest(mPause);
            continue;
        }
        const std::string number = std::to_string(mNarrator.steps());
        mNarrator.closing("Step " + number + " of " + total + " was not as expected" +
                                  (number == total ? "." : "; the steps after it were not tried."),
                          false);
        return false;
    }
    char seconds[32];
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    snprintf(seconds, sizeof(seconds), "%.1f s", took.count());
    mNarrator.closing("All " + total + " steps were as expected, in " + seconds + ".", true);
    return true;
}

}  // namespace orvo::simulator
