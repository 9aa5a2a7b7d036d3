// SPDX-License-Identifier: Apache-2.0
// An implementation of the test interface that sends back what it gets.

#pragma once

#include <functional>
#include <string>

#include <orvo/test/kinds/1.1/IKinds.h>

namespace orvo::test {

/** Behaves as it should unless a test replaces one of its functions. */
class EchoingKinds : public kinds::V1_1::IKinds {
  public:
    template <typename T>
    using Return = android::hardware::Return<T>;
    using Kinds = kinds::V1_0::IKinds;
    using IBase = android::hidl::base::V1_0::IBase;
    using Queue = android::hardware::MQDescriptorSync<uint8_t>;

    /** What echoColour and nothing do; the other methods have no variants. */
    std::function<Return<kinds::V1_0::Colour>(kinds::V1_0::Colour)> colourBehaviour;
    std::function<Return<void>()> nothingBehaviour;
    /** What echoTree does with its callback, and returns. */
    std::function<Return<void>(const kinds::V1_0::Tree&, echoTree_cb)> treeBehaviour;
    std::function<Return<void>(const std::string&)> noteBehaviour;
    /** If it is not fine, what the questions for chain and descriptor return. */
    android::hardware::Status identityStatus;
    /** The object that was last given to echoKinds. */
    android::sp<Kinds> lastKinds;

    Return<void> echoTree(const kinds::V1_0::Tree& tree, echoTree_cb callback) override {
        if (treeBehaviour != nullptr) return treeBehaviour(tree, callback);
        callback(tree);
        return android::hardware::Void();
    }
    Return<void> echoParcelled(const kinds::V1_0::Parcelled& parcelled,
                               echoParcelled_cb callback) override {
        callback(parcelled);
        return android::hardware::Void();
    }
    Return<void> echoHandle(const android::hardware::hidl_handle& content,
                            echoHandle_cb callback) override {
        callback(content);
        return android::hardware::Void();
    }
    Return<void> echoMemory(const android::hardware::hidl_memory& content,
                            echoMemory_cb callback) override {
        callback(content);
        return android::hardware::Void();
    }
    Return<void> echoQueue(const Queue& queue, echoQueue_cb callback) override {
        callback(queue);
        return android::hardware::Void();
    }
    Return<kinds::V1_0::Colour> echoColour(kinds::V1_0::Colour colour) override {
        if (colourBehaviour != nullptr) return colourBehaviour(colour);
        return colour;
    }
    Return<android::sp<Kinds>> echoKinds(const android::sp<Kinds>& kinds) override {
        lastKinds = kinds;
        return kinds;
    }
    Return<android::sp<IBase>> echoAny(const android::sp<IBase>& any) override { return any; }
    Return<void> nothing() override {
        if (nothingBehaviour != nullptr) return nothingBehaviour();
        return android::hardware::Void();
    }
    Return<void> note(const android::hardware::hidl_string& text) override {
        if (noteBehaviour != nullptr) return noteBehaviour(text);
        return android::hardware::Void();
    }
    Return<uint32_t> version() override { return 1; }

    Return<void> interfaceChain(interfaceChain_cb callback) override {
        if (!identityStatus.isOk()) return identityStatus;
        return IKinds::interfaceChain(callback);
    }
    Return<void> interfaceDescriptor(interfaceDescriptor_cb callback) override {
        if (!identityStatus.isOk()) return identityStatus;
        return IKinds::interfaceDescriptor(callback);
    }
};

}  // namespace orvo::test
