// SPDX-License-Identifier: Apache-2.0

/// \file Compares refined positions with those of an independent implementation of the same rule.
#include "framework/errors/HostError.h"
#include "framework/memory/MemoryAccount.h"
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>
#include <opensubdiv/far/primvarRefiner.h>
#include <opensubdiv/far/topologyDescriptor.h>
#include <opensubdiv/far/topologyRefinerFactory.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace trovik::test {
namespace {

namespace Osd = OpenSubdiv;

struct Point {
    float x = 0.0f, y = 0.0f, z = 0.0f;
    void Clear(void* = nullptr) { x = y = z = 0.0f; }
    void AddWithWeight(const Point& p, float w) {
        x += p.x * w;
        y += p.y * w;
        z += p.z * w;
    }
};

using Refiner = std::unique_ptr<Osd::Far::TopologyRefiner>;

Refiner MakeRefiner(const PolygonMesh& mesh, int levels) {
    std::vector<int> sizes(mesh.faceSizes.begin(), mesh.faceSizes.end());
    std::vector<int> corners(mesh.faceVertices.begin(), mesh.faceVertices.end());
    Osd::Far::TopologyDescriptor descriptor;
    descriptor.numVertices = static_cast<int>(mesh.positions.size());
    descriptor.numFaces = static_cast<int>(sizes.size());
    descriptor.numVertsPerFace = sizes.data();
    descriptor.vertIndicesPerFace = corners.data();
    Osd::Sdc::Options options;
    options.SetVtxBoundaryInterpolation(Osd::Sdc::Options::VTX_BOUNDARY_EDGE_AND_CORNER);
    using Factory = Osd::Far::TopologyRefinerFactory<Osd::Far::TopologyDescriptor>;
    Refiner refiner(
        Factory::Create(descriptor, Factory::Options(Osd::Sdc::SCHEME_CATMARK, options)));
    Osd::Far::TopologyRefiner::UniformOptions uniform(levels);
    uniform.fullTopologyInLastLevel = true;
    refiner->RefineUniform(uniform);
    return refiner;
}

/// The largest distance, over all faces of our level, between our corners and those of the
/// corresponding reference face. `theirs` maps our faces to the reference faces. `turns` receives
/// the index of our corner 0 in the reference face: the first corner may differ, but not the
/// orientation.
float LargestDistance(const LevelMesh& ours,
                      const Osd::Far::TopologyLevel& level,
                      const std::vector<int>& theirs,
                      const std::vector<Point>& points,
                      std::vector<uint32_t>& turns) {
    float largest = 0.0f;
    const uint32_t n = ours.CornersPerFace();
    for (uint32_t face = 0; face < ours.faceCount; ++face) {
        const Osd::Far::ConstIndexArray corners = level.GetFaceVertices(theirs[face]);
        float best = 1e30f;
        for (uint32_t turn = 0; turn < n; ++turn) {
            float worst = 0.0f;
            for (uint32_t k = 0; k < n; ++k) {
                const Vector p = ours.Position(ours.faceVertexIndices[face * n + k]);
                const Point& q =
                    points[static_cast<std::size_t>(corners[static_cast<int>((k + turn) % n)])];
                worst = std::max(worst, (p - Vector(q.x, q.y, q.z)).Length());
            }
            if (worst < best) turns[face] = turn;
            best = std::min(best, worst);
        }
        largest = std::max(largest, best);
    }
    return largest;
}

void ExpectSameRefinement(const PolygonMesh& mesh, int levels) {
    const Refiner refiner = MakeRefiner(mesh, levels);
    const Osd::Far::PrimvarRefiner primvars(*refiner);
    LevelGeometry geometry(mesh);
    float size = 0.0f;
    std::vector<Point> points;
    for (const auto& p : mesh.positions) {
        points.push_back({p[0], p[1], p[2]});
        for (const float c : p) size = std::max(size, std::fabs(c));
    }
    // For a mesh with mixed faces, level 0 is already refined once.
    const bool stepped = geometry.Level(0)->faceCount != mesh.faceSizes.size();
    std::vector<int> theirs(mesh.faceSizes.size());
    for (std::size_t i = 0; i < theirs.size(); ++i) theirs[i] = static_cast<int>(i);
    std::vector<uint32_t> turns(theirs.size(), 0);
    for (int level = 0; level <= levels; ++level) {
        SCOPED_TRACE("level " + std::to_string(level));
        if (level != 0) {
            std::vector<Point> finer(
                static_cast<std::size_t>(refiner->GetLevel(level).GetNumVertices()));
            primvars.Interpolate(level, points, finer);
            points = std::move(finer);
            std::vector<int> children;
            for (std::size_t face = 0; face < theirs.size(); ++face) {
                const Osd::Far::ConstIndexArray all =
                    refiner->GetLevel(level - 1).GetFaceChildFaces(theirs[face]);
                for (int k = 0; k < all.size(); ++k)
                    children.push_back(all[(k + static_cast<int>(turns[face])) % all.size()]);
            }
            theirs = std::move(children);
            turns.assign(theirs.size(), 0);
        }
        const int own = level - (stepped ? 1 : 0);
        if (own < 0) continue;
        while (geometry.LevelCount() <= static_cast<uint32_t>(own)) geometry.Subdivide();
        const LevelMesh& ours = *geometry.Level(static_cast<uint32_t>(own));
        ASSERT_EQ(ours.faceCount, theirs.size());
        ASSERT_EQ(ours.VertexCount(), points.size());
        EXPECT_LE(LargestDistance(ours, refiner->GetLevel(level), theirs, points, turns),
                  size * 2e-6f);
    }
}

TEST(Refinement, AgreesWithTheReferenceOnEveryMeshOfTheZoo) {
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        ExpectSameRefinement(entry.mesh, 3);
    }
}

TEST(Refinement, AgreesWithTheReferenceOnRealMeshes) {
    for (const char* file :
         {"human.obj", "spot.obj", "spot_triangles.obj", "fish.obj", "goathead.obj"}) {
        SCOPED_TRACE(file);
        ExpectSameRefinement(ExampleMesh(file), 2);
    }
}

TEST(Refinement, RefusalByMemoryLimitChangesNothing) {
    LevelGeometry geometry(GridMesh(2, 2));
    for (int level = 0; level < 3; ++level) geometry.Subdivide();
    const PolygonMesh before = geometry.ToPolygons(false);
    MemoryAccount::SetLimit(MemoryAccount::Total() + 1000);
    EXPECT_THROW(geometry.Subdivide(), HostError);
    MemoryAccount::SetLimit(std::numeric_limits<int64_t>::max());
    EXPECT_EQ(geometry.LevelCount(), 4u);
    EXPECT_EQ(geometry.ToPolygons(false).positions, before.positions);
}

}  // namespace
}  // namespace trovik::test
