// SPDX-License-Identifier: Apache-2.0
// withinLimit: calls something that may never return, and goes on without it after a while.

#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

namespace orvo::simulator {

/**
 * Runs the function on a thread of its own.
 *
 * @param function may outlive the call, so it must own, or rely on the life of, all that it uses.
 * @return its result, or nothing if it did not return in time; then it goes on unheard.
 */
template <typename T>
std::optional<T> withinLimit(std::chrono::milliseconds limit, std::function<T()> function) {
    auto promise = std::make_shared<std::promise<T>>();
    std::future<T> result = promise->get_future();
    std::thread([promise, function = std::move(function)] {
        promise->set_value(function());
    }).detach();
    if (result.wait_for(limit) != std::future_status::ready) return std::nullopt;
    return result.get();
}

}  // namespace orvo::simulator
