// SPDX-License-Identifier: Apache-2.0
// StormModel: what must be true of a device whose providers come and go, from its descriptions.

#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/description/HeadsetDescription.h"
#include "simulator/description/ProviderDescription.h"

namespace orvo::simulator::testing {

/** A camera of a provider behind the aggregating one. */
struct StormCamera {
    std::string provider;  ///< instance, such as "external/0"
    CameraDescription described;
    std::string frameworkName;  ///< such as "device@3.2/legacy/100"
    std::string type;           ///< such as "external"
    std::string id;             ///< such as "100"
};

/**
 * The truth about the providers, told by whoever moves them, and what follows from it once nothing
 * is under way any more: a camera is active exactly if its provider's process lives, and, for one
 * that is not built in, if it is plugged into that process. For one thread.
 */
class StormModel {
  public:
    /** Reads the descriptions. @param type the aggregating provider's own, such as "legacy". */
    static android::base::Result<StormModel> read(const HeadsetDescription& device,
                                                  const std::string& type);

    const std::vector<ProviderDescription>& providers() const { return mProviders; }
    const std::vector<StormCamera>& cameras() const { return mCameras; }
    const StormCamera* find(const std::string& frameworkName) const;

    bool isAlive(const std::string& provider) const { return mAlive.count(provider) != 0; }
    bool isPluggedIn(const std::string& frameworkName) const {
        return mPluggedIn.count(frameworkName) != 0;
    }

    void started(const std::string& provider);
    void died(const std::string& provider);
    /** A camera that is not built in, of a living provider. */
    void plugged(const std::string& frameworkName, bool in);
    /** A new service knows of no camera until a framework has registered; then all are reported. */
    void serviceStarted();
    /** Every report so far has been answered. */
    void settled() { mUnderWay.clear(); }

    /** Key: name in the framework's words. Value: the provider's name for the same camera. */
    std::map<std::string, std::string> active() const;

    /**
     * Cameras of which a report may have been under way when its process died. The service takes a
     * death and a report on different threads, so such a report may be handled after the death
     * has been: its camera is entered again, and stays until the provider dies once more or
     * reports it again. And the framework may hear of the two in the other order than that in
     * which the service entered them.
     */
    const std::set<std::string>& uncertain() const { return mUncertain; }
    void resolved(const std::string& frameworkName) { mUncertain.erase(frameworkName); }

  private:
    bool present(const StormCamera& camera) const;

    std::vector<ProviderDescription> mProviders;  ///< in the order in which they are asked
    std::vector<StormCamera> mCameras;
    /** Provider instances whose process runs. */
    std::set<std::string> mAlive;
    /** Framework names of cameras that are not built in. */
    std::set<std::string> mPluggedIn;
    /** Framework names of cameras whose last report may not have been answered yet. */
    std::set<std::string> mUnderWay;
    std::set<std::string> mUncertain;
};

/** The value of an id property, and how it changes with each report that is heard. */
class IdList {
  public:
    /** @param value what the property holds now. */
    explicit IdList(const std::string& value = "");

    /** A camera has come: listed again if it is listed already, unless the value gets too long. */
    void add(const std::string& id);
    /** A camera has gone: its first entry goes. */
    void remove(const std::string& id);

    std::string value() const;
    /** The value without these ids. */
    std::string valueWithout(const std::set<std::string>& ids) const;

  private:
    std::vector<std::string> mIds;
};

}  // namespace orvo::simulator::testing
