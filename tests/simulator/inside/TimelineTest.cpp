// SPDX-License-Identifier: Apache-2.0
// Tests of Timeline and of the camera table beside it.

#include <poll.h>

#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/camerasim/Looks.h"
#include "simulator/camerasim/inside/CameraTable.h"
#include "simulator/camerasim/inside/Timeline.h"

namespace orvo::simulator::testing {
namespace {

bool rings(const Timeline::Bell& bell) {
    pollfd ready{bell.fd(), POLLIN, 0};
    return poll(&ready, 1, 0) == 1;
}

TEST(TimelineTest, NumbersEventsFromOne) {
    Timeline timeline;
    EXPECT_EQ(1, timeline.next());
    EXPECT_TRUE(timeline.events(1).empty());
    timeline.add("camera", "a", "PRESENT");
    timeline.add("process", "b", "ended with status 0");
    const auto events = timeline.events(1);
    ASSERT_EQ(2u, events.size());
    EXPECT_EQ(1, events[0].number);
    EXPECT_EQ("camera a PRESENT", events[0].kind + " " + events[0].who + " " + events[0].what);
    EXPECT_EQ(2, events[1].number);
    EXPECT_LE(events[0].seconds, events[1].seconds);
    EXPECT_TRUE(std::regex_match(events[0].time,
                                 std::regex("[0-2][0-9]:[0-5][0-9]:[0-6][0-9]\\.[0-9]{6}")))
            << events[0].time;
    EXPECT_EQ(3, timeline.next());
}

TEST(TimelineTest, TellsFromAnyNumberOn) {
    Timeline timeline;
    for (int i = 0; i < 5; i++) timeline.add("camera", "a", "PRESENT");
    EXPECT_EQ(5u, timeline.events(-7).size());
    ASSERT_EQ(2u, timeline.events(4).size());
    EXPECT_EQ(4, timeline.events(4)[0].number);
    EXPECT_TRUE(timeline.events(6).empty());
    EXPECT_TRUE(timeline.events(INT64_MAX).empty());
}

TEST(TimelineTest, ForgetsTheOldestAndKeepsTheNumbers) {
    Timeline timeline(3);
    for (int i = 1; i <= 5; i++) timeline.add("camera", std::to_string(i), "PRESENT");
    const auto events = timeline.events(1);
    ASSERT_EQ(3u, events.size());
    EXPECT_EQ(3, events[0].number);
    EXPECT_EQ("3", events[0].who);
    EXPECT_EQ(5, events[2].number);
}

TEST(TimelineTest, ABellRingsUntilItIsSilencedAndNoLongerThanItLives) {
    Timeline timeline;
    {
        const Timeline::Bell bell(timeline);
        EXPECT_FALSE(rings(bell));
        timeline.add("camera", "a", "PRESENT");
        timeline.add("camera", "a", "NOT_PRESENT");
        EXPECT_TRUE(rings(bell));
        bell.silence();
        EXPECT_FALSE(rings(bell));
    }
    timeline.add("camera", "a", "PRESENT");  // rings nobody's descriptor
    const Timeline::Bell late(timeline);
    EXPECT_FALSE(rings(late)) << "what was before is not news";
}

TEST(TimelineTest, ManyWritersLeaveNoGap) {
    Timeline timeline;
    const Timeline::Bell bell(timeline);
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 4; writer++) {
        writers.emplace_back([&timeline] {
            for (int i = 0; i < 500; i++) timeline.add("camera", "a", "PRESENT");
        });
    }
    int64_t next = 1;
    while (next <= 2000) {
        pollfd ready{bell.fd(), POLLIN, 0};
        ASSERT_EQ(1, poll(&ready, 1, 30000));
        bell.silence();
        for (const TimelineEvent& event : timeline.events(next)) {
            ASSERT_EQ(next, event.number);
            next++;
        }
    }
    for (std::thread& writer : writers) writer.join();
}

TEST(TimelineTest, ALineIsPlainUnlessColourIsWanted) {
    const TimelineEvent event{7, "14:03:07.123456", 12.5, "camera", "a", "NOT_PRESENT"};
    EXPECT_EQ("14:03:07.123456    12.500  camera    a  NOT_PRESENT", eventLine(event, false));
    EXPECT_EQ("\033[2m14:03:07.123456    12.500\033[0m  camera    a  \033[1;31mNOT_PRESENT\033[0m",
              eventLine(event, true));
}

TEST(CameraTableTest, TheLastReportCounts) {
    CameraTable table;
    table.report("legacy/0", "b", "PRESENT");
    table.report("legacy/0", "a", "ENUMERATING");
    table.report("legacy/0", "a", "PRESENT");
    const auto cameras = table.cameras();
    ASSERT_EQ(2u, cameras.size());
    EXPECT_EQ("a", cameras[0].name);
    EXPECT_EQ("PRESENT", cameras[0].status);
    EXPECT_EQ("legacy/0", cameras[0].service);
    EXPECT_FALSE(table.find("c").has_value());
}

TEST(CameraTableTest, WhatLeavesTakesItsTorchAndItsSessionAlong) {
    CameraTable table;
    table.report("legacy/0", "a", "PRESENT");
    table.reportTorch("legacy/0", "a", "AVAILABLE_ON");
    table.setOpen("a", true);
    EXPECT_EQ("AVAILABLE_ON", table.find("a")->torch);
    EXPECT_TRUE(table.find("a")->open);
    table.report("legacy/0", "a", "NOT_PRESENT");
    EXPECT_EQ("", table.find("a")->torch);
    EXPECT_FALSE(table.find("a")->open);
}

TEST(CameraTableTest, ATorchMayComeBeforeTheCamera) {
    CameraTable table;
    table.reportTorch("legacy/0", "a", "AVAILABLE_OFF");
    EXPECT_EQ("", table.find("a")->status);
    EXPECT_TRUE(table.everReported().empty());
    table.report("legacy/0", "a", "PRESENT");
    EXPECT_EQ("AVAILABLE_OFF", table.find("a")->torch);
}

TEST(CameraTableTest, RemembersNamesWhenTheServiceIsGone) {
    CameraTable table;
    table.report("legacy/0", "a", "PRESENT");
    table.clear();
    EXPECT_TRUE(table.cameras().empty());
    EXPECT_THAT(table.everReported(), ::testing::ElementsAre("a"));
}

}  // namespace
}  // namespace orvo::simulator::testing
