// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "JsonOutput.h"
#include "MeshCommands.h"
#include "ProgressLine.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/io/FilePath.h"
#include "framework/multires/LevelSource.h"
#include "framework/picking/MeshDifference.h"
#include "framework/render/DistanceMap.h"
#include "framework/render/RenderFile.h"
#include "framework/render/RenderedLevel.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <utility>

namespace trovik {

namespace {

constexpr int different = 1;
constexpr int comparisonFailed = 2;

/// The default spacing of samples is the diagonal of the bounding box divided by this number.
constexpr double samplesPerDiagonal = 200.0;

struct DiffOptions {
    std::string a;
    std::string b;
    double tolerance = 0.0;
    bool surface = false;
    /// 0 for the default.
    double spacing = 0.0;
    std::string heatmap;
    /// 0 for the largest distance.
    float range = 0.0f;
    bool quiet = false;
    bool json = false;
};

/// The result of a comparison.
struct Difference {
    bool isByVertex = false;
    double spacing = 0.0;
    /// One entry for a comparison by vertex; otherwise from A to B, and from B to A.
    std::vector<DistanceSummary> distances;
    /// Of each vertex of A.
    std::vector<float> distancesOfA;

    /// NaN if any distance is.
    double Max() const {
        double max = 0.0;
        for (const DistanceSummary& one : distances)
            if (std::isnan(one.max) || one.max > max) max = one.max;
        return max;
    }
};

/// Reads a mesh file, or the current level of a scene in mesh-local coordinates, without changing
/// its faces.
/// \param space  the space to which coordinates are converted, if the file specifies one; unknown
/// members are set to those of the file.
PolygonMesh ReadPolygons(const std::string& path, MeshSpace& space, ProgressLine& line) {
    if (IsScenePath(path)) {
        const LoadedScene scene = LoadScene(path, nullptr, nullptr, &line);
        line.Notes(path, scene.notes);
        space = Overlaid(scene.geometry->Attributes().space, space);
        return GatherPolygons(LevelSource(*scene.geometry, {false, space}));
    }
    PolygonMesh polygons = ReadMeshFile(path, &line);
    line.Notes(path, polygons.notes);
    space = Overlaid(polygons.attributes.space, space);
    const SpaceConversion conversion(polygons.attributes.space, space);
    for (auto& position : polygons.positions) position = conversion.Point(position);
    polygons.normals.clear();
    return polygons;
}

/// A mesh as a geometry with one level and the same surface.
struct ComparedSurface {
    std::unique_ptr<LevelGeometry> geometry;
    /// The vertex of the polygons for each vertex of the level.
    std::vector<uint32_t> vertices;

