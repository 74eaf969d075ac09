// SPDX-License-Identifier: Apache-2.0
#include "MeshCommands.h"

#include "Commands.h"
#include "Interruption.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "SceneInfo.h"
#include "framework/errors/HostError.h"
#include "framework/errors/WorkStopped.h"
#include "framework/files/FilePath.h"
#include "framework/files/MeshSource.h"
#include "framework/levels/LevelSource.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <memory>

namespace trovik {

LoadedScene OpenRefined(const std::string& path,
                        unsigned levels,
                        const MeshSpace& given,
                        const std::function<uint64_t(const LevelForecast&)>& furtherBytes) {
    LoadedScene scene;
    if (IsScenePath(path)) {
        scene = LoadScene(path, nullptr);
    } else {
        PolygonMesh polygons = ReadMeshFile(path);
        polygons.attributes.space = Overlaid(polygons.attributes.space, given);
        MakeOrientedManifold(polygons);
        scene.geometry = std::make_unique<LevelGeometry>(polygons);
    }
    StopIfInterrupted();
    if (levels > 0) {
        try {
            scene.geometry->CheckForecast(levels,
                                          std::numeric_limits<uint64_t>::max(),
                                          furtherBytes(scene.geometry->Forecast(levels)));
        } catch (const HostError& error) {
            throw HostError(path + ": " + error.what());
        }
    }
    SubdivideOptions refining;
    refining.stop = IsInterrupted;
    for (unsigned i = 0; i < levels; ++i)
        if (!scene.geometry->Subdivide(refining)) throw WorkStopped();
    return scene;
}

namespace {

/// What a mesh has beside its shape, in words, one line each.
std::vector<std::pair<std::string, std::string>> AttributeLines(const PolygonMesh& polygons) {
    const SurfaceAttributes& attributes = polygons.attributes;
    std::vector<std::pair<std::string, std::string>> lines;
    if (!polygons.normals.empty()) lines.push_back({"normals", "one a vertex"});
    if (!attributes.cornerUvs.empty()) {
        const PolygonSource source(polygons);
        lines.push_back({"texture",
                         std::to_string(attributes.uvs.size()) + " coordinates, " +
                             (source.UvsFollowVertices() ? "no seams" : "with seams")});
    }
    if (!attributes.colors.empty())
        lines.push_back({"colours", attributes.hasAlpha ? "with alpha" : "without alpha"});
    if (!attributes.groupNames.empty())
        lines.push_back({"groups", std::to_string(attributes.groupNames.size())});
    if (!attributes.materialNames.empty())
        lines.push_back({"materials", std::to_string(attributes.materialNames.size())});
    if (attributes.space.metersPerUnit > 0.0)
        lines.push_back({"units", UnitName(attributes.space.metersPerUnit)});
    if (attributes.space.up != UpAxis::Unknown)
        lines.push_back({"up", UpAxisName(attributes.space.up)});
    return lines;
}

/// The same for programs.
nlohmann::json AttributeJson(const PolygonMesh& polygons) {
    const SurfaceAttributes& attributes = polygons.attributes;
    return {{"normals", !polygons.normals.empty()},
            {"textureCoordinates", attributes.uvs.size()},
            {"textureSeams",
             !attributes.cornerUvs.empty() && !PolygonSource(polygons).UvsFollowVertices()},
            {"colors", !attributes.colors.empty()},
            {"alpha", attributes.hasAlpha},
            {"groups", attributes.groupNames},
            {"materials", attributes.materialNames},
            {"units", UnitName(attributes.space.metersPerUnit)},
            {"up", UpAxisName(attributes.space.up)}};
}

struct InfoOptions {
    std::string mesh;
    bool json = false;
    bool quiet = false;
};

void Info(const InfoOptions& options) {
    if (IsScenePath(options.mesh)) {
        TellScene(options.mesh, options.json, options.quiet);
        return;
    }
    PolygonMesh polygons = ReadMeshFile(options.mesh);
    StopIfInterrupted();
    std::map<uint32_t, std::size_t> sizes;
    for (const uint32_t size : polygons.faceSizes) ++sizes[size];
    AxisAlignedBoundingBox box;
    for (const auto& p : polygons.positions) box.Extend({p[0], p[1], p[2]});
    const auto lines = AttributeLines(polygons);
    const nlohmann::json carried = AttributeJson(polygons);
    const std::size_t vertices = polygons.positions.size();
    const std::size_t faces = polygons.faceSizes.size();
    const ManifoldReport report = MakeOrientedManifold(polygons);
    LevelGeometry geometry(polygons);
    std::size_t borderEdges = 0;
    LevelMesh& base = *geometry.Level(0);
    for (uint32_t face = 0; face < base.faceCount; ++face)
        for (uint32_t side = 0; side < base.CornersPerFace(); ++side)
            if (base.QuadEdgeNeighbour(face, side) == openBorder) ++borderEdges;

    if (options.json) {
        nlohmann::json bySize = nlohmann::json::object();
        for (const auto& [size, count] : sizes) bySize[std::to_string(size)] = count;
        const nlohmann::json info = {{"file", options.mesh},
                                     {"vertices", vertices},
                                     {"faces", faces},
                                     {"facesByCorners", bySize},
                                     {"low", {box.minX, box.minY, box.minZ}},
                                     {"high", {box.maxX, box.maxY, box.maxZ}},
                                     {"carries", carried},
                                     {"verticesAddedBySplitting", report.addedVertices},
                                     {"level0",
                                      {{"type", base.meshType == 1 ? "quads" : "triangles"},
                                       {"vertices", base.VertexCount()},
                                       {"faces", base.faceCount},
                                       {"borderEdges", borderEdges}}}};
        PrintJson(info);
        return;
    }
    if (options.quiet) return;
    std::printf("%s\n", options.mesh.c_str());
    std::printf("  vertices  %zu\n  faces     %zu", vertices, faces);
    const char* separator = "  (";
    for (const auto& [size, count] : sizes) {
        std::printf("%s%zu of %u corners", separator, count, size);
        separator = ", ";
    }
    std::printf(")\n  box       %g %g %g  to  %g %g %g\n",
                static_cast<double>(box.minX),
                static_cast<double>(box.minY),
                static_cast<double>(box.minZ),
                static_cast<double>(box.maxX),
                static_cast<double>(box.maxY),
                static_cast<double>(box.maxZ));
    for (const auto& [what, text] : lines) std::printf("  %-9s %s\n", what.c_str(), text.c_str());
    if (!report.Untouched())
        std::printf("  split     %zu vertices added where the mesh is no oriented manifold\n",
                    report.addedVertices);
    std::printf("  level 0   %u %s, %u vertices, %zu border edges\n",
                base.faceCount,
                base.meshType == 1 ? "quads" : "triangles",
                base.VertexCount(),
                borderEdges);
}

struct ConvertOptions {
    std::string from;
    std::string to;
    unsigned levels = 0;
    std::string fromUnits;
    std::string fromUp;
    std::string units;
    std::string up;
    bool quiet = false;
    bool json = false;
};

void TellConverted(const ConvertOptions& options, uint64_t vertices, uint64_t faces) {
    if (options.json) {
        PrintJson(
            {{"from", options.from}, {"to", options.to}, {"vertices", vertices}, {"faces", faces}});
    } else if (!options.quiet) {
        std::printf("wrote %s: %llu vertices, %llu faces\n",
                    options.to.c_str(),
                    static_cast<unsigned long long>(vertices),
                    static_cast<unsigned long long>(faces));
    }
}

void Convert(const ConvertOptions& options) {
    const MeshSpace given = {MetersPerUnit(options.fromUnits), UpAxisOf(options.fromUp)};
    const MeshSpace asked = {MetersPerUnit(options.units), UpAxisOf(options.up)};
    const bool isScene = IsScenePath(options.from);
    if (isScene && given != MeshSpace())
        throw HostError(options.from + ": a scene knows what its numbers mean");
    // What cannot be asked of the format is told before the work is done.
    SpaceForFile(options.to, given, asked);
    ProgressLine line(options.quiet);
    CheckWritable(options.to);
    const auto progress = [&line](uint64_t done, uint64_t total) {
        line.File(done, total);
        StopIfInterrupted();
    };
    // Without refinement the polygons pass as they are, n-gons included.
    if (options.levels == 0 && !isScene) {
        PolygonMesh polygons = ReadMeshFile(options.from);
        StopIfInterrupted();
        MeshSpace& space = polygons.attributes.space;
        space = Overlaid(space, given);
        WriteMeshFile(
            options.to, PolygonSource(polygons, SpaceForFile(options.to, space, asked)), progress);
        line.Finish();
        TellConverted(options, polygons.positions.size(), polygons.faceSizes.size());
        return;
    }
    // Writers work on blocks of a few megabytes.
    constexpr uint64_t writerBytes = uint64_t{16} << 20;
    const LoadedScene scene = OpenRefined(
        options.from, options.levels, given, [](const LevelForecast&) { return writerBytes; });
    const MeshSpace space = SpaceForFile(options.to, scene.geometry->Attributes().space, asked);
    WriteMeshFile(options.to, LevelSource(*scene.geometry, {false, space}), progress);
    line.Finish();
    const LevelMesh& level = *scene.geometry->Bound();
    TellConverted(options, level.VertexCount(), level.faceCount);
}

}  // namespace

void AddInfoCommand(CLI::App& program) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* verb = program.add_subcommand(
        "info", "Tells what is in a mesh file (OBJ, PLY, STL, glTF, GLB) or a scene");
    verb->add_option("mesh", options->mesh, "Mesh file or scene (.trovik)")->required();
    verb->add_flag("-q,--quiet", options->quiet, "Says nothing of a file that can be read");
    verb->add_flag("--json", options->json, "As JSON on standard output");
    verb->callback([options] { Info(*options); });
}

