// SPDX-License-Identifier: Apache-2.0
// The installed tools and the Debian package: all is there, finds itself, and needs nothing of the
// build.

#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include <android-base/file.h>
#include <android-base/strings.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo::test {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;

struct Outcome {
    int status = -1;
    std::string output;  // Standard output and error.
};

// A directory of its own, and what was installed or unpacked into it.
class InstallTest : public ::testing::Test {
  protected:
    ~InstallTest() override { fs::remove_all(root()); }

    fs::path root() const { return mDirectory.path; }

    // Runs a command of the shell in the directory, without the environment of whoever tests.
    Outcome run(const std::string& command) {
        const std::string output = root() / "output";
        const std::string line =
                "cd '" + root().string() +
                "' && env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/ TMPDIR=/tmp "
                "timeout -k 5 100 sh -c '" +
                command + "' >'" + output + "' 2>&1 </dev/null";
        const int status = system(line.c_str());
        Outcome outcome;
        if (WIFEXITED(status)) outcome.status = WEXITSTATUS(status);
        EXPECT_TRUE(android::base::ReadFileToString(output, &outcome.output));
        return outcome;
    }

    void install() {
        const Outcome installed = run(ORVO_CMAKE " --install " ORVO_BINARY_DIR " --prefix tools");
        ASSERT_EQ(installed.status, 0) << installed.output;
    }

    void pack() {
        const Outcome packed =
                run(ORVO_CPACK " --config " ORVO_BINARY_DIR "/CPackConfig.cmake -B .");
        ASSERT_EQ(packed.status, 0) << packed.output;
    }

    void expectTour(const std::string& prefix) {
        const Outcome tour = run(prefix + "/bin/camerasim tour");
        EXPECT_EQ(tour.status, 0) << tour.output;
        EXPECT_THAT(tour.output, HasSubstr("steps were as expected"));
    }

  private:
    const TemporaryDir mDirectory;
};

TEST_F(InstallTest, TheInstalledDeviceRuns) {
    install();
    expectTour("tools");
}

TEST_F(InstallTest, TheInstallationCanBeMoved) {
    install();
    fs::rename(root() / "tools", root() / "elsewhere");
    expectTour("elsewhere");
}

TEST_F(InstallTest, TheDefaultDeviceIsTheInstalledOne) {
    install();
    const Outcome help = run("tools/bin/camerasim tour --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output,
                HasSubstr((root() / "tools/share/orvo-camera/devices/headset").string()));
}

TEST_F(InstallTest, NothingIsLoadedFromTheBuild) {
    install();
    int files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(root() / "tools/lib")) {
        if (!entry.is_regular_file()) continue;
        const Outcome header = run("readelf -d " + entry.path().string());
        ASSERT_EQ(header.status, 0) << header.output;
        EXPECT_THAT(header.output,
                    AllOf(HasSubstr("Dynamic section"), Not(HasSubstr(ORVO_BINARY_DIR))))
                << entry.path();
        ++files;
    }
    EXPECT_GT(files, 10);
}

TEST_F(InstallTest, AMissingPartIsNamed) {
    install();
    fs::remove(root() / "tools/lib/orvo-camera/bin/simulated_provider");
    const Outcome tour = run("tools/bin/camerasim tour");
    EXPECT_EQ(tour.status, 2);
    EXPECT_EQ(tour.output,
              "camerasim: '" + root().string() +
                      "/tools/lib/orvo-camera/bin/simulated_provider' is missing; build everything "
                      "first (make build), or install the tools again\n");
}

TEST_F(InstallTest, TheInstalledMapCheckerRuns) {
    install();
    const Outcome check = run("tools/bin/orvo-mapcheck " ORVO_SOURCE_DIR
                              "/device/orvo_vendor_manifest.xml --manifest " ORVO_SOURCE_DIR
                              "/device/android.hardware.camera.provider@2.4-service-orvo.xml");
    EXPECT_EQ(check.status, 0) << check.output;
}

// The code blocks of a section of CONTRIBUTING.md that belong to its numbered steps.
std::vector<std::string> codeBlocks(const std::string& title) {
    std::string text;
    EXPECT_TRUE(android::base::ReadFileToString(ORVO_SOURCE_DIR "/CONTRIBUTING.md", &text));
    const size_t start = text.find("\n## " + title + "\n");
    EXPECT_NE(start, std::string::npos) << title;
    const std::string kIndentation(7, ' ');
    std::vector<std::string> blocks;
    bool inBlock = false;
    for (const std::string& line :
         android::base::Split(text.substr(start, text.find("\n## ", start + 1) - start), "\n")) {
        const bool code = android::base::StartsWith(line, kIndentation);
        if (code && !inBlock) blocks.emplace_back();
        if (code) blocks.back() += line.substr(kIndentation.size()) + "\n";
        inBlock = code || (inBlock && line.empty());
    }
    return blocks;
}

