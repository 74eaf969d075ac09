// SPDX-License-Identifier: Apache-2.0
#include "framework/detail/StrokeTessellator.h"

#include "framework/detail/FaceDistance.h"
#include "framework/detail/RegionPasses.h"
#include "framework/mesh/LevelHierarchy.h"
#include "framework/mesh/VertexNeighbours.h"

#include <algorithm>

namespace trovik {

namespace {

/// Rings of faces around the edges whose length must change. Flips and relaxation need them.
constexpr int rings = 3;

float SquaredSide(const LevelMesh& level, uint32_t face, uint32_t side) {
    const uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * 3;
    const Vector along = level.Position(v[(side + 1) % 3]) - level.Position(v[side]);
    return along | along;
}

}  // namespace

StrokeTessellator::StrokeTessellator(LevelMesh& ofLevel, LevelChange& ofChange)
    : level(ofLevel), change(ofChange) {}

bool StrokeTessellator::Reaches(const Reach& reach, uint32_t face) const {
    const uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * 3;
    return IsWithin(reach.centre,
                    reach.radius,
                    level.Position(v[0]),
                    level.Position(v[1]),
                    level.Position(v[2]));
}

std::vector<uint32_t> StrokeTessellator::RegionAround(const Reach& reach,
                                                      const std::vector<uint32_t>& faces,
                                                      const DabDetail& detail,
                                                      const Passes& passes) {
    const EdgeLengths lengths(detail.length);
    const float longest = passes.splits ? lengths.longest * lengths.longest : 1e38f;
    const float shortest = passes.collapses ? lengths.shortest * lengths.shortest : 0.0f;
    const float squaredRadius = reach.radius * reach.radius;
    std::vector<uint32_t> region;
    const auto isEdited = [&](uint32_t face) {
        const uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * 3;
        for (uint32_t side = 0; side < 3; ++side) {
            const float squared = SquaredSide(level, face, side);
            if (squared > longest) return true;
            if (!(squared < shortest)) continue;
            if (SquaredDistance(reach.centre,
                                level.Position(v[side]),
                                level.Position(v[(side + 1) % 3])) <= squaredRadius)
                return true;
        }
        return false;
    };
    for (const uint32_t face : faces)
        if (!level.IsFaceHidden(face) && isEdited(face)) region.push_back(face);
    if (region.empty()) return region;

    numbers.Clear(level.faceCount);
    for (const uint32_t face : region) numbers.Set(face, 0);
    const auto add = [&](uint32_t face) {
        if (numbers.Has(face) || level.IsFaceHidden(face)) return;
        numbers.Set(face, 0);
        region.push_back(face);
    };
    std::vector<uint32_t> around;
    vertexNumbers.Clear(level.VertexCount());
    std::size_t ring = 0;
    for (int i = 0; i < rings; ++i) {
        const std::size_t end = region.size();
        for (; ring < end; ++ring) {
            const uint32_t* v = level.faceVertexIndices.array + std::size_t{region[ring]} * 3;
            for (uint32_t k = 0; k < 3; ++k) {
                if (vertexNumbers.Has(v[k])) continue;
                vertexNumbers.Set(v[k], 0);
                around.clear();
                level.FacesAround(v[k], region[ring], around);
                for (const uint32_t face : around) add(face);
            }
        }
    }
    // Splitting a long edge may require that longer ones outside of the reach are split first.
    for (std::size_t i = 0; i < region.size() && passes.splits; ++i) {
        uint32_t side = 0;
        for (uint32_t k = 1; k < 3; ++k)
            if (SquaredSide(level, region[i], k) > SquaredSide(level, region[i], side)) side = k;
        if (!(SquaredSide(level, region[i], side) > longest)) continue;
        const uint32_t neighbour = level.QuadEdgeNeighbour(region[i], side);
        if (neighbour != openBorder) add(neighbour >> 2);
    }
    std::sort(region.begin(), region.end());
    return region;
}

int StrokeTessellator::Adapt(const Reach& reach,
                             const std::vector<uint32_t>& faces,
                             const DabDetail& detail,
                             const Passes& passes,
                             const std::function<void(const Edit&)>& report) {
    std::vector<uint32_t> chosen = RegionAround(reach, faces, detail, passes);
    if (chosen.empty()) return 0;
    TriangleEdit& edit = change.Topology();
    DetailRegion region(level, edit.Attributes(), std::move(chosen), numbers, detail.creaseAngle);
    RegionPasses edits(region, reach, detail.length);
    const int count = edits.Run(passes);
    if (count == 0) return 0;
    const std::vector<uint32_t> changed = region.WriteTo(edit, change, reach.face, reach.centre);
    UpdateNormals(changed, edit);
    std::vector<uint32_t> reported = edit.TakeChangedFaces();
    reported.insert(reported.end(), changed.begin(), changed.end());
    MakeSet(reported);
    level.Hierarchy().ReportTopology(reported);
    if (!report) return count;
    const auto numberOf = [&](uint32_t vertex) { return region.NumberOf(vertex); };
    for (const Edit& one : edits.Edits()) {
        Edit made = one;
        const std::size_t vertices = one.kind == Edit::Split ? 3 : one.kind == Edit::Flip ? 2 : 1;
        bool exists = one.kind != Edit::Collapse || one.vertices[1] != EditableMesh::none;
        for (std::size_t i = 0; i < vertices; ++i) {
            made.vertices[i] = numberOf(one.vertices[i]);
            exists = exists && made.vertices[i] != EditableMesh::none;
        }
        if (exists) report(made);
    }
    return count;
}

void StrokeTessellator::UpdateNormals(const std::vector<uint32_t>& faces, TriangleEdit& edit) {
    const std::vector<uint32_t> vertices = CornersOf(level, faces);
    for (const uint32_t vertex : vertices) edit.RecordVertex(vertex);
    level.StoreNormalsOf(IndexSet(vertices), FacesAt(level, vertices));
}

}  // namespace trovik
