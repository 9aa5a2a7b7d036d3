// SPDX-License-Identifier: Apache-2.0
// Tests that every benchmark program runs and prints what the report reads.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/support/ProgramRun.h"

namespace orvo::benchmarks {
namespace {

namespace fs = std::filesystem;
using simulator::testing::ProgramEnd;
using simulator::testing::programPath;
using simulator::testing::runProgram;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

TEST(BenchmarkProgramTest, TimingMeasuresBothSides) {
    const ProgramEnd end = runProgram({programPath("benchmark_timing"),
                                       "--benchmark_filter=getCameraIdList/8/|entry point/1/",
                                       "--benchmark_min_time=0.001", "--benchmark_format=json"});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, HasSubstr("getCameraIdList/8/product"));
    EXPECT_THAT(end.out, HasSubstr("getCameraIdList/8/floor"));
    EXPECT_THAT(end.out, HasSubstr("entry point/1/product"));
}

TEST(BenchmarkProgramTest, AllocationsCountsBothSidesOfEachOperation) {
    const ProgramEnd end = runProgram({programPath("benchmark_allocations"), "1"});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, ContainsRegex("getCameraIdList/1/product [1-9][0-9]*\\.[0-9]+\n"
                                       "getCameraIdList/1/floor [1-9][0-9]*\\.[0-9]+\n"));
    EXPECT_THAT(end.out, ContainsRegex("death of a provider/1/product [1-9]"));
    EXPECT_THAT(end.out, ContainsRegex("bytes of an active device/product [1-9][0-9]+\\."));
}

// How many more allocations than its floor's the operation of that title, "name/size/side", may
// make.
double allocationsAbove(const std::string& title) {
    if (title.find("StatusChange") != std::string::npos) return 2;
    if (title.rfind("death of a provider/", 0) != 0) return 0;
    return 2 * std::stod(title.substr(title.find('/') + 1));
}

// The half of the bar that is the same on every machine.
TEST(BenchmarkBarTest, OnlyStatusReportsAndDeathsAllocateMoreThanTheirFloors) {
    const ProgramEnd end = runProgram({programPath("benchmark_allocations"), "1000"});
    ASSERT_EQ(end.status, 0) << end.err;
    std::istringstream lines(end.out);
    int pairs = 0;
    for (std::string product, floor; std::getline(lines, product) && std::getline(lines, floor);) {
        if (product.rfind("bytes", 0) == 0) continue;
        ++pairs;
        EXPECT_LE(std::stod(product.substr(product.rfind(' '))),
                  std::stod(floor.substr(floor.rfind(' '))) + allocationsAbove(product))
                << product << ", " << floor;
    }
    EXPECT_GE(pairs, 20);
}

TEST(BenchmarkProgramTest, InstructionsWritesAProfileForEachSide) {
    char directory[] = "/tmp/orvo-profiles-XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    const ProgramEnd end =
            runProgram({"/usr/bin/valgrind", "--tool=callgrind", "--collect-atstart=no",
                        std::string("--callgrind-out-file=") + directory + "/profile",
                        programPath("benchmark_instructions"), "1"});
    EXPECT_EQ(end.status, 0) << end.err;
    size_t profiles = 0;
    for (const auto& entry : fs::directory_iterator(directory)) {
        std::ifstream file(entry.path());
        const std::string text((std::istreambuf_iterator<char>(file)), {});
        if (text.find("Client Request: death of a provider/1/") == std::string::npos) continue;
        ++profiles;
        EXPECT_THAT(text, ContainsRegex("totals: [1-9][0-9]{3}"));
    }
    EXPECT_EQ(profiles, 2u);
    fs::remove_all(directory);
}

TEST(BenchmarkProgramTest, MapMemoryWeighsALoad) {
    const ProgramEnd written = runProgram({programPath("benchmark_map_memory"), "write", "10000"});
    ASSERT_EQ(written.status, 0) << written.err;
    const std::string path = written.out.substr(0, written.out.find(' '));
    for (const char* side : {"product", "floor"}) {
        const ProgramEnd end = runProgram({programPath("benchmark_map_memory"), side, path});
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_GT(std::stol(end.out), 1'000'000);
    }
    fs::remove_all(fs::path(path).parent_path());
    const ProgramEnd missing = runProgram({programPath("benchmark_map_memory"), "product", path});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.err, HasSubstr(path + " is no map file"));
}

TEST(BenchmarkProgramTest, LoadCountsPageFaults) {
    const ProgramEnd end = runProgram({programPath("benchmark_load"), ORVO_PROVIDER_LIBRARY});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_THAT(end.out, MatchesRegex("[1-9][0-9]* [0-9]+\n"));
}

TEST(BenchmarkProgramTest, ReconnectionTimesBothSidesInADevice) {
    for (const char* side : {"product", "floor"}) {
        const ProgramEnd end = runProgram({programPath("benchmark_reconnection"), side, "2"});
        EXPECT_EQ(end.status, 0) << end.err;
        EXPECT_THAT(end.out, MatchesRegex("[0-9.e+]+\n[0-9.e+]+\n")) << side;
    }
}

TEST(BenchmarkProgramTest, WrongUseIsExplained) {
    for (const char* program :
         {"benchmark_map_memory", "benchmark_load", "benchmark_reconnection"}) {
        const ProgramEnd end = runProgram({programPath(program)});
        EXPECT_EQ(end.status, 1);
        EXPECT_THAT(end.err, HasSubstr(std::string("usage: ") + program));
    }
}

}  // namespace
}  // namespace orvo::benchmarks
