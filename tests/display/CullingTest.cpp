// SPDX-License-Identifier: Apache-2.0

/// \file Checks boxes, normal cones and frustum culling against every vertex and triangle.
#include "framework/display/FrustumCuller.h"
#include "framework/display/PatchBounds.h"
#include "framework/picking/PatchTree.h"
#include "tests/display/PackedLevel.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace trovik::test {
namespace {

using Point = std::array<double, 3>;

Point At(const DisplayVertex& v) { return {double{v.x}, double{v.y}, double{v.z}}; }
Point At(const Vector& v) { return {double{v.x}, double{v.y}, double{v.z}}; }
Point Less(const Point& a, const Point& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double Inner(const Point& a, const Point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

std::vector<DisplayVertex> PatchOf(const std::vector<DisplayVertex>& all,
                                   const PatchLayout& layout,
                                   uint32_t patch) {
    const auto first = all.begin() + static_cast<std::ptrdiff_t>(layout.FirstVertex(patch));
    return {first, first + layout.VertexCount(patch)};
}

/// A sphere with dents, so that patches are curved.
LevelGeometry& DentedSphere() {
    static LevelGeometry geometry(SphereQuads(1));
    if (geometry.LevelCount() == 1) {
        for (int i = 0; i < 5; ++i) geometry.Subdivide();
        LevelMesh& level = *geometry.Bound();
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            const Vector p = level.Position(v);
            level.SetPosition(v, p * (1.0f + 0.04f * std::sin(9.0f * p.x + 7.0f * p.y)));
        }
    }
    return geometry;
}

TEST(PatchBoxes, OfThePickTreeEqualThoseOfThePackedVertices) {
    ForEachLevel(4, [](LevelMesh& level, const std::string& name) {
        SCOPED_TRACE(name);
        const PatchLayout layout(level);
        if (!layout.IsGrid()) return;
        const PatchTree tree(&level);
        ASSERT_LE(layout.PatchLevel(), tree.LeafLevel());
        const std::vector<DisplayVertex> all = PackLevel(level, layout);
        for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch) {
            const AxisAlignedBoundingBox a = tree.BoxOf(layout.PatchLevel(), patch);
            const AxisAlignedBoundingBox b = BoxOf(PatchOf(all, layout, patch));
            ASSERT_EQ(a.minX, b.minX);
            ASSERT_EQ(a.minY, b.minY);
            ASSERT_EQ(a.minZ, b.minZ);
            ASSERT_EQ(a.maxX, b.maxX);
            ASSERT_EQ(a.maxY, b.maxY);
            ASSERT_EQ(a.maxZ, b.maxZ);
        }
    });
}

TEST(PatchBoxes, IgnoreNaN) {
    const DisplayVertex none = {NAN, NAN, NAN, 0, 0, 0, 0, 0};
    const DisplayVertex some = {1, 2, 3, 0, 0, 0, 0, 0};
    EXPECT_TRUE(BoxOf(std::vector{none, none}).IsEmpty());
    EXPECT_TRUE(BoxOf({}).IsEmpty());
    const AxisAlignedBoundingBox box = BoxOf(std::vector{none, some, none});
    EXPECT_EQ(box.minX, 1.0f);
    EXPECT_EQ(box.maxZ, 3.0f);
}

/// A perspective camera that looks from one point to another, or a parallel projection.
class Camera {
public:
    Camera(RandomNumbers& random, FrustumCuller::ClipDepth depth) {
        eye = random.In(-3.0f, 3.0f);
        const Vector to = random.In(-1.0f, 1.0f);
        const Vector back = (eye - to).Normalized();
        const Vector right = (random.In(-1.0f, 1.0f) & back).Normalized();
        const Vector up = back & right;
        const float scale = random.Between(0.5f, 6.0f);
        const float near = random.Between(0.01f, 1.0f);
        const float far = near + random.Between(0.5f, 5.0f);
        const Vector axes[] = {right, up, back};
        Matrix view;
        for (int a = 0; a < 3; ++a) {
            view.m[0][a] = axes[a].x;
            view.m[1][a] = axes[a].y;
            view.m[2][a] = axes[a].z;
            view.m[3][a] = -(eye | axes[a]);
        }
        Matrix projection;
        projection.m[0][0] = scale;
        projection.m[1][1] = 1.5f * scale;
        const bool zeroToOne = depth == FrustumCuller::ClipDepth::ZeroToOne;
        const float span = zeroToOne ? 1.0f : 2.0f;
        const float low = zeroToOne ? 0.0f : -1.0f;
        if (random.Chance(0.3f)) {
            projection.m[2][2] = -span / (far - near);
            projection.m[3][2] = low - span * near / (far - near);
        } else {
            // The last view has no far plane.
            const bool endless = random.Chance(0.3f);
            projection.m[2][3] = -1.0f;
            projection.m[3][3] = 0.0f;
            projection.m[2][2] =
                endless ? -1.0f : -(low * near / far + span + low) / (1 - near / far);
            projection.m[3][2] = near * (low + projection.m[2][2]);
        }
        clip = view * projection;
        lowest = zeroToOne ? 0.0 : -1.0;
    }

