// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "JsonOutput.h"
#include "MeshInfo.h"
#include "SceneInfo.h"
#include "framework/errors/HostError.h"
#include "framework/errors/PrintableText.h"
#include "framework/scene/SceneFile.h"
#include "host/Error.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace trovik {

namespace {

struct InfoOptions {
    std::vector<std::string> files;
    std::optional<float> minThickness;
    bool json = false;
    bool quiet = false;
};

nlohmann::json InfoJson(const InfoOptions& options, const std::string& path) {
    return IsScenePath(path) ? SceneInfoJson(path, options.minThickness)
                             : MeshInfoJson(path, options.minThickness);
}

void PrintInfo(const InfoOptions& options, const std::string& path) {
    if (IsScenePath(path))
        PrintSceneInfo(path, options.minThickness, options.quiet);
    else
        PrintMeshInfo(path, options.minThickness, options.quiet);
}

/// Runs `report`. \return the error message, empty if there was no error.
template <typename Report>
std::string ReasonOf(const Report& report) {
    try {
        report();
    } catch (const HostError& error) {
        return error.what();
    } catch (Error* error) {
        std::string reason = PrintableText(error->Message().toStdString());
        Error::Dispose(error);
        return reason;
    }
    return {};
}

/// Reports all files, including those after a file that cannot be read. Each failure is printed as
/// one line on standard error; the last one is thrown instead, so that the program prints it and
/// exits with a failure.
void InfoOfSeveral(const InfoOptions& options) {
    nlohmann::json list = nlohmann::json::array();
    std::string lastReason;
    for (const std::string& path : options.files) {
        std::string reason = ReasonOf([&] {
            if (options.json)
                list.push_back(InfoJson(options, path));
            else
                PrintInfo(options, path);
        });
        if (reason.empty()) continue;
        if (options.json) list.push_back({{"file", path}, {"error", reason}});
        // Keep the order of the files if both streams have the same destination.
        std::fflush(stdout);
        if (!lastReason.empty()) std::fprintf(stderr, "trovik: %s\n", lastReason.c_str());
        lastReason = std::move(reason);
    }
    if (options.json) PrintJson(list);
    if (!lastReason.empty()) throw HostError(lastReason);
}

void Info(const InfoOptions& options) {
    if (options.files.size() > 1)
        InfoOfSeveral(options);
    else if (options.json)
        PrintJson(InfoJson(options, options.files.front()));
    else
        PrintInfo(options, options.files.front());
}

}  // namespace

void AddInfoCommand(CLI::App& program) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* verb = program.add_subcommand(
        "info", "Reports the content of mesh files (OBJ, PLY, STL, glTF, GLB) and scenes");
    verb->add_option("files", options->files, "Mesh files and scenes (.trovik)")->required();
    verb->add_option(
            "--min-thickness",
            options->minThickness,
            "Reports walls that are thinner than this length, for example too thin to print")
        ->check(CLI::Range(1e-30, 1e12));
    verb->add_flag("-q,--quiet", options->quiet, "Prints only errors");
    verb->add_flag(
        "--json",
        options->json,
        "Prints JSON on standard output: an object, or a list of objects for several files");
    verb->callback([options] { Info(*options); });
}

}  // namespace trovik
