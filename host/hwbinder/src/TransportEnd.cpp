// SPDX-License-Identifier: Apache-2.0
// The order in which the transport's threads end.

#include "host/TransportEnd.h"

#include <mutex>

#include "Endpoint.h"
#include "ThreadPool.h"

namespace orvo {

using android::hardware::transport::Endpoint;
using android::hardware::transport::ThreadPool;

bool stopServing(std::chrono::milliseconds limit) {
    return ThreadPool::instance().stop(limit);
}

void endTransport() {
    static std::once_flag once;
    std::call_once(once, [] {
        ThreadPool& pool = ThreadPool::instance();
        pool.stop(std::chrono::milliseconds(0));
        // Handlers that wait for other processes go on now; the loop still takes their answers.
        Endpoint* endpoint = Endpoint::instance();
        if (endpoint != nullptr) endpoint->disconnect();
        pool.awaitEnd();
        if (endpoint != nullptr) endpoint->end();
        // Objects that others referred to go here: the loop has left that to the pool.
        pool.dropJobs();
    });
}

}  // namespace orvo