    bool Sees(const Point& p) const {
        double c[4];
        for (int k = 0; k < 4; ++k)
            c[k] = p[0] * double{clip.m[0][k]} + p[1] * double{clip.m[1][k]} +
                   p[2] * double{clip.m[2][k]} + double{clip.m[3][k]};
        return std::abs(c[0]) <= c[3] && std::abs(c[1]) <= c[3] && c[2] >= lowest * c[3] &&
               c[2] <= c[3];
    }

    Matrix clip;
    Vector eye;
    double lowest;
};

TEST(FrustumCuller, KeepsEveryPatchWithAVisiblePoint) {
    const LevelMesh& level = *DentedSphere().Bound();
    const PatchLayout layout(level);
    const std::vector<DisplayVertex> all = PackLevel(level, layout);
    std::vector<AxisAlignedBoundingBox> boxes;
    for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch)
        boxes.push_back(BoxOf(PatchOf(all, layout, patch)));
    RandomNumbers random(11);
    uint32_t culled = 0;
    uint32_t seen = 0;
    uint32_t keptUnseen = 0;
    for (int view = 0; view < 150; ++view) {
        const auto depth = view % 2 == 0 ? FrustumCuller::ClipDepth::MinusOneToOne
                                         : FrustumCuller::ClipDepth::ZeroToOne;
        const Camera camera(random, depth);
        const FrustumCuller culler(camera.clip, depth);
        for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch) {
            bool sees = false;
            const DisplayVertex* first = all.data() + layout.FirstVertex(patch);
            for (uint32_t i = 0; i < layout.VertexCount(patch) && !sees; ++i)
                sees = camera.Sees(At(first[i]));
            // Triangles larger than the view may have no vertex in it, so their centres are tested
            // too.
            const auto triangles = layout.Triangles(patch);
            for (std::size_t i = 0; i < triangles.size() && !sees; i += 3) {
                Point middle{};
                for (std::size_t k = i; k < i + 3; ++k)
                    for (std::size_t a = 0; a < 3; ++a)
                        middle[a] += At(first[triangles[k]])[a] / 3.0;
                sees = camera.Sees(middle);
            }
            const bool outside = culler.IsOutside(boxes[patch]);
            ASSERT_FALSE(sees && outside) << "view " << view << ", patch " << patch;
            culled += outside ? 1 : 0;
            seen += sees ? 1 : 0;
            keptUnseen += !outside && !sees ? 1 : 0;
        }
    }
    EXPECT_GT(seen, 300u) << "some points are visible";
    EXPECT_GT(culled, 300u);
    EXPECT_LT(keptUnseen, culled / 2) << "some patches are culled";
}

TEST(FrustumCuller, KeepsBoxesThatCannotBeDecided) {
    const FrustumCuller culler{Matrix()};
    EXPECT_FALSE(culler.IsOutside({-1, -1, -1, 1, 1, 1}));
    EXPECT_FALSE(culler.IsOutside({-9, -9, -9, 9, 9, 9})) << "around the view";
    EXPECT_FALSE(culler.IsOutside({1, 0, 0, 2, 0, 0})) << "on its border";
    EXPECT_TRUE(culler.IsOutside({1.001f, 0, 0, 2, 0, 0}));
    EXPECT_TRUE(culler.IsOutside({0, 0, -3, 0, 0, -1.001f}));
    EXPECT_TRUE(culler.IsOutside({})) << "empty";
    EXPECT_FALSE(culler.IsOutside({-INFINITY, 0, 0, INFINITY, 0, 0}));
    EXPECT_FALSE(culler.IsOutside({0, NAN, 0, 1, NAN, 1}));
    const FrustumCuller fromZero(Matrix(), FrustumCuller::ClipDepth::ZeroToOne);
    EXPECT_TRUE(fromZero.IsOutside({0, 0, -0.9f, 0, 0, -0.1f}));
    EXPECT_FALSE(culler.IsOutside({0, 0, -0.9f, 0, 0, -0.1f}));
}

/// Returns whether the front of a triangle is visible from a point, or along a direction.
bool ShowsFront(const DisplayVertex* v, const uint16_t* index, const Point& way, bool parallel) {
    const Point a = At(v[index[0]]);
    const Point e = Less(At(v[index[1]]), a);
    const Point f = Less(At(v[index[2]]), a);
    const Point normal = {
        e[1] * f[2] - e[2] * f[1], e[2] * f[0] - e[0] * f[2], e[0] * f[1] - e[1] * f[0]};
    return Inner(normal, parallel ? way : Less(a, way)) < 0.0;
}

