// SPDX-License-Identifier: Apache-2.0
// The platform below a side whose cost is measured: services, shims, properties and the pause.
#pragma once

#include <string>
#include <vector>

#include "benchmarks/fakes/AnsweringProvider.h"

namespace orvo::benchmarks {

/**
 * Serves the platform's functions that the library calls, for the whole process while it exists; at
 * most one does at a time. None of them allocates more than its interface forces.
 *
 * The providers are instance() of 0, 1 and so on; the map file names all of them for "legacy/0".
 */
class Surroundings {
  public:
    static constexpr char kAggregator[] = "legacy/0";

    Surroundings(size_t providerCount, size_t idCount, size_t sectionCount);
    ~Surroundings();
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    /** The only ones there are; ends the process when there are none. */
    static Surroundings& current();

    static std::string type(size_t index);
    static std::string instance(size_t index) { return type(index) + "/0"; }
    /** A device as the provider reports it. */
    static std::string providerDevice(size_t provider, size_t device);
    /** The same device as the framework knows it. */
    static std::string frameworkDevice(size_t device);

    AnsweringProvider& provider(size_t index) { return *mProviders[index]; }
    const std::vector<android::sp<AnsweringProvider>>& providers() const { return mProviders; }
    const std::string& mapText() const { return mMapText; }
    const android::hardware::hidl_vec<android::hardware::hidl_string>& declared() const {
        return mDeclared;
    }
    android::sp<AnsweringProvider> find(const std::string& instance) const;

    const android::sp<SilentFramework> framework = new SilentFramework;

  private:
    std::vector<android::sp<AnsweringProvider>> mProviders;
    android::hardware::hidl_vec<android::hardware::hidl_string> mDeclared;
    std::string mMapText;
};

/** Gives a property a value without an entry in the journal. */
void presetProperty(const std::string& name, const std::string& value);

/** Makes threads that come out of the library's pause collect instructions from there on. */
void collectAfterPause(bool collect);

/** Waits until the thread that paused last is done; its pause takes no time. */
void awaitEndOfPausedThread();
/** After that: waits until it is gone, so that the next one finds what it had. */
void awaitExitOfPausedThread();

}  // namespace orvo::benchmarks
