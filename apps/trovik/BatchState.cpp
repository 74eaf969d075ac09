// SPDX-License-Identifier: Apache-2.0
#include "BatchState.h"

#include "framework/errors/HostError.h"
#include "framework/io/OutputFile.h"
#include "framework/json/JsonText.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace trovik {

namespace {

constexpr int stateFormat = 1;
constexpr std::size_t maxStateBytes = std::size_t{256} << 20;

bool IsState(const nlohmann::json& document) {
    if (!document.is_object() || document.value("format", nlohmann::json()) != stateFormat ||
        !document.value("inputs", nlohmann::json()).is_object())
        return false;
    const nlohmann::json& inputs = document.at("inputs");
    return std::all_of(inputs.begin(), inputs.end(), [](const nlohmann::json& entry) {
        if (!entry.is_object() || !entry.contains("key") || !entry.contains("files") ||
            !entry.at("files").is_array())
            return false;
        const nlohmann::json& files = entry.at("files");
        return std::all_of(files.begin(), files.end(), [](const nlohmann::json& file) {
            return file.is_string();
        });
    });
}

}  // namespace

BatchState::BatchState(std::string statePath) : path(std::move(statePath)) {
    std::error_code failed;
    if (!std::filesystem::exists(path, failed)) return;
    nlohmann::json document = ParseDocument(ReadDocument(path, maxStateBytes), path);
    if (!IsState(document))
        throw HostError(path + ": not the state file of a batch; remove it, or use --state");
    inputs = std::move(document.at("inputs"));
}

bool BatchState::IsDone(const std::string& input, const nlohmann::json& key) const {
    const auto found = inputs.find(input);
    if (found == inputs.end() || found->at("key") != key) return false;
    const std::vector<std::string> files = FilesOf(input);
    return std::all_of(files.begin(), files.end(), [](const std::string& file) {
        std::error_code failed;
        return std::filesystem::exists(file, failed);
    });
}

std::vector<std::string> BatchState::FilesOf(const std::string& input) const {
    return inputs.at(input).at("files").get<std::vector<std::string>>();
}

void BatchState::Add(const std::string& input,
                     const nlohmann::json& key,
                     const std::vector<std::string>& files) {
    inputs[input] = {{"key", key}, {"files", files}};
    Write();
}

void BatchState::Remove(const std::vector<std::string>& removed) {
    std::size_t count = 0;
    for (const std::string& input : removed) count += inputs.erase(input);
    if (count != 0) Write();
}

void BatchState::Write() const {
    OutputFile file(path);
    file.Write(nlohmann::json({{"format", stateFormat}, {"inputs", inputs}})
                   .dump(1, ' ', false, nlohmann::json::error_handler_t::replace) +
               "\n");
    file.Commit();
}

}  // namespace trovik
