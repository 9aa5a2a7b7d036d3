// SPDX-License-Identifier: Apache-2.0
// Replies: how what a headset answers is printed for people, and why a thing did not happen.

#pragma once

#include <string>
#include <vector>

#include "simulator/camerasim/commands/Command.h"
#include "simulator/control/Protocol.h"

namespace orvo::simulator {

// Each writes one kind of reply to stdout; `values` are the words that were typed.
void printProviders(const HeadsetState& state, const Values& values);
void printLists(const std::vector<ServiceList>& lists, const Values& values);
void printTags(const std::vector<ServiceTags>& tags, const Values& values);
void printDumps(const std::vector<ServiceDump>& dumps, const Values& values);
void printProperties(const std::vector<PropertyState>& properties, const Values& values);
void printOpened(const OpenReply& reply, const Values& values);
void printTorch(const TorchReply& reply, const Values& values);
void printPlugged(const PlugReply& reply, const Values& values);
void printKilled(const ProcessReply& reply, const Values& values);
void printProcess(const ProcessReply& reply, const Values& values);
void printWaited(const WaitReply& reply, const Values& values);

// Why it did not happen, one line; "" if it did.
std::string whyNotOpened(const OpenReply& reply, const Values& values);
std::string whyNotSwitched(const TorchReply& reply, const Values& values);
std::string whyNotEnded(const ProcessReply& reply, const Values& values);
std::string whyNotMet(const WaitReply& reply, const Values& values);

/** What services wrote for whoever looks at them, one below the other; "" if there is none. */
std::string dumpText(const std::vector<ServiceDump>& dumps);

}  // namespace orvo::simulator
