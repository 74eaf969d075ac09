// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/HostError.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace trovik {

/// Returns the error message of read(path) for a file with this content. The message must be one
/// line that names the file.
template <typename Read>
std::string FileRefusal(const std::string& name, std::string_view content, const Read& read) {
    const TemporaryFolder folder;
    const std::string path = folder.Fill(name, content);
    std::string message = MessageOf<HostError>([&] { read(path); });
    EXPECT_THAT(message, testing::HasSubstr(path));
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    return message;
}

}  // namespace trovik
