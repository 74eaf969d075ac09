// SPDX-License-Identifier: Apache-2.0
#include "BatchInputs.h"

#include "JsonOutput.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFormat.h"
#include "framework/io/FilePath.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <map>

namespace trovik {

namespace {

namespace fs = std::filesystem;

std::string Absolute(const std::string& path) {
    return fs::absolute(path).lexically_normal().string();
}

bool IsReadableMesh(const std::string& path) {
    const MeshFormat* format = FindMeshFormat(path);
    return format != nullptr && format->read != nullptr;
}

/// Returns the mesh files in a folder.
std::vector<std::string> MeshesIn(const std::string& folder) {
    std::vector<std::string> paths;
    std::error_code failed;
    for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        std::error_code ignored;
        if (entry->is_regular_file(ignored) && IsReadableMesh(entry->path().string()))
            paths.push_back(entry->path().string());
    }
    if (failed) throw HostError(folder + ": cannot read the folder: " + failed.message());
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::vector<std::string> ListFiles(const std::vector<std::string>& paths,
                                   const std::string& outputFolder) {
    std::vector<std::string> files;
    for (const std::string& path : paths) {
        std::error_code failed;
        if (!fs::is_directory(path, failed)) {
            RegularFileSize(path);
            files.push_back(path);
            continue;
        }
        std::error_code ignored;
        if (fs::equivalent(path, outputFolder, ignored))
            throw HostError(path +
                            ": the output folder must not be an input folder; use --output to "
                            "select another one");
        const std::vector<std::string> meshes = MeshesIn(path);
        if (meshes.empty()) throw HostError(path + ": there is no mesh file in this folder");
        files.insert(files.end(), meshes.begin(), meshes.end());
    }
    return files;
}

}  // namespace

std::vector<BatchInput> ListBatchInputs(const std::vector<std::string>& paths,
                                        const std::string& outputFolder,
                                        const std::string& extension,
                                        const JsonVariables& given) {
    std::vector<BatchInput> inputs;
    std::map<std::string, std::string> pathsByStem;
    for (const std::string& path : ListFiles(paths, outputFolder)) {
        const fs::path file(path);
        const std::string stem = file.stem().string();
        const auto [other, isNew] = pathsByStem.emplace(stem, path);
        if (!isNew)
            throw HostError(path + " and " + other->second +
                            " have the same stem, so their results could overwrite each other");
        BatchInput input{path, Absolute(path), given};
        // Variables, the state file and the summary are JSON.
        if (!IsUtf8(input.absolutePath))
            throw HostError(input.absolutePath + ": the path is not UTF-8; rename the file");
        const JsonVariables own = {
            {"input", input.absolutePath},
            {"name", file.filename().string()},
            {"stem", stem},
            {"output", stem + (extension.empty() ? file.extension().string() : extension)}};
        for (const auto& [name, value] : own)
            if (!input.variables.emplace(name, value).second)
                throw HostError("--set: the variable \"" + name +
                                "\" is set by the batch for each input");
        inputs.push_back(std::move(input));
    }
    return inputs;
}

}  // namespace trovik
