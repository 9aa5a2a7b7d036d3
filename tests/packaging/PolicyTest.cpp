// SPDX-License-Identifier: Apache-2.0
// The policy files in device/sepolicy: the compiler of policies takes them, and they allow what
// they are there for.

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <android-base/file.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/support/FreshDirectory.h"
#include "tests/simulator/support/ProgramRun.h"

namespace orvo::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

const std::string kRules = "hal_camera_orvo.te";
// What a policy ends with, but for the labels.
constexpr char kEnd[] =
        "role r;\nrole r types domain;\nuser u roles r level s0 range s0;\nsid kernel "
        "u:r:kernel:s0\n";

// A copy of the files, to add mistakes and questions to.
class PolicyTest : public ::testing::Test {
  protected:
    PolicyTest() { fs::copy(ORVO_SOURCE_DIR "/device/sepolicy", mDirectory.path()); }

    void add(const std::string& file, const std::string& line) {
        std::ofstream(mDirectory.path() + "/" + file, std::ios::app) << line << "\n";
    }

    // What the compiler says about all files together; nothing if it takes them.
    std::string complaints() {
        mDirectory.write("end", kEnd + labels("file_contexts") + labels("property_contexts"));
        const auto end = simulator::testing::runProgram(
                {"/bin/sh", "-c",
                 "cd '" + mDirectory.path() + "' && " ORVO_M4 " --fatal-warnings -s '" +
                         ORVO_SOURCE_DIR + "/tests/packaging/policy/platform.te' *.te end >policy" +
                         " && " ORVO_CHECKPOLICY " -M -c 30 -o /dev/null policy"});
        return end.status == 0 ? "" : "status " + std::to_string(end.status) + "\n" + end.err;
    }

    // Whether the files allow it: "<domain> <type>:<class> <permission>".
    bool allows(const std::string& access) {
        mDirectory.write("asked.te", "neverallow " + access + ";\n");
        const std::string said = complaints();
        fs::remove(mDirectory.path() + "/asked.te");
        const bool allowed = said.find("violated by allow") != std::string::npos;
        EXPECT_TRUE(allowed || said.empty()) << said;
        return allowed;
    }

    simulator::testing::FreshDirectory mDirectory;

  private:
    // The labels of a file as labels of made-up file systems, which the compiler looks at.
    std::string labels(const std::string& file) {
        std::ifstream lines(mDirectory.path() + "/" + file);
        std::string statements;
        int number = 0;
        for (std::string line; std::getline(lines, line);) {
            ++number;
            std::istringstream words(line);
            std::string name, label;
            words >> name >> label;
            if (name.empty() || name[0] == '#') continue;
            const std::string place = std::to_string(number);
            statements += "#line " + place + " \"" + file + "\"\n";
            statements += "genfscon " + file + place + " / " + label + "\n";
        }
        return statements;
    }
};

TEST_F(PolicyTest, TheCompilerTakesTheFiles) {
    EXPECT_EQ(complaints(), "");
}

TEST_F(PolicyTest, AMistakeInAFileIsFound) {
    const struct {
        std::string file, line, complaint;
    } mistakes[] = {
            {kRules, "allow hal_camera_orvo nobody:fd use;", "unknown type nobody"},
            {kRules, "allow hal_camera_orvo dumpstate:fd lend;", "permission lend is not defined"},
            {kRules, "typeattribute hal_camera_orvo hal_nothing;", "hal_nothing"},
            {kRules, "allow hal_camera_orvo dumpstate:fd use", "syntax error"},
            {kRules, "give_prop(shell, orvo_camera_prop)", "syntax error"},
            {"property.te", "type orvo_camera_prop, property_type;", "uplicate declaration"},
            {"file_contexts", "/vendor/x u:object_r:nobody:s0", "type nobody is not defined"},
            {"property_contexts", "x u:object_r:nobody:s0 exact int", "type nobody is not defined"},
            {"property_contexts", "x u:object_r:orvo_camera_prop exact int", "no sensitivity"},
    };
    for (const auto& mistake : mistakes) {
        std::string before;
        ASSERT_TRUE(
                android::base::ReadFileToString(mDirectory.path() + "/" + mistake.file, &before));
        add(mistake.file, mistake.line);
        EXPECT_THAT(complaints(), HasSubstr(mistake.complaint)) << mistake.line;
        mDirectory.write(mistake.file, before);
    }
    EXPECT_EQ(complaints(), "");
}

TEST_F(PolicyTest, TheServiceServesAProviderAndLooksOthersUp) {
    EXPECT_TRUE(allows("hal_camera_orvo hal_camera_hwservice:hwservice_manager add"));
    EXPECT_TRUE(allows("hal_camera_orvo hal_camera_hwservice:hwservice_manager find"));
    EXPECT_TRUE(allows("init hal_camera_orvo:process transition"));
}

TEST_F(PolicyTest, TheServiceMayWriteIntoABugReport) {
    EXPECT_TRUE(allows("hal_camera_orvo dumpstate:fd use"));
    EXPECT_TRUE(allows("hal_camera_orvo dumpstate:fifo_file write"));
}

TEST_F(PolicyTest, ThePropertiesAreReadByTheShellAndTheFrameworkAndSetByTheServiceAlone) {
    for (const std::string reader : {"cameraserver", "shell", "system_server"}) {
        EXPECT_TRUE(allows(reader + " orvo_camera_prop:file read")) << reader;
        EXPECT_FALSE(allows(reader + " orvo_camera_prop:property_service set")) << reader;
    }
    EXPECT_TRUE(allows("hal_camera_orvo orvo_camera_prop:property_service set"));
}

}  // namespace
}  // namespace orvo::test
