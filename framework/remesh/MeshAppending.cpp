// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/MeshAppending.h"

#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/math/IsFinite.h"
#include "framework/math/MatrixOrientation.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/remesh/FaceOrientation.h"
#include "framework/remesh/FaceSplitting.h"
#include "framework/remesh/SurfaceCopy.h"

#include <algorithm>
#include <utility>

namespace trovik {

namespace {

/// Moves a mesh into the mesh-local space of a geometry.
void Place(NewSurface& part, const MeshAppending& settings, const LevelGeometry& geometry) {
    PolygonMesh& mesh = part.mesh;
    const SpaceConversion conversion(Overlaid(mesh.attributes.space, settings.space),
                                     geometry.Attributes().space);
    Matrix matrix = settings.transform.ToWorld();
    if (settings.isWorld) matrix = matrix * geometry.Transform().ToLocal();
    for (auto& position : mesh.positions) {
        const auto point = conversion.Point(position);
        const Vector p = matrix.AffineTransform(Vector(point[0], point[1], point[2]), 1.0f);
        if (!IsFinite(p))
            throw HostError(settings.path +
                            ": a vertex has no finite position in the space of the mesh");
        position = {p.x, p.y, p.z};
    }
    if (ReversesOrientation(matrix))
        FlipFaces(part, std::vector<bool>(mesh.faceSizes.size(), true));
}

/// Gives all faces of a part the number of corners that level 0 has.
void MatchFaces(NewSurface& part, uint32_t corners, JobControl* job) {
    PolygonMesh& mesh = part.mesh;
    const auto fits = [corners](uint32_t size) { return size == corners; };
    if (std::ranges::all_of(mesh.faceSizes, fits)) return;
    if (corners == 4)
        SplitIntoFlatQuads(part, job);
    else
        SplitIntoTriangles(mesh, job);
    part.report.warnings.push_back(
        std::string("the mesh consists of ") + (corners == 4 ? "quads" : "triangles") +
        ", so the faces of the file were split into " + std::to_string(mesh.faceSizes.size()) +
        (corners == 4 ? " quads" : " triangles"));
}

NewSurface MakeAppended(SourceSurface& source, const MeshAppending& settings, JobControl* job) {
    NewSurface part;
    part.mesh = ReadMeshFile(settings.path, job);
    part.mesh.normals.clear();
    part.report.notes = std::move(part.mesh.notes);
    Place(part, settings, source.Geometry());
    const ManifoldReport manifold = MakeOrientedManifold(part.mesh, job);
    if (!manifold.Untouched())
        part.report.warnings.push_back(
            "the mesh of the file was split at " + std::to_string(manifold.splitVertices) +
            (manifold.splitVertices == 1 ? " vertex" : " vertices") +
            " where it was not an oriented manifold, which adds open borders");
    MatchFaces(part, source.Level().CornersPerFace(), job);
    NewSurface made = CopyOf(source, job);
    AddComponent(made, part.mesh);
    made.report = std::move(part.report);
    return made;
}

}  // namespace

SurfaceOperation AppendMesh(const MeshAppending& settings) {
    return {"Append mesh", [settings](SourceSurface& source, JobControl* job) {
                return MakeAppended(source, settings, job);
            }};
}

}  // namespace trovik