TEST(NormalCone, CullsNoPatchWithAVisibleFront) {
    const LevelMesh& level = *DentedSphere().Bound();
    const PatchLayout layout(level);
    const std::vector<DisplayVertex> all = PackLevel(level, layout);
    RandomNumbers random(12);
    for (const uint32_t strideLog2 : {0u, 2u}) {
        uint32_t culled = 0;
        uint32_t backs = 0;
        const auto triangles = GridIndices::OfDepth(layout.Depth()).Triangles(strideLog2);
        for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch) {
            const DisplayVertex* first = all.data() + layout.FirstVertex(patch);
            const std::span<const DisplayVertex> vertices(first, layout.VertexCount(patch));
            const NormalCone cone = ConeOf(vertices, triangles);
            const AxisAlignedBoundingBox box = BoxOf(vertices);
            for (int view = 0; view < 200; ++view) {
                const bool parallel = view % 2 == 0;
                const Vector way = random.In(-3.0f, 3.0f);
                const bool away = parallel ? cone.FacesAwayFrom(way) : cone.FacesAway(box, way);
                bool front = false;
                for (std::size_t i = 0; i < triangles.size() && !front; i += 3)
                    front = ShowsFront(first, &triangles[i], At(way), parallel);
                ASSERT_FALSE(front && away) << "patch " << patch << ", view " << view;
                culled += away ? 1 : 0;
                backs += front ? 0 : 1;
            }
        }
        EXPECT_GT(backs, 500u);
        EXPECT_GT(culled, backs / 3) << "some patches are culled";
    }
}

TEST(NormalCone, FrontIsTheSideOfTheNormals) {
    LevelGeometry geometry(GridMesh(1, 1));
    for (int i = 0; i < 2; ++i) geometry.Subdivide();
    const LevelMesh& level = *geometry.Bound();
    ASSERT_GT(level.vertexNormals.array[0].z, 32000);
    const PatchLayout layout(level);
    const std::vector<DisplayVertex> all = PackLevel(level, layout);
    const NormalCone cone = ConeOf(all, layout.Triangles(0));
    const AxisAlignedBoundingBox box = BoxOf(all);
    EXPECT_NEAR(cone.axis.z, 1.0f, 1e-6f);
    EXPECT_LT(cone.sinAngle, 0.01f);
    EXPECT_FALSE(cone.FacesAway(box, {0.5f, 0.5f, 3.0f}));
    EXPECT_TRUE(cone.FacesAway(box, {0.5f, 0.5f, -3.0f}));
    EXPECT_FALSE(cone.FacesAwayFrom({0, 0, -5}));
    EXPECT_TRUE(cone.FacesAwayFrom({0, 0, 5}));
    EXPECT_FALSE(cone.FacesAwayFrom({0, 0, 0}));
    EXPECT_FALSE(cone.FacesAway(box, {NAN, 0, -3.0f}));
}

TEST(NormalCone, AccountsForTheExtentOfThePatch) {
    // Two triangles that face up, one above the other, and an eye between them.
    std::vector<DisplayVertex> vertices(6);
    for (std::size_t i = 0; i < 6; ++i) {
        vertices[i].x = i % 3 == 1 ? 1.0f : 0.0f;
        vertices[i].y = i % 3 == 2 ? 1.0f : 0.0f;
        vertices[i].z = i < 3 ? 0.0f : 1.0f;
    }
    const NormalCone cone = ConeOf(vertices, std::vector<uint16_t>{0, 1, 2, 3, 4, 5});
    const AxisAlignedBoundingBox box = BoxOf(vertices);
    EXPECT_FALSE(cone.FacesAway(box, {0.2f, 0.2f, 0.4f})) << "the lower one is seen from above";
    EXPECT_TRUE(cone.FacesAway(box, {0.2f, 0.2f, -9.0f}));
}

TEST(NormalCone, OfACurledPatchIsNeverCulled) {
    LevelGeometry geometry(Cube());
    const PatchLayout layout(*geometry.Bound());
    const std::vector<DisplayVertex> all = PackLevel(*geometry.Bound(), layout);
    const NormalCone cone = ConeOf(all, layout.Triangles(0));
    RandomNumbers random(4);
    for (int i = 0; i < 100; ++i) EXPECT_FALSE(cone.FacesAwayFrom(random.In(-1.0f, 1.0f)));
}

TEST(NormalCone, IgnoresDegenerateTrianglesAndKeepsNaN) {
    std::vector<DisplayVertex> vertices(5);
    vertices[1].x = 1.0f;
    vertices[2].y = 1.0f;
    const std::vector<uint16_t> degenerate = {0, 1, 2, 3, 3, 1};
    EXPECT_TRUE(ConeOf(vertices, degenerate).FacesAwayFrom({0, 0, 1}));
    EXPECT_FALSE(ConeOf({}, {}).FacesAwayFrom({0, 0, 1}));
    vertices[4].x = NAN;
    const std::vector<uint16_t> withNaN = {0, 1, 2, 0, 1, 4};
    EXPECT_FALSE(ConeOf(vertices, withNaN).FacesAwayFrom({0, 0, 1}));
}

}  // namespace
}  // namespace trovik::test
