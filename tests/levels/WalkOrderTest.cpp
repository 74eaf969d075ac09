// SPDX-License-Identifier: Apache-2.0

/// \file Compares the visiting orders, on which repeatable replays depend, with walks that
/// implement the rules directly on the corners of the faces.
#include "framework/math/SameBits.h"
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <bit>
#include <deque>
#include <map>
#include <optional>
#include <random>
#include <set>

namespace trovik::test {
namespace {

using Visit = std::pair<uint32_t, uint32_t>;

/// The walks, implemented literally from their rules.
class RuleWalks {
public:
    explicit RuleWalks(const LevelMesh& walkedMesh)
        : mesh(walkedMesh), corners(walkedMesh.CornersPerFace()) {
        for (uint32_t face = 0; face < mesh.faceCount; ++face)
            for (uint32_t k = 0; k < corners; ++k)
                faceOfEdge[{At(face, k), At(face, k + 1)}] = face;
    }

    uint32_t At(uint32_t face, uint32_t corner) const {
        return mesh.faceVertexIndices[face * corners + corner % corners];
    }
    /// The face that has the directed edge from a to b.
    std::optional<uint32_t> FaceAlong(uint32_t a, uint32_t b) const {
        const auto found = faceOfEdge.find({a, b});
        if (found == faceOfEdge.end()) return std::nullopt;
        return found->second;
    }
    bool Holds(uint32_t face, uint32_t vertex) const {
        for (uint32_t k = 0; k < corners; ++k)
            if (At(face, k) == vertex) return true;
        return false;
    }
    uint32_t CornerOf(uint32_t face, uint32_t vertex) const {
        for (uint32_t k = 0; k < corners; ++k)
            if (At(face, k) == vertex) return k;
        ADD_FAILURE() << "face " << face << " does not contain vertex " << vertex;
        return 0;
    }
    uint32_t Next(uint32_t face, uint32_t v) const { return At(face, CornerOf(face, v) + 1); }
    uint32_t Previous(uint32_t face, uint32_t v) const {
        return At(face, CornerOf(face, v) + corners - 1);
    }

    std::vector<Visit> Adjacent(uint32_t vertex, uint32_t face) const {
        if (!Holds(face, vertex))
            for (face = 0; !Holds(face, vertex);) ++face;
        std::vector<Visit> reports;
        uint32_t at = face;
        do {
            reports.push_back({Next(at, vertex), at});
            const auto across = FaceAlong(vertex, Previous(at, vertex));
            if (!across) {
                reports.push_back({Previous(at, vertex), at});
                at = face;
                while (const auto other = FaceAlong(Next(at, vertex), vertex)) {
                    at = *other;
                    reports.push_back({Next(at, vertex), at});
                }
                return reports;
            }
            at = *across;
        } while (at != face);
        return reports;
    }

    template <typename Answer>
    std::vector<uint32_t> Faces(uint32_t face, Answer answer) const {
        std::vector<uint32_t> tested;
        std::deque<uint32_t> queue = {face};
        std::set<uint32_t> queued = {face};
        for (; !queue.empty(); queue.pop_front()) {
            const uint32_t at = queue.front();
            tested.push_back(at);
            if (!answer(at)) continue;
            for (uint32_t side = 0; side < corners; ++side) {
                const auto across = FaceAlong(At(at, side + 1), At(at, side));
                if (across && queued.insert(*across).second) queue.push_back(*across);
            }
        }
        return tested;
    }