void insertBefore(const fs::path& file, const std::string& place, const std::string& text) {
    std::string content;
    ASSERT_TRUE(android::base::ReadFileToString(file, &content));
    size_t count = 0;
    for (size_t at = content.find(place); at != std::string::npos; at = content.find(place, at)) {
        content.insert(at, text);
        at += text.size() + place.size();
        ++count;
    }
    ASSERT_GT(count, 0u) << file;
    ASSERT_TRUE(android::base::WriteStringToFile(content, file));
}

TEST_F(InstallTest, ASimulatedProviderIsAddedAsTheDocumentSays) {
    const std::vector<std::string> blocks = codeBlocks("Adding a simulated provider");
    ASSERT_EQ(blocks.size(), 2u);
    install();
    const fs::path device = root() / "device";
    fs::copy(ORVO_SOURCE_DIR "/simulator/devices/headset", device, fs::copy_options::recursive);
    ASSERT_TRUE(android::base::WriteStringToFile(blocks[0], device / "providers/thermal.yaml"));
    insertBefore(device / "device.yaml", "  - providers/external.yaml",
                 "  - providers/thermal.yaml\n");

    const Outcome undeclared = run("tools/bin/camerasim check device");
    EXPECT_EQ(undeclared.status, 1);
    EXPECT_THAT(undeclared.output, HasSubstr("thermal/0"));

    insertBefore(device / "vendor/etc/vintf/manifest.xml", "<instance>virtual/0</instance>",
                 "<instance>thermal/0</instance>\n");
    insertBefore(device / "vendor/etc/orvo_vendor_manifest.xml", "</providers>", blocks[1]);
    const Outcome tour = run("tools/bin/camerasim tour device");
    EXPECT_EQ(tour.status, 0);
    EXPECT_THAT(tour.output, HasSubstr("device@3.2/legacy/3"));
}

class PackageTest : public InstallTest {
  protected:
    void SetUp() override {
        pack();
        for (const auto& entry : fs::directory_iterator(root())) {
            if (entry.path().extension() == ".deb") mPackage = entry.path().filename();
        }
        ASSERT_NE(mPackage, "");
    }

    // The paths of the files in the package.
    std::set<std::string> files() {
        const Outcome list = run("dpkg-deb -c " + mPackage);
        EXPECT_EQ(list.status, 0) << list.output;
        std::set<std::string> files;
        for (const std::string& line : android::base::Split(list.output, "\n")) {
            const size_t name = line.find(" ./");
            if (name == std::string::npos) continue;
            files.insert(line.substr(name + 3, line.find(" -> ") - name - 3));
        }
        return files;
    }

    std::string mPackage;
};

// One test, for it takes a while to pack.
TEST_F(PackageTest, HoldsTheToolsNamesWhatTheyNeedAndRuns) {
    constexpr char kHome[] = "usr/lib/orvo-camera/";
    constexpr char kDocuments[] = "usr/share/doc/orvo-camera-tools/";
    constexpr char kDevice[] = "usr/share/orvo-camera/devices/headset/";
    const std::set<std::string> expected = {
            "usr/bin/camera_framework",
            "usr/bin/camerasim",
            "usr/bin/orvo-mapcheck",
            std::string(kHome) + "bin/camera_provider_service",
            std::string(kHome) + "bin/hwservicemanager",
            std::string(kHome) + "bin/simulated_provider",
            std::string(kHome) + "lib/android.hardware.camera.provider@2.4-impl-orvo.so",
            std::string(kHome) + "lib/libcameraprovidershim.so",
            std::string(kHome) + "lib/libhwbinder.so",
            std::string(kDocuments) + "README.md",
            std::string(kDocuments) + "copyright",
            std::string(kDevice) + "device.yaml",
            std::string(kDevice) + "vendor/etc/orvo_vendor_manifest.xml"};
    EXPECT_THAT(files(), IsSupersetOf(expected));

    const Outcome fields = run("dpkg-deb -f " + mPackage + " Package Version Depends");
    ASSERT_EQ(fields.status, 0) << fields.output;
    EXPECT_THAT(fields.output, AllOf(HasSubstr("Package: orvo-camera-tools\n"),
                                     HasSubstr("Version: " ORVO_VERSION "\n")));
    for (const char* package : {"android-libutils", "bubblewrap", "libc6", "libxml2"}) {
        EXPECT_THAT(fields.output, HasSubstr(package));
    }

    const Outcome unpacked = run("dpkg-deb -x " + mPackage + " unpacked");
    ASSERT_EQ(unpacked.status, 0) << unpacked.output;
    expectTour("unpacked/usr");
}

}  // namespace
}  // namespace orvo::test
