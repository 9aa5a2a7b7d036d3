// SPDX-License-Identifier: Apache-2.0
// Mistakes that somebody could make in the library, to show that the explorer finds them.
#pragma once

#include <memory>

#include "provider/OrvoCameraServiceImplementation.h"

namespace orvo::interleavings {

enum class Fault {
    kNone,
    kNoLock,
    kLockHeldDuringCall,
    kToldBeforeRecorded,
    kReferenceDropped,
    kServiceNotHeld,
    kReadUnexpectedly,
    kThreadNotDetached,
    kAnsweredTwice,
    kLockTakenTwice,
};

/** Planted in every run that begins from now on. */
extern Fault gFault;

/** The provider object, or one with the fault. */
android::sp<
        android::hardware::camera::provider::V2_4::implementation::OrvoCameraServiceImplementation>
makeObject(
        const char* name,
        std::shared_ptr<
                android::hardware::camera::provider::V2_4::implementation::ServiceInteractionProxy>
                proxy,
        std::shared_ptr<orvo::camera::IProviderMapper> mapper);

}  // namespace orvo::interleavings
