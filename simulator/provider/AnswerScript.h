// SPDX-License-Identifier: Apache-2.0
// AnswerScript: which operations have been told to answer with a given status.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include <vendor/orvo/simulator/1.0/types.h>

#include "host/Mutex.h"

namespace orvo::simulator {

/** An answer that was asked for from outside. */
struct ScriptedAnswer {
    android::hardware::camera::common::V1_0::Status status;
    bool withData;
};

/** Counts the calls of each operation and knows what each is told to answer. Any thread. */
class AnswerScript {
  public:
    using Operation = vendor::orvo::simulator::V1_0::Operation;
    using OperationState = vendor::orvo::simulator::V1_0::OperationState;

    /** False for an operation or a status that the interfaces do not have. */
    bool answerWith(Operation operation, ScriptedAnswer answer);
    bool answerNormally(Operation operation);

    /** Counts one call. @return what to answer, or nothing: as the simulation's state demands. */
    std::optional<ScriptedAnswer> onCall(Operation operation);

    /** One entry for every operation, in the order of the enumeration. */
    std::vector<OperationState> state() const;

  private:
    static constexpr size_t kOperations = static_cast<size_t>(Operation::DEVICE_DUMP_STATE) + 1;
    struct Slot {
        uint64_t calls = 0;
        std::optional<ScriptedAnswer> answer;
    };

    mutable Mutex mLock;
    std::array<Slot, kOperations> mSlots GUARDED_BY(mLock);  ///< indexed by the operation
};

}  // namespace orvo::simulator
