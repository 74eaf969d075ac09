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
#include "framework/remesh/ReducedFiles.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
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
    std::optional<uint32_t> faces;
    std::optional<float> ratio;
    std::optional<float> error;
    MeshReduction reduction;
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
    std::vector<ReducedFiles::Mesh> lods;
};

nlohmann::json JsonOf(const std::vector<ReducedFiles::Mesh>& lods) {
    nlohmann::json list = nlohmann::json::array();
    for (const ReducedFiles::Mesh& lod : lods)
        list.push_back({{"file", lod.file}, {"vertices", lod.vertices}, {"faces", lod.faces}});
    return list;
}

void PrintWritten(const std::string& file, uint64_t vertices, uint64_t faces) {
    std::printf("wrote %s: %llu vertices, %llu faces\n",
                file.c_str(),
                static_cast<unsigned long long>(vertices),
                static_cast<unsigned long long>(faces));
}

void ReportConversion(const ConvertOptions& options, const ConversionResult& result) {
    if (options.json) {
        std::vector<std::string> files = {options.to};
        for (const ReducedFiles::Mesh& lod : result.lods) files.push_back(lod.file);
        files.insert(files.end(), result.additionalFiles.begin(), result.additionalFiles.end());
        PrintJson({{"from", options.from},
                   {"to", options.to},
                   {"vertices", result.vertices},
                   {"faces", result.faces},
                   {"files", files},
                   {"lods", JsonOf(result.lods)},
                   {"notes", result.notes}});
    } else if (!options.quiet) {
        PrintWritten(options.to, result.vertices, result.faces);
        for (const ReducedFiles::Mesh& lod : result.lods)
            PrintWritten(lod.file, lod.vertices, lod.faces);
        for (const std::string& file : result.additionalFiles)
            std::printf("wrote %s\n", file.c_str());
    }
}

/// Writes the decimated mesh and the levels of detail, and adds them to the result.
void WriteReducedFiles(const ConvertOptions& options,
                       const MeshSpace& space,
                       LevelGeometry& copy,
                       ConversionResult& result,
                       ProgressLine& line) {
    ReducedFiles written = WriteReduced(options.to, copy, options.reduction, {false, space}, &line);
    for (std::string& file : written.furtherFiles)
        if (std::ranges::find(result.additionalFiles, file) == result.additionalFiles.end())
            result.additionalFiles.push_back(std::move(file));
    for (const std::string& warning : written.warnings) {
        line.Warning(warning);
        result.notes.push_back(warning);
    }
    for (ReducedFiles::Mesh& mesh : written.meshes) {
        for (const std::string& warning : mesh.warnings) {
            line.Warning(mesh.file + ": " + warning);
            result.notes.push_back(mesh.file + ": " + warning);
        }
        if (mesh.file != options.to) {
            result.lods.push_back(std::move(mesh));
            continue;
        }
        result.vertices = mesh.vertices;
        result.faces = mesh.faces;
    }
}

/// Converts a mesh file without refining it: polygons are written unchanged, including n-gons,
/// unless they are decimated.
ConversionResult ConvertPolygons(const ConvertOptions& options,
                                 const MeshSpace& given,
                                 const MeshSpace& asked,
                                 ProgressLine& line) {
    PolygonMesh polygons = ReadMeshFile(options.from, &line);
    MeshSpace& present = polygons.attributes.space;
    present = Overlaid(present, given);
    line.Notes(options.from, polygons.notes);
    const MeshSpace space = SpaceForFile(options.to, present, asked);
    ConversionResult result{
        polygons.positions.size(), polygons.faceSizes.size(), {}, polygons.notes, {}};
    if (!options.reduction.decimation)
        result.additionalFiles = WriteMeshFile(options.to, PolygonSource(polygons, space), &line);
    if (!options.reduction.IsEmpty()) {
        const auto copy = CopyForReduction(std::move(polygons), &line);
        WriteReducedFiles(options, space, *copy, result, line);
    }
    return result;
}

/// Converts the current level of a scene, or a mesh file after subdividing it.
ConversionResult ConvertLevel(const ConvertOptions& options,
                              const MeshSpace& given,
                              const MeshSpace& asked,
                              ProgressLine& line) {
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
    ConversionResult result;
    result.notes = scene.notes;
    if (!options.reduction.decimation) {
        std::unique_ptr<const MeshSource> source;
        const LevelSource::Options wanted{false, space};
        if (options.visible)
            source = std::make_unique<VisibleSource>(*scene.geometry, wanted, &line);
        else
            source = std::make_unique<LevelSource>(*scene.geometry, wanted);
        result.additionalFiles = WriteMeshFile(options.to, *source, &line);
        result.vertices = source->VertexCount();
        result.faces = source->FaceCount();
    }
    if (!options.reduction.IsEmpty()) {
        const auto copy = CopyForReduction(*scene.geometry, !options.visible, &line);
        WriteReducedFiles(options, space, *copy, result, line);
    }
    return result;
}

void Convert(ConvertOptions options) {
    const MeshSpace given = {MetersPerUnit(options.fromUnits), UpAxisOf(options.fromUp)};
    const MeshSpace asked = {MetersPerUnit(options.units), UpAxisOf(options.up)};
    const bool isScene = IsScenePath(options.from);
    if (isScene && given != MeshSpace())
        throw HostError(options.from +
                        ": a scene specifies its own units and up axis; --from-units and --from-up "
                        "apply to mesh files");
    if (options.faces || options.ratio || options.error)
        options.reduction.decimation =
            Decimation{options.faces, options.error, true, options.ratio};
    // Reject options that the format does not support before doing any work.
    SpaceForFile(options.to, given, asked);
    ProgressLine line(options.quiet);
    CheckWritable(options.to);
    for (uint32_t lod = 1; lod <= options.reduction.lods; ++lod) {
        const std::string file = LodPath(options.to, lod);
        std::error_code ignored;
        if (std::filesystem::equivalent(file, options.from, ignored))
            throw HostError(file + ": a level of detail would replace the input file");
        CheckWritable(file);
    }
    const ConversionResult result = options.levels == 0 && !isScene
                                        ? ConvertPolygons(options, given, asked, line)
                                        : ConvertLevel(options, given, asked, line);
    line.Finish();
    ReportConversion(options, result);
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
    CLI::Option* faces =
        verb->add_option("--faces", options->faces, "Decimates to this number of triangles")
            ->check(CLI::Range(1u, 1073741823u));
    verb->add_option("--ratio", options->ratio, "Decimates to this fraction of the triangles")
        ->check(CLI::Range(1e-9, 1.0))
        ->excludes(faces);
    verb->add_option(
            "--error", options->error, "Decimates up to this distance between the surfaces")
        ->check(CLI::Range(1e-30, 1e12));
    CLI::Option* lods =
        verb->add_option(
                "--lods", options->reduction.lods, "Also writes N files with fewer triangles")
            ->check(CLI::Range(0u, maxLods));
    verb->add_option("--lod-ratio",
                     options->reduction.lodRatio,
                     "Triangles of such a file, as a fraction of the previous one")
        ->check(CLI::Range(1e-6, 0.999999))
        ->needs(lods);
    verb->add_flag("-q,--quiet", options->quiet, "Prints no progress and no summary");
    verb->add_flag("--json", options->json, "Prints the summary as JSON on standard output");
    verb->callback([options] { Convert(*options); });
}

}  // namespace trovik
