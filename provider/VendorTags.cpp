// SPDX-License-Identifier: Apache-2.0
// Merges the vendor tag sections of all underlying providers.

#include <iterator>

#include <android/log.h>

#include "provider/OrvoCameraServiceImplementation.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using common::V1_0::Status;
using common::V1_0::VendorTagSection;

namespace {

struct Answers {
    Status status = Status::OK;              // The last one that was not OK.
    std::vector<VendorTagSection> sections;  // Of all answers, as they arrived.
    std::vector<size_t> slots;               // How many of these came with each answer.

    void add(Status reported, const hidl_vec<VendorTagSection>& answer) {
        sections.insert(sections.end(), answer.begin(), answer.end());
        slots.push_back(answer.size());
        if (reported != Status::OK) {
            status = reported;
            __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to get vendor tags");
        }
    }
};

}  // namespace

Return<void> OrvoCameraServiceImplementation::getVendorTags(getVendorTags_cb _hidl_cb) {
    Answers answers;
    answers.slots.reserve(mHalDescriptors.size());
    std::set<const HALDescriptor*> unasked;
    for (const HALDescriptor& descriptor : mHalDescriptors) {
        // Looked up at its turn: a death during an earlier answer leaves nobody to ask.
        const sp<ICameraProvider> provider = descriptor.mProvider;
        if (provider == nullptr) {
            unasked.insert(&descriptor);
            continue;
        }
        // The result is discarded unexamined on purpose: a provider that vanishes in the middle of
        // its answer ends the process by the platform's rule, and it starts afresh.
        provider->getVendorTags(
                [&answers](Status status, const auto& sections) { answers.add(status, sections); });
    }

    // For each provider its marker, an empty section of its name, and the next slot if it was
    // asked. By order of arrival on purpose: after one that did not answer, the others move up.
    std::vector<VendorTagSection> merged;
    merged.reserve(mHalDescriptors.size() + answers.sections.size());
    auto section = answers.sections.begin();
    auto slot = answers.slots.begin();
    for (const HALDescriptor& descriptor : mHalDescriptors) {
        merged.emplace_back();
        merged.back().sectionName = descriptor.mName;
        if (unasked.count(&descriptor) > 0 || slot == answers.slots.end()) continue;
        std::move(section, section + *slot, std::back_inserter(merged));
        section += *slot++;
    }
    for (; slot != answers.slots.end(); ++slot) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Dropping vendor tags: more answers than providers");
    }

    hidl_vec<VendorTagSection> all;
    all.setToExternal(merged.data(), merged.size());
    _hidl_cb(answers.status, all);
    return Void();
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
