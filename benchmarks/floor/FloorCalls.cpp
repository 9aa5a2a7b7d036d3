// SPDX-License-Identifier: Apache-2.0
// The framework's calls at the floor.

#include <android/log.h>

#include "benchmarks/floor/FloorLog.h"
#include "benchmarks/floor/FloorProvider.h"

namespace orvo::benchmarks {

using common::V1_0::Status;
using common::V1_0::VendorTagSection;

// Unavoidable: one copy of each name, which its provider lends for the length of its answer only,
// in an array that grows, as nobody says beforehand how many there will be. The framework is shown
// that array itself.
Return<void> FloorProvider::getCameraIdList(getCameraIdList_cb _hidl_cb) {
    Status status = Status::OK;
    std::vector<hidl_string> names;
    for (auto& [instance, connection] : mConnections) {
        const sp<ICameraProvider> shim = connection.shim.promote();
        shim->getCameraIdList([&](Status reported, const hidl_vec<hidl_string>& reportedNames) {
            names.insert(names.end(), reportedNames.begin(), reportedNames.end());
            if (reported != Status::OK) status = reported;
        });
    }
    hidl_vec<hidl_string> all;
    all.setToExternal(names.data(), names.size());
    _hidl_cb(status, all);
    return Void();
}

// Unavoidable: one copy of each section, lent as above, behind one marker for each provider, in an
// array that grows; and one record of where each answer begins, as answers pair with the providers
// that were asked by order of arrival, which is known only when all were asked.
Return<void> FloorProvider::getVendorTags(getVendorTags_cb _hidl_cb) {
    struct {
        Status status = Status::OK;
        std::vector<VendorTagSection> sections;
        std::vector<size_t> starts;
    } answers;
    answers.starts.reserve(mConnections.size());
    for (auto& [instance, connection] : mConnections) {
        connection.service->getVendorTags([&answers](Status reported, const auto& sections) {
            answers.starts.push_back(answers.sections.size());
            answers.sections.emplace_back();
            answers.sections.insert(answers.sections.end(), sections.begin(), sections.end());
            if (reported != Status::OK) answers.status = reported;
        });
    }
    auto start = answers.starts.begin();
    for (auto& [instance, connection] : mConnections) {
        answers.sections[*start++].sectionName = instance;
    }
    hidl_vec<VendorTagSection> all;
    all.setToExternal(answers.sections.data(), answers.sections.size());
    _hidl_cb(answers.status, all);
    return Void();
}

// Unavoidable: the look-up of the provider by a name that has to be put together.
sp<ICameraProvider> FloorProvider::shimFor(std::string_view providerName,
                                           const std::string** instance) {
    std::string name(NameParts(providerName).type);
    name.append("/0");
    const auto found = mConnections.find(name);
    if (found == mConnections.end()) return nullptr;
    *instance = &found->first;
    return found->second.shim.promote();
}

// Unavoidable: the two look-ups, and the line or lines. The shim is lent the provider's name.
Return<void> FloorProvider::getCameraDeviceInterface_V1_x(
        const hidl_string& name, getCameraDeviceInterface_V1_x_cb _hidl_cb) {
    const std::string providerName = providerNameOf(name);
    const std::string* instance;
    const sp<ICameraProvider> shim = shimFor(providerName, &instance);
    __android_log_print(ANDROID_LOG_ERROR, kTag, "Got camera for %s id = %s", providerName.c_str(),
                        providerName.c_str());
    hidl_string lent;
    lent.setToExternal(providerName.data(), providerName.size());
    return shim->getCameraDeviceInterface_V1_x(lent, std::move(_hidl_cb));
}

Return<void> FloorProvider::getCameraDeviceInterface_V3_x(
        const hidl_string& name, getCameraDeviceInterface_V3_x_cb _hidl_cb) {
    const std::string providerName = providerNameOf(name);
    __android_log_print(ANDROID_LOG_INFO, kTag,
                        "Getting camera device interface for %s camera name %s", name.c_str(),
                        providerName.c_str());
    const std::string* instance;
    const sp<ICameraProvider> shim = shimFor(providerName, &instance);
    __android_log_print(ANDROID_LOG_INFO, kTag, "Got provider %s for cameraDevice %s",
                        instance->c_str(), name.c_str());
    hidl_string lent;
    lent.setToExternal(providerName.data(), providerName.size());
    return shim->getCameraDeviceInterface_V3_x(lent, std::move(_hidl_cb));
}

}  // namespace orvo::benchmarks
