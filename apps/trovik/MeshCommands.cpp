// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "Interruption.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "SceneInfo.h"
#include "framework/errors/HostError.h"
#include "framework/errors/WorkStopped.h"
#include "framework/files/FilePath.h"
#include "framework/files/MeshSource.h"
#include "framework/images/ImageFile.h"
#include "framework/levels/LevelSource.h"
#include "framework/pictures/Picture.h"
#include "framework/pictures/RenderMemory.h"
#include "framework/scene/SceneFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <memory>

namespace trovik {

namespace {

/// A mesh file's geometry, or all of a scene but its tools. Levels that do not fit into memory,
/// together with the `furtherBytes` of a forecast, are refused before any is made.
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

struct RenderOptions {
    std::string mesh;
    std::string picture;
    unsigned levels = 0;
    /// Empty: as a scene was last seen, a mesh from a little above and beside its front.
    std::vector<float> from;
    PictureOptions options;
    bool quiet = false;
    bool json = false;
};

/// The whole mesh, seen from a direction.
PictureCamera Framed(const PictureMesh& shown, const Vector& from, const PictureOptions& options) {
    constexpr float fieldOfView = 35.0f;
    return FrameMeshes({shown},
                       -from,
                       fieldOfView,
                       static_cast<float>(options.width) / static_cast<float>(options.height));
}

void Render(const RenderOptions& wanted) {
    Vector from(0.35f, 0.2f, 1.0f);
    if (!wanted.from.empty()) from = Vector(wanted.from[0], wanted.from[1], wanted.from[2]);
    if (!(from.Length() > 0.0f)) throw HostError("--from: the direction has no length");
    const ProgressLine line(wanted.quiet);
    CheckWritable(wanted.picture);
    const LoadedScene scene =
        OpenRefined(wanted.mesh, wanted.levels, {}, [](const LevelForecast& forecast) {
            return RenderBytes(forecast.vertices, forecast.faces);
        });
    const LevelMesh& level = *scene.geometry->Bound();
    PictureMesh shown;
    shown.positions = &level.vertices.array->x;
    shown.positionStride = sizeof(Vertex);
    shown.vertexCount = level.VertexCount();
    shown.normals = &level.vertexNormals.array->x;
    shown.faceVertexIndices = level.faceVertexIndices.array;
    shown.faceCount = level.faceCount;
    shown.cornersPerFace = level.CornersPerFace();
    const Matrix& matrix = scene.geometry->Place().ToWorld();
    std::copy(&matrix.m[0][0], &matrix.m[0][0] + 16, shown.localToWorld);
    if (level.FrozenVertexCount() != 0) {
        shown.freeze = &level.vertices.array->freeze;
        shown.freezeStride = sizeof(Vertex);
    }
    const StrokeView& view = scene.settings.view;
    const PictureCamera camera =
        IsScenePath(wanted.mesh) && wanted.from.empty()
            ? PictureCamera{view.eye, view.target, view.up, view.verticalFieldOfView}
            : Framed(shown, from, wanted.options);
    const Picture picture = RenderPicture({shown}, camera, wanted.options);
    StopIfInterrupted();
    WriteImageFile(wanted.picture,
                   picture.rgb.data(),
                   static_cast<uint32_t>(picture.width),
                   static_cast<uint32_t>(picture.height),
                   3);
    if (wanted.json) {
        const auto triple = [](const Vector& v) { return nlohmann::json{v.x, v.y, v.z}; };
        PrintJson({{"mesh", wanted.mesh},
                   {"picture", wanted.picture},
                   {"width", picture.width},
                   {"height", picture.height},
                   {"camera",
                    {{"eye", triple(camera.eye)},
                     {"target", triple(camera.target)},
                     {"up", triple(camera.up)},
                     {"fieldOfView", camera.verticalFieldOfView}}}});
    } else if (!wanted.quiet) {
        std::printf("wrote %s: %d x %d pixels\n",
                    wanted.picture.c_str(),
                    static_cast<int>(picture.width),
                    static_cast<int>(picture.height));
    }
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

void AddRenderCommand(CLI::App& program) {
    auto options = std::make_shared<RenderOptions>();
    CLI::App* verb = program.add_subcommand("render", "Makes a picture of a mesh or a scene");
    verb->add_option("mesh", options->mesh, "Mesh file or scene (.trovik)")->required();
    verb->add_option("picture", options->picture, "Picture file (PNG, JPEG, TIFF)")->required();
    verb->add_option("--levels", options->levels, "Subdivision levels to add")
        ->check(CLI::Range(0u, 12u));
    verb->add_option("--from", options->from, "Direction from the mesh to the eye, three numbers")
        ->expected(3);
    verb->add_option("--width", options->options.width, "Width in pixels")
        ->check(CLI::Range(1, 16384));
    verb->add_option("--height", options->options.height, "Height in pixels")
        ->check(CLI::Range(1, 16384));
    verb->add_option("--samples", options->options.samples, "Rays through each pixel")
        ->check(CLI::Range(1, 4096));
    verb->add_flag("--wireframe", options->options.wireframe, "With the edges of the faces");
    verb->add_flag("-q,--quiet", options->quiet, "No summary");
    verb->add_flag("--json", options->json, "The summary as JSON on standard output");
    verb->callback([options] { Render(*options); });
}

}  // namespace trovik
