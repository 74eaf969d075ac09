// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/FreezeCarrying.h"

#include "framework/jobs/JobPhase.h"

namespace trovik {

namespace {

/// Sets freeze amounts of a level and records the old ones.
class FreezeSetter {
public:
    FreezeSetter(LevelMesh& changedLevel, CarriedLevel& changes)
        : level(changedLevel), carried(changes) {
        carried.level = static_cast<uint32_t>(level.Index());
    }
    void Set(uint32_t vertex, uint32_t amount) {
        const uint8_t before = level.Freeze(vertex);
        if (before == amount) return;
        carried.freezeVertices.push_back(vertex);
        carried.freezeBefore.push_back(before);
        level.SetFreeze(vertex, static_cast<uint8_t>(amount));
    }
    void Finish() {
        carried.freezeVertices.shrink_to_fit();
        carried.freezeBefore.shrink_to_fit();
    }

private:
    LevelMesh& level;
    CarriedLevel& carried;
};

/// The points that the refinement of one coarse face creates, and their amounts.
class FaceFreeze {
public:
    FaceFreeze(const LevelMesh& coarseLevel, const LevelMesh& fine, uint32_t face)
        : coarse(coarseLevel),
          corners(coarse.CornersPerFace()),
          vertices(coarse.faceVertexIndices.array + std::size_t{face} * corners),
          children(fine.faceVertexIndices.array + std::size_t{face} * corners * 4) {}

    uint32_t Corners() const { return corners; }
    uint32_t CornerVertex(uint32_t k) const { return vertices[k]; }
    uint32_t EdgePoint(uint32_t side) const {
        return children[side * 4 + (corners == 4 ? (side + 1) & 3u : 1u)];
    }
    uint32_t EdgeAmount(uint32_t side) const {
        const uint32_t a = coarse.Freeze(vertices[side]);
        const uint32_t b = coarse.Freeze(vertices[(side + 1) % corners]);
        return (a + b + 1) / 2;
    }
    uint32_t FacePoint() const { return children[2]; }
    uint32_t FaceAmount() const {
        uint32_t sum = 0;
        for (uint32_t k = 0; k < corners; ++k) sum += coarse.Freeze(vertices[k]);
        return (sum + corners / 2) / corners;
    }

private:
    const LevelMesh& coarse;
    uint32_t corners;
    const uint32_t* vertices;
    const uint32_t* children;
};

}  // namespace

void CarryAllFreeze(const LevelMesh& coarse, LevelMesh& fine, JobControl* job) {
    if (coarse.FrozenVertexCount() == 0) return;
    JobPhase phase(job, "Refining the mask", coarse.faceCount);
    for (uint32_t v = 0; v < coarse.VertexCount(); ++v) fine.SetFreeze(v, coarse.Freeze(v));
    for (uint32_t face = 0; face < coarse.faceCount; ++face) {
        phase.Add();
        const FaceFreeze points(coarse, fine, face);
        for (uint32_t side = 0; side < points.Corners(); ++side)
            fine.SetFreeze(points.EdgePoint(side), static_cast<uint8_t>(points.EdgeAmount(side)));
        fine.SetFreeze(points.FacePoint(), static_cast<uint8_t>(points.FaceAmount()));
    }
    phase.Finish();
}

void CarryFreezeUp(LevelMesh& coarse,
                   LevelMesh& fine,
                   const OlderValues<uint8_t>& seen,
                   CarriedLevel& carried,
                   JobControl* job) {
    FreezeSetter setter(fine, carried);
    JobPhase phase(job, "Propagating the mask up", seen.Vertices().size());
    std::vector<uint32_t> around;
    for (std::size_t i = 0; i < seen.Vertices().size(); ++i) {
        phase.Add();
        const uint32_t v = seen.Vertices()[i];
        if (coarse.Freeze(v) == seen.Values()[i]) continue;
        setter.Set(v, coarse.Freeze(v));
        const uint32_t lowest = coarse.LowestFaceOf(v);
        if (lowest == openBorder) continue;
        around.clear();
        coarse.FacesAround(v, lowest, around);
        // A point between two changed vertices is set twice, to the same amount.
        for (const uint32_t face : around) {
            const FaceFreeze points(coarse, fine, face);
            for (uint32_t side = 0; side < points.Corners(); ++side) {
                const uint32_t next = (side + 1) % points.Corners();
                if (points.CornerVertex(side) == v || points.CornerVertex(next) == v)
                    setter.Set(points.EdgePoint(side), points.EdgeAmount(side));
            }
            setter.Set(points.FacePoint(), points.FaceAmount());
        }
    }
    phase.Finish();
    setter.Finish();
}

void CarryFreezeDown(LevelMesh& coarse,
                     LevelMesh& fine,
                     const OlderValues<uint8_t>& seen,
                     CarriedLevel& carried,
                     JobControl* job) {
    FreezeSetter setter(coarse, carried);
    JobPhase phase(job, "Propagating the mask down", seen.Vertices().size());
    for (std::size_t i = 0; i < seen.Vertices().size(); ++i) {
        phase.Add();
        const uint32_t v = seen.Vertices()[i];
        // The fine level's vertices start with those of the coarse level.
        if (v >= coarse.VertexCount()) break;
        if (fine.Freeze(v) != seen.Values()[i]) setter.Set(v, fine.Freeze(v));
    }
    phase.Finish();
    setter.Finish();
}

}  // namespace trovik
