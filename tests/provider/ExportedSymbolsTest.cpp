// SPDX-License-Identifier: Apache-2.0
// What the built library exports, read from its dynamic symbol table.

#include <cxxabi.h>
#include <dlfcn.h>
#include <elf.h>
#include <stdlib.h>
#include <string.h>

#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "provider/naming/DeviceMap.h"

namespace orvo::test {
namespace {

using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

const std::string kScope = "android::hardware::camera::provider::V2_4::implementation::";

// The name as a program writes it, without the tag that the C++ library adds to its string type.
std::string demangle(const std::string& name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&free)> text(
            abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status), free);
    const std::string plain = status == 0 ? text.get() : name;
    return plain.substr(0, plain.find("[abi:"));
}

// A view of a shared library's file.
class Library {
  public:
    explicit Library(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        mBytes.assign(std::istreambuf_iterator<char>(file), {});
        EXPECT_GT(mBytes.size(), sizeof(Elf64_Ehdr)) << path;
        EXPECT_EQ(memcmp(mBytes.data(), ELFMAG, SELFMAG), 0) << path;
    }

    // The names of the dynamic symbols that are defined here (or that are not).
    std::vector<std::string> symbols(bool defined) const {
        std::vector<std::string> names;
        for (const Elf64_Shdr& section : sections()) {
            if (section.sh_type != SHT_DYNSYM) continue;
            const char* const strings = mBytes.data() + sections()[section.sh_link].sh_offset;
            const auto* const first =
                    reinterpret_cast<const Elf64_Sym*>(mBytes.data() + section.sh_offset);
            for (size_t i = 1; i < section.sh_size / sizeof(Elf64_Sym); ++i) {
                if ((first[i].st_shndx != SHN_UNDEF) == defined) {
                    names.push_back(strings + first[i].st_name);
                }
            }
        }
        return names;
    }

  private:
    std::vector<Elf64_Shdr> sections() const {
        const auto* const header = reinterpret_cast<const Elf64_Ehdr*>(mBytes.data());
        const auto* const first =
                reinterpret_cast<const Elf64_Shdr*>(mBytes.data() + header->e_shoff);
        return {first, first + header->e_shnum};
    }

    std::vector<char> mBytes;
};

TEST(ExportedSymbolsTest, TheLibraryExportsExactlyItsThreeSymbols) {
    std::vector<std::string> names;
    for (const std::string& name : Library(ORVO_PROVIDER_LIBRARY).symbols(true)) {
        names.push_back(demangle(name));
    }
    EXPECT_THAT(names, UnorderedElementsAre("HIDL_FETCH_ICameraProvider", kScope + "gDeviceMap",
                                            kScope + "gParseFlag"));
}

TEST(ExportedSymbolsTest, TheEntryPointHasItsPlainName) {
    EXPECT_THAT(Library(ORVO_PROVIDER_LIBRARY).symbols(true),
                ::testing::Contains("HIDL_FETCH_ICameraProvider"));
}

TEST(ExportedSymbolsTest, TheShimFactoryIsImported) {
    EXPECT_THAT(Library(ORVO_PROVIDER_LIBRARY).symbols(false),
                ::testing::Contains("HIDL_FETCH_ICameraProvider_shim"));
}

TEST(ExportedSymbolsTest, TheFileNameIsOneThatThePassthroughLoaderLooksFor) {
    const std::string path = ORVO_PROVIDER_LIBRARY;
    EXPECT_EQ(path.substr(path.rfind('/') + 1),
              "android.hardware.camera.provider@2.4-impl-orvo.so");
}

TEST(ExportedSymbolsTest, TheLoadedLibraryHasAnEmptyMapAndAClearFlag) {
    namespace implementation = android::hardware::camera::provider::V2_4::implementation;
    void* const library = dlopen(ORVO_PROVIDER_LIBRARY, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();
    std::map<std::string, void*> objects;  // Key: demangled name.
    for (const std::string& name : Library(ORVO_PROVIDER_LIBRARY).symbols(true)) {
        objects[demangle(name)] = dlsym(library, name.c_str());
    }
    const auto* const map = static_cast<implementation::DeviceMap*>(objects[kScope + "gDeviceMap"]);
    const auto* const flag = static_cast<bool*>(objects[kScope + "gParseFlag"]);
    ASSERT_NE(map, nullptr);
    ASSERT_NE(flag, nullptr);
    EXPECT_THAT(*map, IsEmpty());
    EXPECT_FALSE(*flag);
    EXPECT_NE(objects["HIDL_FETCH_ICameraProvider"], nullptr);
    EXPECT_EQ(dlclose(library), 0);
}

}  // namespace
}  // namespace orvo::test