    ComparedSurface(PolygonMesh polygons, JobControl* job) {
        SplitMixedFaces(polygons);
        const std::vector<uint32_t> corners = polygons.faceVertices;
        MakeOrientedManifold(polygons, job);
        // Vertices that were added are copies of others at the same corners. Vertices without faces
        // keep their numbers.
        vertices.resize(polygons.positions.size());
        std::iota(vertices.begin(), vertices.end(), 0u);
        for (std::size_t i = 0; i < corners.size(); ++i)
            vertices[polygons.faceVertices[i]] = corners[i];
        geometry = std::make_unique<LevelGeometry>(polygons, job);
    }
};

double Diagonal(const PolygonMesh& a, const PolygonMesh& b) {
    AxisAlignedBoundingBox box;
    for (const PolygonMesh* mesh : {&a, &b})
        for (const auto& p : mesh->positions) box.Extend({p[0], p[1], p[2]});
    return std::hypot(double{box.maxX} - double{box.minX},
                      double{box.maxY} - double{box.minY},
                      double{box.maxZ} - double{box.minZ});
}

Difference CompareSurfaces(const DiffOptions& options,
                           const PolygonMesh& a,
                           const PolygonMesh& b,
                           JobControl* job) {
    Difference difference;
    difference.spacing = options.spacing > 0.0
                             ? options.spacing
                             : std::max(Diagonal(a, b) / samplesPerDiagonal, 1e-30);
    const ComparedSurface surfaces[2] = {{a, job}, {b, job}};
    for (const int from : {0, 1}) {
        const LevelMesh& level = *surfaces[from].geometry->Bound();
        const PatchTree tree(surfaces[1 - from].geometry->Bound(), job);
        const std::vector<float> ofVertices = VertexDistances(level, tree, job);
        difference.distances.push_back(
            DistanceToSurface(level, tree, ofVertices, difference.spacing, options.tolerance, job));
        if (from == 1) continue;
        difference.distancesOfA.resize(a.positions.size());
        for (std::size_t i = 0; i < ofVertices.size(); ++i)
            difference.distancesOfA[surfaces[0].vertices[i]] = ofVertices[i];
    }
    return difference;
}

void WriteHeatmap(const DiffOptions& options,
                  const PolygonMesh& mesh,
                  const Difference& difference,
                  JobControl* job) {
    float range = options.range > 0.0f ? options.range : static_cast<float>(difference.Max());
    // Without any distance, the whole mesh has the first colour of the scale.
    if (!(range > 0.0f)) range = 1.0f;
    const ComparedSurface surface(mesh, job);
    std::vector<float> distances;
    distances.reserve(surface.vertices.size());
    for (const uint32_t vertex : surface.vertices)
        distances.push_back(difference.distancesOfA[vertex]);
    const std::vector<float> colors = DistanceColors(distances, range);
    RenderMesh shown = VisibleLevel(*surface.geometry);
    shown.vertexColors = colors.data();
    RenderOptions picture;
    picture.shading = ShadingMode::VertexColors;
    const RenderCamera camera =
        FrameMeshes({shown},
                    -defaultDirection,
                    defaultFieldOfView,
                    static_cast<float>(picture.width) / static_cast<float>(picture.height));
    RenderImage image = RenderScene({shown}, job).Render(camera, picture, job);
    DrawDistanceLegend(image, range);
    WriteRender(options.heatmap, image);
}

nlohmann::json SummaryJson(const DistanceSummary& summary) {
    const auto triple = [](const Vector& v) { return nlohmann::json{v.x, v.y, v.z}; };
    return {{"samples", summary.samples},
            {"beyondTolerance", summary.beyond},
            {"max", summary.max},
            {"mean", summary.mean},
            {"rms", summary.rms},
            {"position", triple(summary.position)},
            {"otherPosition", triple(summary.other)}};
}

void PrintSummary(const DistanceSummary& summary, const char* samples, double tolerance) {
    std::printf("  max       %.9g, from (%.9g, %.9g, %.9g) to (%.9g, %.9g, %.9g)\n",
                summary.max,
                static_cast<double>(summary.position.x),
                static_cast<double>(summary.position.y),
                static_cast<double>(summary.position.z),
                static_cast<double>(summary.other.x),
                static_cast<double>(summary.other.y),
                static_cast<double>(summary.other.z));
    std::printf("  mean      %.9g\n  rms       %.9g\n", summary.mean, summary.rms);
    std::printf("  beyond    %llu of %llu %s exceed the tolerance %.9g\n",
                static_cast<unsigned long long>(summary.beyond),
                static_cast<unsigned long long>(summary.samples),
                samples,
                tolerance);
}

void Report(const DiffOptions& options,
            const PolygonMesh& a,
            const PolygonMesh& b,
            const Difference& difference,
            bool isEqual) {
    if (options.json) {
        nlohmann::json distances = nlohmann::json::array();
        for (const DistanceSummary& one : difference.distances)
            distances.push_back(SummaryJson(one));
        PrintJson({{"a", options.a},
                   {"b", options.b},
                   {"equal", isEqual},
                   {"tolerance", options.tolerance},
                   {"comparison", difference.isByVertex ? "vertices" : "surfaces"},
                   {"spacing", difference.spacing},
                   {"vertices", {a.positions.size(), b.positions.size()}},
                   {"faces", {a.faceSizes.size(), b.faceSizes.size()}},
                   {"max", difference.Max()},
                   {"distances", distances},
                   {"heatmap", options.heatmap}});
        return;
    }
    if (options.quiet) return;
    for (const auto& [path, mesh] : {std::pair(&options.a, &a), std::pair(&options.b, &b)})
        std::printf("%s: %zu vertices, %zu faces\n",
                    path->c_str(),
                    mesh->positions.size(),
                    mesh->faceSizes.size());
    if (difference.isByVertex) {
        std::printf("distances between vertices with the same number\n");
        PrintSummary(difference.distances.front(), "vertices", options.tolerance);
    } else {
        std::printf("distances from the first surface to the second\n");
        PrintSummary(difference.distances.front(), "samples", options.tolerance);
        std::printf("distances from the second surface to the first\n");
        PrintSummary(difference.distances.back(), "samples", options.tolerance);
    }
    if (!options.heatmap.empty()) std::printf("wrote %s\n", options.heatmap.c_str());
    std::printf("%s\n", isEqual ? "equal" : "different");
}

/// Compares two meshes. \return whether they are equal within the tolerance.
bool Diff(const DiffOptions& options) {
    ProgressLine line(options.quiet);
    if (!options.heatmap.empty()) {
        CheckRenderPath(options.heatmap, false);
        CheckWritable(options.heatmap);
    }
    MeshSpace space;
    const PolygonMesh a = ReadPolygons(options.a, space, line);
    const PolygonMesh b = ReadPolygons(options.b, space, line);
    Difference difference;
    if (!options.surface && HasSameFaces(a, b)) {
        difference.isByVertex = true;
        difference.distances.push_back(
            CompareVertices(a, b, options.tolerance, &difference.distancesOfA));
    } else {
        difference = CompareSurfaces(options, a, b, &line);
    }
    if (!options.heatmap.empty()) WriteHeatmap(options, a, difference, &line);
    line.Finish();
    const bool isEqual = difference.Max() <= options.tolerance;
    Report(options, a, b, difference, isEqual);
    return isEqual;
}

/// Refuses NaN, which all comparisons of the other checks accept.
std::string CheckNumber(const std::string& text) {
    return std::isnan(std::strtod(text.c_str(), nullptr)) ? "expected a number, got " + text
                                                          : std::string();
}

}  // namespace

void AddDiffCommand(CLI::App& program, ExitStatuses& statuses) {
    auto options = std::make_shared<DiffOptions>();
    CLI::App* verb = program.add_subcommand(
        "diff",
        "Measures the distance between two meshes or scenes: by vertex if both have the same "
        "faces, otherwise between the surfaces, in both directions");
    verb->add_option("a", options->a, "First mesh file or scene (.trovik)")->required();
    verb->add_option("b", options->b, "Second mesh file or scene (.trovik)")->required();
    verb->add_option("--tolerance",
                     options->tolerance,
                     "Largest distance at which the meshes count as equal (default 0)")
        ->check(CLI::NonNegativeNumber)
        ->check(CheckNumber);
    verb->add_flag("--surface",
                   options->surface,
                   "Compares the surfaces, even if both meshes have the same faces");
    verb->add_option("--spacing",
                     options->spacing,
                     "Largest distance between samples of a surface (default: 1/200 of the "
                     "diagonal of the bounding box)")
        ->check(CLI::PositiveNumber)
        ->check(CheckNumber);
    CLI::Option* heatmap =
        verb->add_option("--heatmap",
                         options->heatmap,
                         "Image file to write (PNG, JPEG, TIFF): a render of the first mesh, "
                         "coloured by the distance to the second");
    verb->add_option("--range",
                     options->range,
                     "With --heatmap: distance of the last colour (default: the largest distance)")
        ->check(CLI::PositiveNumber)
        ->check(CheckNumber)
        ->needs(heatmap);
    verb->add_flag("-q,--quiet", options->quiet, "Prints only errors");
    verb->add_flag("--json", options->json, "Prints the result as JSON on standard output");
    verb->callback([options, &statuses] {
        statuses.failed = comparisonFailed;
        if (!Diff(*options)) statuses.done = different;
    });
}

}  // namespace trovik
