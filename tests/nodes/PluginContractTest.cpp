// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/pluginhost/PluginContract.h"
#include "framework/pluginhost/PluginLoader.h"
#include "host/ClassDesc.h"
#include "host/Contract.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace trovik {
namespace {

using testing::EndsWith;
using testing::StartsWith;

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST(PluginContract, VersionIsReadFromTheFile) {
    EXPECT_EQ(ContractVersionOf(TROVIK_FUTURE_PLUGIN), contractVersion + 1);
    EXPECT_EQ(ContractVersionOf(TROVIK_SWIFT_STROKE), contractVersion);
    EXPECT_EQ(ContractVersionOf(TROVIK_SAMPLE_PLUGIN), std::nullopt) << "has no note";
    EXPECT_THROW(ContractVersionOf("/missing.so"), HostError);
}

TEST(PluginContract, OtherVersionIsRefusedBeforeAnyCodeRuns) {
    try {
        LoadPlugin(TROVIK_FUTURE_PLUGIN);
        FAIL() << "the plug-in was loaded";
    } catch (const HostError& error) {
        const std::string reason = error.what();
        EXPECT_THAT(reason,
                    StartsWith(std::string(TROVIK_FUTURE_PLUGIN) +
                               ": the plug-in was built for version 2 of the plug-in contract, "
                               "but this program has version 1; "));
    }
    EXPECT_EQ(ClassDesc::ByName(QStringLiteral("FutureClass")), nullptr);
}

TEST(PluginContract, DamagedFilesHaveNoVersion) {
    const TemporaryFolder folder;
    const std::string path = folder.Path("damaged.so");
    const std::string whole = Content(TROVIK_FUTURE_PLUGIN);
    ASSERT_GT(whole.size(), 4096u);
    // The note is in the first pages of the file.
    for (const std::size_t size : {0u, 1u, 15u, 64u, 100u, 300u}) {
        std::ofstream(path, std::ios::binary) << whole.substr(0, size);
        EXPECT_EQ(ContractVersionOf(path), std::nullopt) << size;
    }
    // Sizes within the headers and the notes are replaced by large ones.
    for (std::size_t at = 16; at < 1024; at += 4) {
        std::string damaged = whole;
        damaged.replace(at, 4, "\xff\xff\xff\xff");
        std::ofstream(path, std::ios::binary) << damaged;
        EXPECT_NO_THROW(ContractVersionOf(path)) << at;
    }
}

}  // namespace
}  // namespace trovik
