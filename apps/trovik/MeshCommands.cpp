// SPDX-License-Identifier: Apache-2.0
#include "MeshCommands.h"

#include "Commands.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/io/FilePath.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/VisibleSource.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace trovik {

LoadedScene OpenRefined(const std::string& path,
                        unsigned levels,
                        const MeshSpace& given,
                        const std::function<uint64_t(const LevelForecast&)>& additionalBytes,
                        JobControl* job) {
    LoadedScene scene;
    if (IsScenePath(path)) {
        scene = LoadScene(path, nullptr, nullptr, job);
    } else {
        scene.imported = ReadMeshFile(path, job);
        PolygonMesh& polygons = scene.imported;
        polygons.attributes.space = Overlaid(polygons.attributes.space, given);
        MakeOrientedManifold(polygons, job);
        scene.geometry = std::make_unique<LevelGeometry>(polygons, job);
        scene.notes = polygons.notes;
    }
    if (levels > 0)
        if (std::string note = RefinementNote(scene.imported); !note.empty())
            scene.notes.push_back(std::move(note));
    if (levels > 0) {
        try {
            scene.geometry->CheckForecast(levels,
                                          std::numeric_limits<uint64_t>::max(),
                                          additionalBytes(scene.geometry->Forecast(levels)));
        } catch (const HostError& error) {
            throw HostError(path + ": " + error.what());
        }
    }
    for (unsigned i = 0; i < levels; ++i)
        scene.geometry->Subdivide(LevelGeometry::unlimitedBytes, job);
    return scene;
}

namespace {

struct ConvertOptions {
    std::string from;
    std::string to;
    unsigned levels = 0;
    std::string fromUnits;
    std::string fromUp;
    std::string units;
    std::string up;
    bool visible = false;
    bool quiet = false;
    bool json = false;
};

/// The result of a conversion.
struct ConversionResult {
    uint64_t vertices = 0;
    uint64_t faces = 0;
    /// Files that were written in addition to the mesh.
    std::vector<std::string> additionalFiles;
    std::vector<std::string> notes;
};

void ReportConversion(const ConvertOptions& options, const ConversionResult& result) {
    if (options.json) {
        std::vector<std::string> files = {options.to};
        files.insert(files.end(), result.additionalFiles.begin(), result.additionalFiles.end());
        PrintJson({{"from", options.from},
                   {"to", options.to},
                   {"vertices", result.vertices},
                   {"faces", result.faces},
                   {"files", files},
                   {"notes", result.notes}});
    } else if (!options.quiet) {
        std::printf("wrote %s: %llu vertices, %llu faces\n",
                    options.to.c_str(),
                    static_cast<unsigned long long>(result.vertices),
                    static_cast<unsigned long long>(result.faces));
        for (const std::string& file : result.additionalFiles)
            std::printf("wrote %s\n", file.c_str());
    }
}

void Convert(const ConvertOptions& options) {
    const MeshSpace given = {MetersPerUnit(options.fromUnits), UpAxisOf(options.fromUp)};
    const MeshSpace asked = {MetersPerUnit(options.units), UpAxisOf(options.up)};
    const bool isScene = IsScenePath(options.from);
    if (isScene && given != MeshSpace())
        throw HostError(options.from +
                        ": a scene specifies its own units and up axis; --from-units and --from-up "
                        "apply to mesh files");
    // Reject options that the format does not support before doing any work.
    SpaceForFile(options.to, given, asked);
    ProgressLine line(options.quiet);
    CheckWritable(options.to);
    // Without refinement, polygons are written unchanged, including n-gons.
    if (options.levels == 0 && !isScene) {
        PolygonMesh polygons = ReadMeshFile(options.from, &line);
        MeshSpace& space = polygons.attributes.space;
        space = Overlaid(space, given);
        line.Notes(options.from, polygons.notes);
        std::vector<std::string> further = WriteMeshFile(
            options.to, PolygonSource(polygons, SpaceForFile(options.to, space, asked)), &line);
        line.Finish();
        ReportConversion(options,
                         {polygons.positions.size(),
                          polygons.faceSizes.size(),
                          std::move(further),
                          polygons.notes});
        return;
    }
    // Writers use blocks of a few megabytes.
    constexpr uint64_t writerBytes = uint64_t{16} << 20;
    const LoadedScene scene = OpenRefined(
        options.from,
        options.levels,
        given,
        [](const LevelForecast&) { return writerBytes; },
        &line);
    const MeshSpace space = SpaceForFile(options.to, scene.geometry->Attributes().space, asked);
    line.Notes(options.from, scene.notes);
    std::unique_ptr<const MeshSource> source;
    if (options.visible)
        source = std::make_unique<VisibleSource>(
            *scene.geometry, LevelSource::Options{false, space}, &line);
    else
        source = std::make_unique<LevelSource>(*scene.geometry, LevelSource::Options{false, space});
    std::vector<std::string> further = WriteMeshFile(options.to, *source, &line);
    line.Finish();
    ReportConversion(options,
                     {source->VertexCount(), source->FaceCount(), std::move(further), scene.notes});
}

}  // namespace

void AddConvertCommand(CLI::App& program) {
    auto options = std::make_shared<ConvertOptions>();
    CLI::App* verb = program.add_subcommand(
        "convert",
        "Writes a mesh in another format, optionally subdivided. Reads OBJ, PLY, STL, glTF, GLB "
        "and "
        "scenes; writes OBJ, PLY, STL, glTF, GLB, USDA (see docs/mesh-files.md)");
    verb->add_option("from", options->from, "Mesh file or scene to read")->required();
    verb->add_option("to", options->to, "Mesh file to write")->required();
    verb->add_option("--levels", options->levels, "Subdivision levels to add")
        ->check(CLI::Range(0u, 12u));
    const CLI::IsMember isUnit({"mm", "cm", "dm", "m", "km", "in", "ft", "yd"});
    const CLI::IsMember isAxis({"y", "z"});
    verb->add_option("--from-units", options->fromUnits, "Unit of the input file")->check(isUnit);
    verb->add_option("--from-up", options->fromUp, "Up axis of the input file")->check(isAxis);
    verb->add_option("--units", options->units, "Unit of the output file")->check(isUnit);
    verb->add_option("--up", options->up, "Up axis of the output file")->check(isAxis);
    verb->add_flag("--visible", options->visible, "Omits the hidden faces of a scene");
    verb->add_flag("-q,--quiet", options->quiet, "Prints no progress and no summary");
    verb->add_flag("--json", options->json, "Prints the summary as JSON on standard output");
    verb->callback([options] { Convert(*options); });
}

}  // namespace trovik
