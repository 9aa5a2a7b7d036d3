// SPDX-License-Identifier: Apache-2.0
// TransportEnd: how a program that has met other processes comes to its end.

#pragma once

#include <chrono>

namespace orvo {

/**
 * Begins no incoming call and tells of no death any more; calls that this process makes go on.
 *
 * @return false if a call is still being served after the limit.
 */
bool stopServing(std::chrono::milliseconds limit);

/**
 * Ends everything by which this process meets others, so that `main` can return: no thread is left
 * of it, and no object is kept for others. For them this process is gone, and they for it: calls
 * that wait for them, and later ones, fail with DEAD_OBJECT, but no death is told.
 *
 * Waits for the calls that are being served, so what their handlers wait for, other than calls,
 * must end before. Once for good; whoever calls it while another thread does waits for that. Not on
 * a thread of the pool. A device has no such thing, so this is for its simulation only.
 */
void endTransport();

}  // namespace orvo
