// SPDX-License-Identifier: Apache-2.0
// Merges the vendor tag sections of all underlying providers.

#include <android/log.h>

#include "provider/LogTag.h"
#include "provider/OrvoCameraServiceImplementation.h"

namespace android::hardware::camera::provider::V2_4::implementation {

using common::V1_0::Status;
using common::V1_0::VendorTagSection;

namespace {

using HALDescriptor = OrvoCameraServiceImplementation::HALDescriptor;
using Sections = hidl_vec<VendorTagSection>;

// What the providers answered, in the order in which the answers arrived.
struct Answers {
    Status status = Status::OK;              // The last one that was not OK.
    std::vector<VendorTagSection> sections;  // Those of each answer behind a place for a marker.
    std::vector<size_t> starts;              // Of each answer: where its marker's place is.

    void add(Status reported, const Sections& reportedSections) {
        starts.push_back(sections.size());
        sections.emplace_back();
        sections.insert(sections.end(), reportedSections.begin(), reportedSections.end());
        if (reported != Status::OK) {
            status = reported;
            __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Failed to get vendor tags");
        }
    }
};

// Gives each provider its marker, an empty section of its name, in front of its sections. Answers
// pair with providers by order of arrival on purpose: after one that did not answer, they move up.
// `unasked` are the providers that were not connected at their turn, in set order.
void placeMarkers(const std::set<HALDescriptor>& descriptors,
                  const std::vector<const HALDescriptor*>& unasked, Answers& answers) {
    std::vector<VendorTagSection>& sections = answers.sections;
    auto start = answers.starts.begin();
    auto nextUnasked = unasked.begin();
    size_t inserted = 0;  // Markers without an answer, for which there was no place.
    for (const HALDescriptor& descriptor : descriptors) {
        const bool answered = start != answers.starts.end();
        const size_t place = answered ? *start + inserted : sections.size();
        const bool asked = nextUnasked == unasked.end() || *nextUnasked != &descriptor;
        if (!asked) ++nextUnasked;
        if (asked && answered) {
            ++start;
        } else {
            sections.emplace(sections.begin() + place);
            ++inserted;
        }
        sections[place].sectionName = descriptor.mName;
    }
    if (start != answers.starts.end()) sections.resize(*start + inserted);
    for (; start != answers.starts.end(); ++start) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "Dropping vendor tags: more answers than providers");
    }
}

}  // namespace

Return<void> OrvoCameraServiceImplementation::getVendorTags(getVendorTags_cb _hidl_cb) {
    std::vector<const HALDescriptor*> unasked;
    Answers answers;
    answers.starts.reserve(mHalDescriptors.size());

    for (const HALDescriptor& descriptor : mHalDescriptors) {
        // Looked up at its turn: a death during an earlier answer leaves nobody to ask.
        const sp<ICameraProvider> provider = descriptor.mProvider;
        if (provider == nullptr) {
            unasked.push_back(&descriptor);
            continue;
        }

        // The result is discarded unexamined on purpose: a provider that vanishes in the middle of
        // its answer ends the process by the platform's rule, and it starts afresh.
        provider->getVendorTags([&answers](Status status, const Sections& sections) {
            answers.add(status, sections);
        });
    }

    placeMarkers(mHalDescriptors, unasked, answers);
    Sections merged;
    merged.setToExternal(answers.sections.data(), answers.sections.size());
    _hidl_cb(answers.status, merged);
    return Void();
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
