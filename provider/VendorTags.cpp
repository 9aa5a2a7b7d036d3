// SPDX-License-Identifier: Apache-2.0
// Merges the vendor tag sections of all underlying providers.

#include <android/log.h>

#include "provider/LogTag.h"
#include "provider/OrvoCameraServiceImplementation.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using common::V1_0::Status;
using common::V1_0::VendorTagSection;

namespace {

using Sections = hidl_vec<VendorTagSection>;

void logDroppedAnswer() {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                        "Dropping vendor tags: more answers than providers");
}

// The answers in the order in which they arrive, one slot for each provider that is asked.
class Answers {
  public:
    explicit Answers(size_t slotCount) : mSlots(slotCount) {}

    void add(Status status, const Sections& sections) {
        if (mFilled == mSlots.size()) {
            logDroppedAnswer();
            return;
        }
        mSlots[mFilled++] = sections;
        if (status != Status::OK) {
            mStatus = status;
            __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to get vendor tags");
        }
    }

    // One provider fewer is asked than was expected.
    void removeSlot() {
        if (mFilled == mSlots.size()) {
            logDroppedAnswer();
            --mFilled;
        }
        mSlots.pop_back();
    }

    Status status() const { return mStatus; }
    const Sections& slot(size_t index) const { return mSlots[index]; }

  private:
    std::vector<Sections> mSlots;
    size_t mFilled = 0;
    Status mStatus = Status::OK;
};

// What the merge needs to know of a provider.
struct Source {
    std::string name;
    bool asked;  // False when it was not connected at its turn.
};

// Each provider's marker, an empty section of its name, followed by its sections. Slots pair with
// providers by order of arrival on purpose: after one that did not answer, they move up.
std::vector<VendorTagSection> merge(const std::vector<Source>& sources, const Answers& answers) {
    std::vector<VendorTagSection> merged;
    size_t slot = 0;
    for (const Source& source : sources) {
        VendorTagSection marker;
        marker.sectionName = source.name;
        merged.push_back(marker);
        if (!source.asked) continue;

        const Sections& sections = answers.slot(slot++);
        merged.insert(merged.end(), sections.begin(), sections.end());
    }
    return merged;
}

}  // namespace

Return<void> OrvoCameraServiceImplementation::getVendorTags(getVendorTags_cb _hidl_cb) {
    std::vector<Source> sources;
    Answers answers(mHalDescriptors.size());

    for (const HALDescriptor& descriptor : mHalDescriptors) {
        // Looked up at its turn: a death during an earlier answer leaves nobody to ask.
        const sp<ICameraProvider> provider = descriptor.mProvider;
        sources.push_back({descriptor.mName, provider != nullptr});
        if (provider == nullptr) {
            answers.removeSlot();
            continue;
        }
        // The result is discarded unexamined on purpose: a provider that vanishes in the middle of
        // its answer ends the process by the platform's rule, and it starts afresh.
        provider->getVendorTags([&answers](Status status, const Sections& sections) {
            answers.add(status, sections);
        });
    }

    _hidl_cb(answers.status(), merge(sources, answers));
    return Void();
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
