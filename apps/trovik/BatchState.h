// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace trovik {

/// The state file of a batch: the inputs that were processed successfully, each with everything
/// that determines its result. A later run skips these inputs if nothing has changed.
///
///     {"format": 1, "inputs": {"/absolute/head.obj": {"key": {…}, "files": ["head.trovik"]}}}
class BatchState {
public:
    /// Reads the file if it exists.
    /// \throw HostError if the file is not a state file or cannot be read.
    explicit BatchState(std::string path);

    /// Returns whether the input has been processed with the same key, and all files that it wrote
    /// still exist.
    /// \param input  an absolute path.
    /// \param key  describes everything that determines the result.
    bool IsDone(const std::string& input, const nlohmann::json& key) const;
    /// Returns the files that the input wrote; the input must be in the state.
    std::vector<std::string> FilesOf(const std::string& input) const;

    /// Records a processed input and writes the state file.
    /// \param files  absolute paths.
    /// \throw HostError if the file cannot be written.
    void Add(const std::string& input,
             const nlohmann::json& key,
             const std::vector<std::string>& files);
    /// Removes inputs whose results are about to change. Writes the state file if it contained any
    /// of them. \param removed  absolute paths. \throw HostError if the file cannot be written.
    void Remove(const std::vector<std::string>& removed);

private:
    void Write() const;

    std::string path;
    nlohmann::json inputs = nlohmann::json::object();
};

}  // namespace trovik
