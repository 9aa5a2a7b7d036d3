// SPDX-License-Identifier: Apache-2.0
// Merges the vendor tag sections of all underlying providers.

#include <utility>

#include "provider/Log.h"
#include "provider/OrvoCameraServiceImplementation.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using common::V1_0::Status;
using common::V1_0::VendorTagSection;

Return<void> OrvoCameraServiceImplementation::getVendorTags(getVendorTags_cb _hidl_cb) {
    struct {
        Status status = Status::OK;              // The last one that was not OK.
        std::vector<VendorTagSection> sections;  // As they arrived.
        std::vector<size_t> slots;               // How many of these came with each answer.
    } answers;
    answers.slots.reserve(mHalDescriptors.size());
    std::set<const HALDescriptor*> unconnected;
    for (const HALDescriptor& descriptor : mHalDescriptors) {
        // Looked up at its turn: a death during an earlier answer leaves nobody to ask.
        const sp<ICameraProvider> provider = descriptor.mProvider;
        if (provider == nullptr) {
            unconnected.insert(&descriptor);
            continue;
        }
        // Its result is discarded unexamined on purpose, as that of getCameraIdList().
        provider->getVendorTags([&answers](Status status, const auto& sections) {
            answers.sections.insert(answers.sections.end(), sections.begin(), sections.end());
            answers.slots.push_back(sections.size());
            if (status != Status::OK) {
                answers.status = status;
                ALOGE("Failed to get vendor tags");
            }
        });
    }

    // For each provider its marker, an empty section of its name, and the next slot if it was
    // asked. By order of arrival on purpose: after one that did not answer, the others move up.
    std::vector<VendorTagSection> merged;
    merged.reserve(mHalDescriptors.size() + answers.sections.size());
    size_t section = 0;
    size_t slot = 0;
    for (const HALDescriptor& descriptor : mHalDescriptors) {
        merged.emplace_back();
        merged.back().sectionName = descriptor.mName;
        if (unconnected.count(&descriptor) > 0 || slot == answers.slots.size()) continue;
        for (size_t left = answers.slots[slot++]; left > 0; --left) {
            merged.push_back(std::move(answers.sections[section++]));
        }
    }
    for (; slot < answers.slots.size(); ++slot) {
        ALOGE("Dropping vendor tags: more answers than providers");
    }

    hidl_vec<VendorTagSection> all;
    all.setToExternal(merged.data(), merged.size());
    _hidl_cb(answers.status, all);
    return Void();
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