void AddConvertCommand(CLI::App& program) {
    auto options = std::make_shared<ConvertOptions>();
    CLI::App* verb = program.add_subcommand(
        "convert",
        "Writes a mesh in another format, refined if wanted. Reads OBJ, PLY, STL, glTF, GLB and "
        "scenes; writes OBJ, PLY, STL, glTF, GLB, USDA (see docs/mesh-files.md)");
    verb->add_option("from", options->from, "Mesh file or scene to read")->required();
    verb->add_option("to", options->to, "Mesh file to write")->required();
    verb->add_option("--levels", options->levels, "Subdivision levels to add")
        ->check(CLI::Range(0u, 12u));
    const CLI::IsMember isUnit({"mm", "cm", "dm", "m", "km", "in", "ft", "yd"});
    const CLI::IsMember isAxis({"y", "z"});
    verb->add_option("--from-units", options->fromUnits, "Unit of the file that is read")
        ->check(isUnit);
    verb->add_option("--from-up", options->fromUp, "Axis that points up in the file that is read")
        ->check(isAxis);
    verb->add_option("--units", options->units, "Unit of the file that is written")->check(isUnit);
    verb->add_option("--up", options->up, "Axis that points up in the file that is written")
        ->check(isAxis);
    verb->add_flag("-q,--quiet", options->quiet, "No progress and no summary");
    verb->add_flag("--json", options->json, "The summary as JSON on standard output");
    verb->callback([options] { Convert(*options); });
}

}  // namespace trovik