    template <typename Answer>
    std::vector<Visit> Vertices(uint32_t face, Answer answer) const {
        std::vector<Visit> tested;
        std::deque<Visit> queue;
        std::set<uint32_t> queued;
        for (uint32_t k = 0; k < corners; ++k)
            if (queued.insert(At(face, k)).second) queue.push_back({At(face, k), face});
        for (; !queue.empty(); queue.pop_front()) {
            const Visit at = queue.front();
            tested.push_back(at);
            if (!answer(at.first)) continue;
            for (const Visit& next : Adjacent(at.first, at.second))
                if (queued.insert(next.first).second) queue.push_back(next);
        }
        return tested;
    }

private:
    const LevelMesh& mesh;
    uint32_t corners;
    std::map<Visit, uint32_t> faceOfEdge;
};

/// Returns true for a fixed selection of about three quarters of all numbers.
bool Wanted(uint32_t number, uint32_t salt) { return (number * 2654435761u + salt) >> 30 != 0; }

class FaceTester final : public FaceEnumerator {
public:
    explicit FaceTester(uint32_t newSalt) : salt(newSalt) {}
    void Operator(Mesh*, uint32_t face) override { EXPECT_EQ(face, tested.back()); }
    bool Tester(Mesh*, uint32_t face) override {
        tested.push_back(face);
        return Wanted(face, salt);
    }
    uint32_t salt;
    std::vector<uint32_t> tested;
};

class VertexTester final : public VertexEnumerator {
public:
    explicit VertexTester(uint32_t newSalt) : salt(newSalt) {}
    void Operator(Mesh*, uint32_t vertex, uint32_t face) override {
        EXPECT_EQ(tested.back(), Visit(vertex, face));
    }
    bool Tester(Mesh*, uint32_t vertex, uint32_t face) override {
        tested.push_back({vertex, face});
        return Wanted(vertex, salt);
    }
    uint32_t salt;
    std::vector<Visit> tested;
};

class AdjacentList final : public AdjacentVertexEnumerator {
public:
    void Operator(uint32_t vertex, uint32_t face) override { met.push_back({vertex, face}); }
    std::vector<Visit> met;
};

/// Calls check(mesh, rules) for levels 0 and 1 of every test mesh. Two faces may have more than one
/// common edge there, but no two faces have the same directed edge, so a directed edge identifies
/// its face.
template <typename Check>
void ForEveryLevel(Check check) {
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        geometry.Subdivide();
        for (uint32_t level = 0; level < 2; ++level)
            check(*geometry.Level(level), RuleWalks(*geometry.Level(level)));
    }
}

TEST(WalkOrder, FacesFollowTheRule) {
    ForEveryLevel([](LevelMesh& mesh, const RuleWalks& rules) {
        for (uint32_t start = 0; start < mesh.faceCount; start += 3) {
            FaceTester tester(start);
            mesh.EnumerateFaces(start, &tester, 0);
            EXPECT_EQ(tester.tested,
                      rules.Faces(start, [start](uint32_t face) { return Wanted(face, start); }));
        }
    });
}

TEST(WalkOrder, VerticesAndTheirFacesFollowTheRule) {
    ForEveryLevel([](LevelMesh& mesh, const RuleWalks& rules) {
        for (uint32_t start = 0; start < mesh.faceCount; start += 3) {
            const uint32_t stamp = mesh.visitStamp;
            VertexTester tester(start);
            mesh.EnumerateVertices(start, &tester);
            EXPECT_EQ(tester.tested,
                      rules.Vertices(start, [start](uint32_t v) { return Wanted(v, start); }));
            EXPECT_EQ(mesh.visitStamp, stamp + 1);
        }
    });
}

TEST(WalkOrder, AdjacentVerticesFollowTheRule) {
    ForEveryLevel([](LevelMesh& mesh, const RuleWalks& rules) {
        for (uint32_t vertex = 0; vertex < mesh.VertexCount(); ++vertex) {
            if (mesh.LowestFaceOf(vertex) == openBorder) continue;
            for (uint32_t face = 0; face < mesh.faceCount; face += 1 + mesh.faceCount / 16) {
                AdjacentList list;
                const uint32_t count = mesh.EnumerateAdjacentVertices(&list, vertex, face);
                EXPECT_EQ(list.met, rules.Adjacent(vertex, face)) << vertex << " from " << face;
                EXPECT_EQ(count, list.met.size());
            }
        }
    });
}

TEST(WalkOrder, VertexWalkAdvancesTheVisitStampWhateverTheVisitorReturns) {
    LevelGeometry geometry(GridMesh(2, 2));
    LevelMesh& mesh = *geometry.Bound();
    class Nobody final : public VertexEnumerator {
    public:
        void Operator(Mesh*, uint32_t, uint32_t) override {}
        bool Tester(Mesh* walked, uint32_t, uint32_t) override {
            EXPECT_EQ(walked->visitStamp, stamp) << "not before the walk has ended";
            return false;
        }
        uint32_t stamp = 0;
    } nobody;
    nobody.stamp = mesh.visitStamp;
    mesh.EnumerateVertices(0, &nobody);
    EXPECT_EQ(mesh.visitStamp, nobody.stamp + 1);
    mesh.EnumerateVertices(mesh.faceCount, &nobody);
    EXPECT_EQ(mesh.visitStamp, nobody.stamp + 2);
}

TEST(WalkOrder, WalkLeftByAnExceptionDoesNotBlockTheNext) {
    LevelGeometry geometry(GridMesh(2, 2));
    LevelMesh& mesh = *geometry.Bound();
    class Thrower final : public FaceEnumerator, public VertexEnumerator {
    public:
        void Operator(Mesh*, uint32_t) override {}
        void Operator(Mesh*, uint32_t, uint32_t) override {}
        bool Tester(Mesh*, uint32_t) override { throw 1; }
        bool Tester(Mesh*, uint32_t, uint32_t) override { throw 1; }
    } thrower;
    EXPECT_THROW(mesh.EnumerateFaces(0, &thrower, 0), int);
    EXPECT_THROW(mesh.EnumerateVertices(0, &thrower), int);
    FaceTester faces(0);
    mesh.EnumerateFaces(0, &faces, 0);
    EXPECT_FALSE(faces.tested.empty());
}

TEST(FaceOrder, QuadChildrenHaveTheCornerOrderOfTheirParent) {
    for (const ZooMesh& entry : QuadMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        geometry.Subdivide();
        if (geometry.Level(0)->meshType != 1) continue;
        const RuleWalks coarse(*geometry.Level(0));
        const RuleWalks fine(*geometry.Level(1));
        for (uint32_t f = 0; f < geometry.Level(0)->faceCount; ++f) {
            const uint32_t facePoint = fine.At(4 * f, 2);
            for (uint32_t k = 0; k < 4; ++k) {
                EXPECT_EQ(fine.At(4 * f + k, k), coarse.At(f, k));
                EXPECT_EQ(fine.At(4 * f + k, k + 2), facePoint);
                // The point on edge k is between the children k and k + 1.
                EXPECT_EQ(fine.At(4 * f + k, k + 1), fine.At(4 * f + (k + 1) % 4, k));
            }
        }
    }
}

TEST(FaceOrder, ChildrenOfATriangleStartAtItsCorners) {
    for (const ZooMesh& entry : TriangleMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        geometry.Subdivide();
        const RuleWalks coarse(*geometry.Level(0));
        const RuleWalks fine(*geometry.Level(1));
        for (uint32_t f = 0; f < geometry.Level(0)->faceCount; ++f) {
            const uint32_t facePoint = fine.At(3 * f, 2);
            for (uint32_t k = 0; k < 3; ++k) {
                EXPECT_EQ(fine.At(3 * f + k, 0), coarse.At(f, k));
                EXPECT_EQ(fine.At(3 * f + k, 2), facePoint);
                // The corner is followed by the point on edge k, which is the last corner of the
                // next child.
                EXPECT_EQ(fine.At(3 * f + k, 1), fine.At(3 * f + (k + 1) % 3, 3));
            }
        }
    }
}

Vector RandomVector(std::mt19937& random) {
    std::uniform_real_distribution<float> number(-10.0f, 10.0f);
    const float x = number(random);
    const float y = number(random);
    return {x, y, number(random)};
}

Vector Cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

TEST(FaceNormals, AreExactCrossProductsOfDiagonalsOrTriangleSides) {
    std::mt19937 random(3);
    LevelGeometry quad(SingleQuad());
    LevelGeometry triangles(TriangleStrip(1));
    for (int i = 0; i < 200; ++i) {
        for (LevelGeometry* geometry : {&quad, &triangles}) {
            LevelMesh& mesh = *geometry->Bound();
            for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
                mesh.SetPosition(v, RandomVector(random));
            const uint32_t* corner = mesh.faceVertexIndices.array;
            const auto p = [&](uint32_t k) { return mesh.Position(corner[k]); };
            Vector normal;
            mesh.FaceNormal(&normal, 0);
            EXPECT_TRUE(SameBits(normal,
                                 mesh.meshType == 1 ? Cross(p(2) - p(0), p(3) - p(1))
                                                    : Cross(p(1) - p(0), p(2) - p(0))));
            const SurfacePoint point(&mesh, 12345, 0);
            EXPECT_EQ(point.face, 0u);
            EXPECT_FALSE(point.mirror);
            EXPECT_TRUE(SameBits(point.position, p(0)));
            EXPECT_TRUE(SameBits(point.normal, normal * (1.0f / normal.Length())));
        }
    }
}

TEST(PlacementOrder, BothDirectionsSumRowByRowWithTheInverseMatrix) {
    std::mt19937 random(5);
    for (int i = 0; i < 200; ++i) {
        Matrix matrix;
        for (int row = 0; row < 4; ++row) {
            const Vector numbers = RandomVector(random);
            matrix.m[row][0] = numbers.x;
            matrix.m[row][1] = numbers.y;
            matrix.m[row][2] = numbers.z;
        }
        MatrixTransform place;
        place.SetMatrix(matrix);
        Matrix inverse = matrix;
        inverse.Invert(nullptr);
        const Vector v = RandomVector(random);
        for (const float w : {0.0f, 1.0f}) {
            const auto through = [&v, w](const Matrix& m) {
                float sum[3];
                for (int k = 0; k < 3; ++k)
                    sum[k] =
                        ((v.x * m.m[0][k] + v.y * m.m[1][k]) + v.z * m.m[2][k]) + w * m.m[3][k];
                return Vector(sum[0], sum[1], sum[2]);
            };
            Vector world, local;
            place.LocalToWorld(&world, &v, w);
            place.WorldToLocal(&local, &v, w);
            EXPECT_TRUE(SameBits(world, through(matrix)));
            EXPECT_TRUE(SameBits(local, through(inverse)));
        }
    }
}

}  // namespace
}  // namespace trovik::test
