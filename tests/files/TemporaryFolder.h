// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace trovik {

/// An empty folder that is removed at the end of the scope.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "trovik-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("cannot create a temporary folder");
        }
        folder = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string Path(std::string_view name) const { return (folder / name).string(); }

    /// Writes a file with this content. \return its path.
    std::string Fill(std::string_view name, std::string_view content) const {
        std::ofstream(Path(name), std::ios::binary) << content;
        return Path(name);
    }

    std::size_t FileCount() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder), {}));
    }

    static std::string Content(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path folder;
};

/// Returns the message of the error that `action` throws. If it does not throw, the test fails and
/// the message is empty.
template <class Error, class Action>
std::string MessageOf(const Action& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    ADD_FAILURE() << "there was no error";
    return {};
}

}  // namespace trovik
