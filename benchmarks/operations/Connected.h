// SPDX-License-Identifier: Apache-2.0
// A provider object, the library's or the floor's, connected to everything around it.
#pragma once

#include <memory>
#include <utility>

#include "benchmarks/fakes/Surroundings.h"
#include "benchmarks/floor/FloorProvider.h"
#include "benchmarks/operations/Operation.h"
#include "provider/OrvoCameraServiceImplementation.h"

namespace orvo::benchmarks {

using ProductProvider =
        android::hardware::camera::provider::V2_4::implementation::OrvoCameraServiceImplementation;

/** The entry point of each side. */
template <typename Provider>
ICameraProvider* fetch(const char* name);

template <>
inline ICameraProvider* fetch<ProductProvider>(const char* name) {
    return android::hardware::camera::provider::V2_4::implementation::HIDL_FETCH_ICameraProvider(
            name);
}

template <>
inline ICameraProvider* fetch<FloorProvider>(const char* name) {
    return FloorProvider::fetch(name);
}

/** What the surroundings of a side hold. */
struct Amounts {
    size_t providers = 8;
    size_t ids = 16;
    size_t sections = 0;
    size_t activeDevices = 0;  ///< All of the first provider.
};

/** Base of the sides that call a provider object. `Provider` is either class. */
template <typename Provider>
class ConnectedSide : public Side {
  public:
    explicit ConnectedSide(const Amounts& amounts)
        : mSurroundings(amounts.providers, amounts.ids, amounts.sections) {
        ICameraProvider* const fetched = fetch<Provider>(Surroundings::kAggregator);
        mProvider = static_cast<Provider*>(fetched);
        fetched->decStrong(fetched);
        mProvider->setCallback(mSurroundings.framework).assertOk();
        for (size_t i = 0; i < amounts.activeDevices; ++i) enter(i);
    }

  protected:
    /** Makes a device active as a report does, but without the report. */
    void enter(size_t device) {
        mProvider->mActiveDevices[Surroundings::frameworkDevice(device)] =
                Surroundings::providerDevice(0, device);
    }
    void forget(size_t device) {
        mProvider->mActiveDevices.erase(Surroundings::frameworkDevice(device));
    }

    Surroundings mSurroundings;
    sp<Provider> mProvider;
};

/** The pair of sides of one class template, made with the same arguments. */
template <template <typename> class SideOf, typename... Arguments>
std::pair<SideMaker, SideMaker> sidesOf(Arguments... arguments) {
    return {[=] { return std::make_unique<SideOf<ProductProvider>>(arguments...); },
            [=] { return std::make_unique<SideOf<FloorProvider>>(arguments...); }};
}

}  // namespace orvo::benchmarks
