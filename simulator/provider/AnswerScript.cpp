// SPDX-License-Identifier: Apache-2.0
// AnswerScript: one slot for each operation.

#include "simulator/provider/AnswerScript.h"

namespace orvo::simulator {

using android::hardware::camera::common::V1_0::Status;

bool AnswerScript::answerWith(Operation operation, ScriptedAnswer answer) {
    const auto index = static_cast<size_t>(operation);
    // Both come from another process, which can send any number.
    if (index >= kOperations || answer.status > Status::INTERNAL_ERROR) return false;
    MutexLock lock(mLock);
    mSlots[index].answer = answer;
    return true;
}

bool AnswerScript::answerNormally(Operation operation) {
    const auto index = static_cast<size_t>(operation);
    if (index >= kOperations) return false;
    MutexLock lock(mLock);
    mSlots[index].answer.reset();
    return true;
}

std::optional<ScriptedAnswer> AnswerScript::onCall(Operation operation) {
    MutexLock lock(mLock);
    Slot& slot = mSlots[static_cast<size_t>(operation)];
    slot.calls++;
    return slot.answer;
}

std::vector<AnswerScript::OperationState> AnswerScript::state() const {
    MutexLock lock(mLock);
    std::vector<OperationState> states;
    for (size_t i = 0; i < kOperations; i++) {
        OperationState state{};
        state.operation = static_cast<Operation>(i);
        state.calls = mSlots[i].calls;
        state.scripted = mSlots[i].answer.has_value();
        if (state.scripted) {
            state.status = mSlots[i].answer->status;
            state.withData = mSlots[i].answer->withData;
        }
        states.push_back(state);
    }
    return states;
}

}  // namespace orvo::simulator
