// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/MeshRepair.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/remesh/FaceOrientation.h"
#include "framework/remesh/FaceTable.h"
#include "framework/remesh/MeshCleaning.h"
#include "framework/remesh/SurfaceCopy.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

/// Smaller pieces than this fraction of the mesh are reported as defects.
constexpr double smallShare = 0.01;

std::size_t CountOf(const std::vector<bool>& marks) {
    return static_cast<std::size_t>(std::count(marks.begin(), marks.end(), true));
}

std::string Count(std::size_t count, const char* one, const char* several) {
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

NewSurface MakeRepaired(SourceSurface& source, const MeshRepair& settings, JobControl* job) {
    NewSurface made = CopyOf(source, job);
    const auto note = [&](std::size_t count, const char* one, const char* several) {
        if (count > 0) made.report.notes.push_back(Count(count, one, several));
    };
    note(WeldVertices(made, source.LocalLength(settings.weld), job),
         "vertex was merged",
         "vertices were merged");
    if (settings.cleans) {
        note(RemoveUnusedVertices(made),
             "vertex without faces was removed",
             "vertices without faces were removed");
        note(RemoveFaces(made, DegenerateFaces(made.mesh)),
             "degenerate face was removed",
             "degenerate faces were removed");
        note(RemoveFaces(made, DuplicateFaces(made.mesh)),
             "duplicate face was removed",
             "duplicate faces were removed");
    }
    const auto least = std::max<std::size_t>(
        settings.minPieceFaces,
        static_cast<std::size_t>(std::ceil(static_cast<double>(settings.minPieceShare) *
                                           static_cast<double>(made.mesh.faceSizes.size()))));
    if (least > 1) {
        note(RemoveFaces(made, FacesOfSmallPieces(made.mesh, least)),
             "face of small pieces was removed",
             "faces of small pieces were removed");
    }
    if (made.mesh.faceSizes.empty()) throw HostError("no faces would remain");
    if (settings.orients)
        note(
            FlipFaces(made, FacesToFlip(made.mesh, job)), "face was flipped", "faces were flipped");
    if (settings.holes != HoleFill::None) {
        MakeOrientedManifold(made.mesh, job);
        note(FillHoles(made, settings.holes, settings.maxHoleEdges, job),
             "hole was filled",
             "holes were filled");
    }
    made.isUnchanged = made.report.notes.empty();
    if (made.isUnchanged) made.report.warnings.push_back("there is nothing to repair");
    return made;
}

}  // namespace

SurfaceOperation RepairMesh(const MeshRepair& settings) {
    return {"Repair", [settings](SourceSurface& source, JobControl* job) {
                return MakeRepaired(source, settings, job);
            }};
}

MeshDefects FindDefects(const PolygonMesh& mesh, JobControl* job) {
    MeshDefects defects;
    const std::vector<uint32_t> welded = WeldedNumbers(mesh, 0.0f, job);
    for (uint32_t v = 0; v < welded.size(); ++v)
        if (welded[v] != v) ++defects.coincidentVertices;
    NewSurface surface;
    surface.mesh.positions = mesh.positions;
    surface.mesh.faceSizes = mesh.faceSizes;
    surface.mesh.faceVertices = mesh.faceVertices;
    WeldVertices(surface, 0.0f, job);
    defects.degenerateFaces = CountOf(DegenerateFaces(surface.mesh));
    defects.duplicateFaces = CountOf(DuplicateFaces(surface.mesh));
    const auto [pieces, count] = ComponentsOf(surface.mesh);
    defects.pieces = count;
    std::vector<std::size_t> sizes(count);
    for (const uint32_t piece : pieces) ++sizes[piece];
    for (const std::size_t size : sizes)
        if (static_cast<double>(size) < smallShare * static_cast<double>(pieces.size()))
            ++defects.smallPieces;
    const std::vector<bool> isFlipped = FacesToFlip(surface.mesh, job);
    defects.misorientedFaces = CountOf(isFlipped);
    FlipFaces(surface, isFlipped);
    MakeOrientedManifold(surface.mesh, job);
    for (const std::vector<uint32_t>& hole : HolesOf(surface.mesh)) {
        ++defects.holes;
        defects.largestHole = std::max(defects.largestHole, hole.size());
    }
    return defects;
}

std::vector<DefectAdvice> AdviceFor(const MeshDefects& defects) {
    std::vector<DefectAdvice> advice;
    const auto add =
        [&](std::size_t count, const char* one, const char* several, const char* step) {
            if (count > 0) advice.push_back({Count(count, one, several), step});
        };
    add(defects.coincidentVertices,
        "vertex at the position of another",
        "vertices at the positions of others",
        R"({"repair": {}})");
    add(defects.degenerateFaces, "degenerate face", "degenerate faces", R"({"repair": {}})");
    add(defects.duplicateFaces, "duplicate face", "duplicate faces", R"({"repair": {}})");
    add(defects.misorientedFaces, "misoriented face", "misoriented faces", R"({"repair": {}})");
    add(defects.smallPieces,
        "piece with less than 1 % of the faces",
        "pieces with less than 1 % of the faces",
        R"({"repair": {"minPieceShare": 0.01}})");
    if (defects.holes > 0) {
        advice.push_back({Count(defects.holes, "hole", "holes") + ", the largest with " +
                              Count(defects.largestHole, "edge", "edges"),
                          R"({"repair": {"fillHoles": "flat"}})"});
    }
    return advice;
}

}  // namespace trovik
