// SPDX-License-Identifier: Apache-2.0
// The death of a provider, from the platform's call to the end of the reconnection.

#include "benchmarks/operations/Connected.h"

namespace orvo::benchmarks {
namespace {

template <typename Provider>
class DeathSide : public ConnectedSide<Provider> {
  public:
    explicit DeathSide(size_t activeDevices)
        : ConnectedSide<Provider>({8, 16, 0, activeDevices}), mActiveDevices(activeDevices) {
        restore();
    }

    // The pause takes no time here, and the next death may come once the thread is gone.
    void call() override {
        AnsweringProvider& dead = this->mSurroundings.provider(0);
        mDied = true;
        dead.recipient->serviceDied(dead.cookie, nullptr);
        awaitEndOfPausedThread();
    }

    void restore() final {
        if (mDied) awaitExitOfPausedThread();
        std::string ids = "0";
        for (size_t i = 0; i < mActiveDevices; ++i) {
            this->enter(i);
            if (i > 0 && i < 20) ids += ", " + std::to_string(i);
        }
        presetProperty("camera." + Surroundings::type(0) + ".ids", ids);
    }

  private:
    const size_t mActiveDevices;
    bool mDied = false;
};

}  // namespace

void addDeath(std::vector<Operation>& operations) {
    for (const size_t size : {1, 64, 1000}) {
        const auto [product, floor] = sidesOf<DeathSide>(size);
        operations.push_back(
                {"death of a provider", size, "active devices of it", product, floor, true});
    }
}

}  // namespace orvo::benchmarks
