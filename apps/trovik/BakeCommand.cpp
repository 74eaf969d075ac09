// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "framework/baking/MapFile.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/multires/Steps.h"
#include "framework/scene/SceneFile.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>

namespace trovik {

namespace {

struct BakeCommandOptions {
    std::string source;
    std::string map = "displacement";
    std::string space = "tangent";
    std::string bits;
    std::vector<uint32_t> size = {1024};
    unsigned unsubdivide = 0;
    /// Negative if not given.
    int from = -1;
    float range = -1.0f;
    BakeOptions bake;
    MapFileOptions file;
    bool quiet = false;
    bool json = false;
};

std::unique_ptr<LevelGeometry> Open(const BakeCommandOptions& options, ProgressLine& line) {
    std::unique_ptr<LevelGeometry> geometry;
    if (IsScenePath(options.source)) {
        geometry = std::move(LoadScene(options.source, nullptr, nullptr, &line).geometry);
    } else {
        PolygonMesh polygons = ReadMeshFile(options.source, &line);
        line.Notes(options.source, polygons.notes);
        MakeOrientedManifold(polygons, &line);
        geometry = std::make_unique<LevelGeometry>(polygons, &line);
    }
    for (unsigned i = 0; i < options.unsubdivide; ++i) UnsubdivideAsStep(*geometry, &line);
    if (geometry->LevelCount() == 1)
        throw HostError(
            "there is only one level; use a scene with several levels, or --unsubdivide with a "
            "mesh that is a refinement of a coarser one");
    return geometry;
}

void PrintReport(const MapReport& report) {
    std::printf("map        %s", MapKindName(report.text.kind));
    if (report.text.kind != MapKind::Displacement)
        std::printf(", %s space", MapSpaceName(report.text.space));
    std::printf(", level %u to level %u\n", report.text.from, report.text.to);
    std::printf("size       %u x %u, %s\n",
                report.width,
                report.height,
                report.bits == MapBits::Float ? "floats" : "16 bits");
    std::printf("texels     %llu covered, %llu padding\n",
                static_cast<unsigned long long>(report.coveredTexels),
                static_cast<unsigned long long>(report.paddedTexels));
    if (report.text.kind != MapKind::Normal)
        std::printf("range      %.9g\n", static_cast<double>(report.range));
    std::printf("values     (v - %.9g) x %.9g\n",
                static_cast<double>(report.text.mid),
                static_cast<double>(report.text.scale));
    for (const std::string& file : report.files) std::printf("wrote      %s\n", file.c_str());
}

void PrintReportJson(const MapReport& report) {
    const nlohmann::json json = {{"map", MapKindName(report.text.kind)},
                                 {"space", MapSpaceName(report.text.space)},
                                 {"from", report.text.from},
                                 {"to", report.text.to},
                                 {"width", report.width},
                                 {"height", report.height},
                                 {"bits", report.bits == MapBits::Float ? "float" : "16"},
                                 {"range", report.range},
                                 {"mid", report.text.mid},
                                 {"scale", report.text.scale},
                                 {"coveredTexels", report.coveredTexels},
                                 {"paddedTexels", report.paddedTexels},
                                 {"overlappingTexels", report.overlappingTexels},
                                 {"files", report.files}};
    PrintJson(json);
}

void Bake(BakeCommandOptions options) {
    ProgressLine line(options.quiet);
    options.bake.kind = MapKindOf(options.map).value_or(MapKind::Displacement);
    options.bake.space = MapSpaceOf(options.space).value_or(MapSpace::Tangent);
    options.bake.width = options.size.front();
    options.bake.height = options.size.back();
    if (options.from >= 0) options.bake.from = static_cast<uint32_t>(options.from);
    if (!options.bits.empty())
        options.file.bits = options.bits == "16" ? MapBits::Sixteen : MapBits::Float;
    if (options.range > 0.0f) options.file.range = options.range;
    line.Step(0, 2, "opening " + options.source);
    MapReport report;
    try {
        const std::unique_ptr<LevelGeometry> geometry = Open(options, line);
        line.Step(1, 2, "baking " + options.file.path);
        report = BakeToFile(*geometry, options.bake, options.file, &line);
    } catch (const HostError& error) {
        const std::string reason = error.what();
        // Errors about a file already name the file.
        const bool named = reason.find(options.source) != std::string::npos ||
                           reason.find(options.file.path) != std::string::npos;
        throw HostError(named ? reason : options.source + ": " + reason);
    }
    if (!report.warning.empty()) line.Message(report.warning);
    line.Finish();
    if (options.json)
        PrintReportJson(report);
    else if (!options.quiet)
        PrintReport(report);
}

}  // namespace

void AddBakeCommand(CLI::App& program) {
    auto options = std::make_shared<BakeCommandOptions>();
    CLI::App* verb = program.add_subcommand(
        "bake",
        "Bakes the difference between a fine level and a coarse one into a map over the mesh's "
        "UVs: a displacement, vector displacement or normal map (see docs/baking.md)");
    verb->add_option("source", options->source, "Scene (.trovik), or mesh file with --unsubdivide")
        ->required();
    verb->add_option(
            "-o,--output",
            options->file.path,
            "Image to write: .exr, .png, .tif; with <UDIM> in the name, one image per texture tile")
        ->required();
    verb->add_option("--map", options->map, "Map type: displacement (default), vector or normal")
        ->check(CLI::IsMember({"displacement", "vector", "normal"}));
    verb->add_option(
            "--space",
            options->space,
            "Space of vectors and normals: tangent (default) or object (the mesh's own axes)")
        ->check(CLI::IsMember({"tangent", "object"}));
    verb->add_option("--from", options->from, "Level that is baked (default: the highest)")
        ->check(CLI::Range(0, 100));
    verb->add_option(
            "--to", options->bake.to, "Level to which the map will be applied (default: 0)")
        ->check(CLI::Range(0, 100));
    verb->add_option("--size", options->size, "Size in texels: one side, or width and height")
        ->expected(1, 2)
        ->check(CLI::Range(1, 16384));
    verb->add_option("--bits",
                     options->bits,
                     "Bits per value: 16 or float (default: float for .exr, otherwise 16)")
        ->check(CLI::IsMember({"16", "float"}));
    verb->add_option("--range",
                     options->range,
                     "For 16-bit output: displacement that is mapped to the ends of the value "
                     "range (default: the largest displacement)")
        ->check(CLI::PositiveNumber);
    verb->add_option("--samples", options->bake.samples, "Samples per texel: 1, 4 (default) or 16")
        ->check(CLI::IsMember({1, 4, 16}));
    verb->add_option("--padding",
                     options->bake.padding,
                     "Padding around each UV island, in texels (default: 8)")
        ->check(CLI::Range(0, 256));
    verb->add_flag(
        "--repeat", options->bake.repeat, "Wraps UVs outside 0 to 1, for a repeating texture");
    verb->add_option(
            "--unsubdivide",
            options->unsubdivide,
            "Number of coarser levels to reconstruct below the mesh, which must be a refinement")
        ->check(CLI::Range(0u, 12u));
    verb->add_flag("-q,--quiet", options->quiet, "Prints no progress and no summary");
    verb->add_flag("--json", options->json, "Prints the summary as JSON on standard output");
    verb->callback([options] { Bake(*options); });
}

}  // namespace trovik
