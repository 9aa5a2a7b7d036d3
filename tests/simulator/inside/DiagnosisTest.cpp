// SPDX-License-Identifier: Apache-2.0
// Tests of the one line that says why a provider's cameras cannot be seen.

#include <gtest/gtest.h>

#include "simulator/camerasim/inside/Diagnosis.h"

namespace orvo::simulator::testing {
namespace {

using Time = ProviderFacts::Time;

/** A provider behind a service that has registered with it. */
ProviderFacts healthy() {
    ProviderFacts facts;
    facts.instance = "external/0";
    facts.behind = "legacy/0";
    facts.declared = facts.described = facts.frontServed = facts.serviceRunning = true;
    facts.running = facts.connected = true;
    facts.startedAt = Time(1);
    facts.serviceReadyAt = Time(2);
    facts.now = Time(100);
    return facts;
}

ProviderFacts unconnected() {
    ProviderFacts facts = healthy();
    facts.connected = false;
    return facts;
}

/** One that the service itself serves. */
ProviderFacts servedOne() {
    ProviderFacts facts = healthy();
    facts.instance = "default/0";
    facts.behind = "";
    facts.described = false;
    facts.served = true;
    return facts;
}

TEST(DiagnosisTest, NothingIsWrongWithAConnectedProvider) {
    EXPECT_EQ("", problemOf(healthy()));
}

TEST(DiagnosisTest, NamedInTheMapOnly) {
    ProviderFacts facts;
    facts.instance = "usb/0";
    facts.behind = "legacy/0";
    EXPECT_EQ("named in the map but not declared in the manifest", problemOf(facts));
    facts.declared = true;
    EXPECT_EQ("declared but not running: device.yaml has no process for it", problemOf(facts));
}

TEST(DiagnosisTest, DeclaredInTheManifestOnly) {
    ProviderFacts facts;
    facts.declared = true;
    EXPECT_EQ("declared in the manifest, but neither the map nor device.yaml mentions it",
              problemOf(facts));
}

TEST(DiagnosisTest, NotDeclaredWhetherItRunsOrNot) {
    ProviderFacts facts = unconnected();
    facts.declared = false;
    EXPECT_EQ("named in the map but not declared in the manifest: nobody looks for it",
              problemOf(facts));
    facts.running = false;
    facts.behind = "";
    EXPECT_EQ("described but not declared in the manifest: nobody looks for it", problemOf(facts));
}

TEST(DiagnosisTest, DeclaredButNotRunning) {
    ProviderFacts facts = unconnected();
    facts.running = false;
    EXPECT_EQ("declared but not running (never started); camerasim start external/0 starts it",
              problemOf(facts));
    facts.lastEnd = "ended by signal 9 (Killed)";
    EXPECT_EQ(
            "declared but not running (it ended by signal 9 (Killed)); camerasim start external/0"
            " starts it",
            problemOf(facts));
}

TEST(DiagnosisTest, Hung) {
    ProviderFacts facts = healthy();
    facts.hung = true;
    EXPECT_EQ("hung: its process is stopped; camerasim start external/0 lets it go on",
              problemOf(facts));
}

TEST(DiagnosisTest, NotMentionedByTheMap) {
    ProviderFacts facts = unconnected();
    facts.behind = "";
    EXPECT_EQ("running, but not mentioned by the map: no service fronts it", problemOf(facts));
}

TEST(DiagnosisTest, BehindAnInstanceThatNobodyServes) {
    ProviderFacts facts = unconnected();
    facts.frontServed = false;
    EXPECT_EQ(
            "running but never connected: it stands behind legacy/0, which the service does not"
            " serve; add that to device.yaml",
            problemOf(facts));
}

TEST(DiagnosisTest, TheServiceIsGone) {
    ProviderFacts facts = unconnected();
    facts.serviceRunning = facts.frontServed = false;
    EXPECT_EQ("running, but the camera provider service is not", problemOf(facts));
}

TEST(DiagnosisTest, StartedAfterTheServiceHadLooked) {
    ProviderFacts facts = unconnected();
    facts.startedAt = Time(3);
    EXPECT_EQ(
            "running but never connected: it was started after the service had looked for it;"
            " camerasim kill service lets a new one look for it",
            problemOf(facts));
}

TEST(DiagnosisTest, StartedAfterTheLastAttempt) {
    ProviderFacts facts = unconnected();
    facts.lostAt = Time(50);
    facts.startedAt = Time(57.25);
    EXPECT_EQ(
            "running but never connected: it was started 7.2 s after the one before it had ended,"
            " and the service looks for 5.0 s only; camerasim kill service lets a new one look for"
            " it",
            problemOf(facts));
}

TEST(DiagnosisTest, StartedInTimeAndAboutToBeConnected) {
    ProviderFacts facts = unconnected();
    facts.lostAt = Time(98);
    facts.startedAt = Time(99.5);
    EXPECT_EQ("the service is about to connect it", problemOf(facts));
    facts.now = Time(110);
    EXPECT_EQ(
            "running but never connected: the service gave up on it; camerasim kill service lets a"
            " new one look for it",
            problemOf(facts));
}

TEST(DiagnosisTest, ThereBeforeTheServiceButNotRegistered) {
    ProviderFacts facts = unconnected();
    EXPECT_EQ(
            "running but never connected: the service has not registered with it; camerasim log"
            " says why",
            problemOf(facts));
    facts.now = Time(3);
    EXPECT_EQ("the service is about to connect it", problemOf(facts));
}

TEST(DiagnosisTest, ServedByTheServiceItself) {
    ProviderFacts facts = servedOne();
    EXPECT_EQ("", problemOf(facts));
    facts.connected = false;
    EXPECT_EQ("it has not taken the framework's callback; camerasim log says why",
              problemOf(facts));
    facts.now = Time(3);
    EXPECT_EQ("the framework is about to register with it", problemOf(facts));
    facts.running = false;
    EXPECT_EQ("the service does not serve it; camerasim log says why", problemOf(facts));
    facts.serviceRunning = false;
    EXPECT_EQ("the camera provider service is not running", problemOf(facts));
    facts.declared = false;
    EXPECT_EQ("served but not declared in the manifest: a device finds it not", problemOf(facts));
}

TEST(DiagnosisTest, ServedByAServiceThatIsHung) {
    ProviderFacts facts = servedOne();
    facts.hung = true;
    EXPECT_EQ("the camera provider service is hung; camerasim start service lets it go on",
              problemOf(facts));
}

}  // namespace
}  // namespace orvo::simulator::testing
