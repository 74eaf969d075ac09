// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/IsotropicRemeshing.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/memory/FreeMemory.h"
#include "framework/mesh/LevelForecast.h"
#include "framework/remesh/EdgeLengthPasses.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace trovik {

namespace {

/// Passes at a constant length.
constexpr int lengthPasses = 8;
/// Passes that adjust the length to reach a number of faces.
constexpr int adjustingPasses = 24;
/// Passes that only flip edges and relax vertices.
constexpr int finalPasses = 3;
/// Lengths change by this factor per pass if edges are only split or only collapsed.
constexpr float lengthStep = 0.85f;
constexpr uint64_t maxFaces = EditableMesh::maxFaces;

std::string TextOf(float number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

/// Memory for a number of triangles: the mesh being edited, the polygons of the result, and the
/// level.
uint64_t BytesFor(uint64_t triangles) {
    constexpr uint64_t perTriangle =
        EditableMesh::bytesPerFace + 4 * sizeof(uint32_t) + LevelForecast::bytesPerFace;
    constexpr uint64_t perVertex =
        EditableMesh::bytesPerVertex + 3 * sizeof(float) + LevelForecast::bytesPerVertex;
    return triangles * perTriangle + triangles / 2 * perVertex;
}

uint64_t TriangleCountOf(const LevelMesh& level) {
    return uint64_t{level.faceCount} * (level.CornersPerFace() - 2);
}

void Check(const IsotropicRemeshing& settings) {
    if (settings.edgeLength.has_value() == settings.faces.has_value())
        throw HostError("remeshing needs either an edge length or a number of faces");
    if (settings.edgeLength &&
        !(*settings.edgeLength > 0.0f && std::isfinite(*settings.edgeLength)))
        throw HostError("the edge length must be above 0 and finite, not " +
                        TextOf(*settings.edgeLength));
    if (settings.faces && (*settings.faces == 0 || *settings.faces > maxFaces))
        throw HostError("the number of faces must be between 1 and " + std::to_string(maxFaces) +
                        ", not " + std::to_string(*settings.faces));
    if (!(settings.kept.creaseAngle >= 0.0f && settings.kept.creaseAngle <= 180.0f))
        throw HostError("the crease angle must be between 0 and 180 degrees, not " +
                        TextOf(settings.kept.creaseAngle));
}

/// The polygons of the source, with UVs as their only attributes.
PolygonMesh PolygonsOf(SourceSurface& source, bool keepsUvs, JobControl* job) {
    PolygonMesh mesh = source.Polygons(job);
    SurfaceAttributes uvs;
    if (keepsUvs) {
        uvs.uvs = std::move(mesh.attributes.uvs);
        uvs.cornerUvs = std::move(mesh.attributes.cornerUvs);
    }
    mesh.attributes = std::move(uvs);
    return mesh;
}

/// Runs the passes of one remeshing.
class Remesher {
public:
    Remesher(SourceSurface& source,
             EditableMesh& toMesh,
             const SurfaceParts& parts,
             const IsotropicRemeshing& itsSettings,
             uint64_t itsKeptFaces)
        : mesh(toMesh), relaxation(source, parts), settings(itsSettings), keptFaces(itsKeptFaces) {
        limits.splits = settings.mode != RemeshMode::Coarsen;
        limits.collapses = settings.mode != RemeshMode::Refine;
        limits.keepsOldVertices = settings.mode == RemeshMode::Refine;
    }

    void Run(float length, JobControl* job) {
        const bool approaches = settings.faces && settings.mode != RemeshMode::Both;
        const int passes = approaches       ? adjustingPasses + finalPasses
                           : settings.faces ? lengthPasses + adjustingPasses
                                            : lengthPasses;
        JobPhase phase(job, "Remeshing", static_cast<uint64_t>(passes) * stepsOfPass);
        if (approaches)
            ApproachFaces(length, phase);
        else
            RunAt(length, lengthPasses, phase);
        if (settings.faces && !approaches) AdjustFaces(length, phase);
        // Adjusting often ends early.
        phase.Reach(static_cast<uint64_t>(passes) * stepsOfPass);
        phase.Finish();
    }

private:
    void RunAt(float length, int passes, JobPhase& phase) {
        for (int pass = 0; pass < passes; ++pass)
            RunPass(mesh, EdgeLengths(length), limits, relaxation, phase);
    }

    /// Changes the length until the number of faces is within half a per cent.
    void AdjustFaces(float length, JobPhase& phase) {
        const double wanted = static_cast<double>(*settings.faces);
        for (int pass = 0; pass < adjustingPasses; ++pass) {
            const double count = mesh.FaceCount();
            if (std::fabs(count - wanted) <= std::max(wanted * 0.005, 1.0)) return;
            const auto kept = static_cast<double>(keptFaces);
            const double ratio = std::max(count - kept, 1.0) / std::max(wanted - kept, 4.0);
            length *= static_cast<float>(std::clamp(std::sqrt(ratio), 0.5, 2.0));
            // The last edges are split or collapsed one by one.
            (count < wanted ? limits.maxFaces : limits.minFaces) = *settings.faces;
            RunAt(length, 1, phase);
        }
    }

    /// Splits or collapses, beginning at a length that changes few edges, until the number of faces
    /// is reached.
    void ApproachFaces(float length, JobPhase& phase) {
        const bool refines = settings.mode == RemeshMode::Refine;
        const float step = refines ? lengthStep : 1.0f / lengthStep;
        (refines ? limits.maxFaces : limits.minFaces) = *settings.faces;
        const auto isReached = [&] {
            return refines ? mesh.FaceCount() >= *settings.faces
                           : mesh.FaceCount() <= *settings.faces;
        };
        for (int pass = -4; pass < adjustingPasses - 4 && !isReached(); ++pass)
            RunAt(length * std::pow(step, static_cast<float>(pass)), 1, phase);
        limits.splits = limits.collapses = false;
        RunAt(length, finalPasses, phase);
    }

    EditableMesh& mesh;
    SurfaceRelaxation relaxation;
    const IsotropicRemeshing& settings;
    uint64_t keptFaces;
    PassLimits limits;
};

void Report(const EditableMesh& mesh, const IsotropicRemeshing& settings, NewSurface& made) {
    const uint32_t count = mesh.FaceCount();
    made.report.notes.push_back(std::to_string(count) + " triangles");
    if (!settings.faces) return;
    const double wanted = static_cast<double>(*settings.faces);
    if (std::fabs(static_cast<double>(count) - wanted) <= std::max(wanted * 0.05, 1.0)) return;
    made.report.warnings.push_back("the mesh has " + std::to_string(count) + " triangles; " +
                                   std::to_string(*settings.faces) +
                                   " cannot be reached in this mode while the masked areas, "
                                   "borders, seams and creases are kept");
}

/// Edits compare products of two areas. At these limits, in mesh-local units, such products neither
/// overflow nor vanish in single precision.
constexpr float maxCoordinate = 1e9f;
constexpr float minLocalLength = 1e-9f;

void CheckRange(SourceSurface& source, float length) {
    const LevelMesh& level = source.Level();
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector p = level.Position(v);
        for (const float coordinate : {p.x, p.y, p.z}) {
            if (std::fabs(coordinate) <= maxCoordinate) continue;
            throw HostError("vertex " + std::to_string(v) + " has the coordinate " +
                            TextOf(coordinate) + ", but only coordinates up to " +
                            TextOf(maxCoordinate) + " can be remeshed");
        }
    }
    if (source.LocalLength(length) < minLocalLength)
        throw HostError("the edge length " + TextOf(length) + " is below " +
                        TextOf(minLocalLength) + " in the units of the mesh, and too short");
}

/// Checks that the largest number of triangles, during or after the remeshing, is possible.
void CheckSize(SourceSurface& source,
               const RemeshEstimate& estimate,
               const IsotropicRemeshing& settings,
               float length) {
    const uint64_t old = TriangleCountOf(source.Level());
    uint64_t made = 0;
    uint64_t peak = old;
    if (settings.mode != RemeshMode::Coarsen) {
        made = estimate.FacesFor(length);
        peak = std::max({old, made, FacesWhileSplitting(source, length)});
    }
    if (settings.mode == RemeshMode::Refine && settings.faces)
        made = peak = std::max<uint64_t>(old, *settings.faces);
    const std::string limit = "more than " + std::to_string(maxFaces) + " triangles";
    if (made > maxFaces)
        throw HostError("the edge length " + TextOf(length) + " would give " + limit);
    if (peak > maxFaces)
        throw HostError("the edge length " + TextOf(length) + " would give " + limit +
                        " while the long, thin triangles of the mesh are split");
    const std::string counted = "remeshing to about " + std::to_string(made) + " triangles";
    if (settings.mode == RemeshMode::Coarsen)
        CheckFreeMemory("remeshing " + std::to_string(old) + " triangles", BytesFor(peak));
    else if (peak > 2 * std::max(made, old))
        CheckFreeMemory(counted + ", with up to " + std::to_string(peak) +
                            " while the long, thin triangles of the mesh are split,",
                        BytesFor(peak));
    else
        CheckFreeMemory(counted, BytesFor(peak));
}

NewSurface MakeRemeshed(SourceSurface& source,
                        const IsotropicRemeshing& settings,
                        JobControl* job) {
    Check(settings);
    const RemeshEstimate estimate = EstimateRemesh(source);
    if (!(estimate.freeArea > 0.0))
        throw HostError(estimate.keptFaces > 0 ? "all faces are masked"
                                               : "the surface has no area");
    const float length =
        settings.edgeLength ? *settings.edgeLength : estimate.LengthFor(*settings.faces);
    CheckRange(source, length);
    CheckSize(source, estimate, settings, length);
    EditableMesh mesh(PolygonsOf(source, settings.keepsUvs, job), job);
    const SurfaceParts parts = MarkFeatures(mesh, source, settings.kept, job);
    // Builds the search tree in its own phase.
    source.Nearest({}, job);
    Remesher(source, mesh, parts, settings, estimate.keptFaces)
        .Run(source.LocalLength(length), job);
    NewSurface made;
    made.mesh = mesh.ToPolygons(&made.vertexSources, &made.faceSources);
    if (settings.kept.groups)
        for (uint32_t& face : made.faceSources) face = parts.firstFaces[face];
    else
        made.faceSources.clear();
    Report(mesh, settings, made);
    return made;
}

}  // namespace

SurfaceOperation Remesh(const IsotropicRemeshing& settings) {
    return {"Remesh", [settings](SourceSurface& source, JobControl* job) {
                return MakeRemeshed(source, settings, job);
            }};
}

}  // namespace trovik
