// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/modules/Module.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <vector>

namespace trovik::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// Returns the error message for a module, without the prefix that contains the file and the
/// purpose.
template <class Open>
std::string Refusal(const std::string& path, Open open) {
    try {
        open();
    } catch (const HostError& error) {
        const std::string begin =
            "cannot load the module " + path + ", which is needed for tests: ";
        EXPECT_THAT(error.what(), StartsWith(begin));
        return std::string(error.what()).substr(begin.size());
    }
    ADD_FAILURE() << path << " was loaded";
    return {};
}

std::string Refusal(const std::string& path) {
    return Refusal(path, [&path] { OpenModule(path, "tests"); });
}

std::string EmbreeModule() { return ModuleFolder() + "/trovik-embree.so"; }

TEST(Module, FolderIsNextToTheLibrary) {
    const std::filesystem::path folder = ModuleFolder();
    EXPECT_TRUE(folder.is_absolute());
    EXPECT_TRUE(std::filesystem::exists(folder / "../../libTrovikFramework.so")) << folder;
}

TEST(Module, LoadsOnceForAllThreads) {
    std::vector<std::future<const void*>> loads;
    loads.reserve(8);
    for (int i = 0; i < 8; ++i)
        loads.push_back(
            std::async(std::launch::async, [] { return OpenModule(EmbreeModule(), "tests"); }));
    const void* interface = OpenModule(EmbreeModule(), "tests");
    EXPECT_NE(interface, nullptr);
    for (auto& load : loads) EXPECT_EQ(load.get(), interface);
}

TEST(Module, MissingFileIsNamedWithTheReason) {
    EXPECT_EQ(Refusal("/nowhere/trovik-embree.so"),
              "cannot open shared object file: No such file or directory");
}

TEST(Module, FileOfAnotherKindIsRefused) {
    const std::string path = testing::TempDir() + "/text.so";
    std::ofstream(path) << "This is text.";
    EXPECT_THAT(Refusal(path), HasSubstr("file too short"));
    std::filesystem::remove(path);
}

TEST(Module, LibraryWithoutEntryIsRefused) {
    EXPECT_EQ(Refusal(TROVIK_PLAIN_LIBRARY), "it is not a module of this library");
}

TEST(Module, ModuleOfAnotherVersionIsRefused) {
    EXPECT_THAT(Refusal(TROVIK_OTHER_VERSION_MODULE),
                StartsWith("it was built for another version of this library, which has version "));
}

TEST(Module, TooLittleAddressSpaceIsRefusedBeforeLoading) {
    const ModuleFile module{"trovik-embree.so", "tests", std::size_t{1} << 60};
    EXPECT_THAT(Refusal(EmbreeModule(), [&module] { OpenModule(module); }),
                StartsWith("not enough memory; the process cannot map 1099511627776 MiB more"));
}

}  // namespace
}  // namespace trovik::test
