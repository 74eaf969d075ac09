// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/layers/LayerStack.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/mirror/Ball.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trovik::test {
namespace {

/// A ball at level 1 whose halves were sculpted differently.
class AsymmetricBall : public testing::TestWithParam<int> {
protected:
    AsymmetricBall() : ball(8) {
        ball->Subdivide();
        for (const int axis : {0, 1, 2}) FindTwins(axis);
        ball.Tool("Sculpt");
        ball.Stroke({{0.5f, 0.6f, 0.6f}, {0.2f, 0.8f, 0.5f}}, 0.5f, 0.1f);
        ball.Stroke({{-0.5f, -0.6f, -0.6f}, {0.0f, 0.02f, 0.9f}}, 0.4f, 0.1f);
    }
    /// A subdivided ball is symmetric up to rounding, so the mirror vertex of a vertex is the one
    /// nearest to its reflection.
    void FindTwins(int axis) {
        const std::vector<Vector> positions = ball.Positions();
        for (const Vector& p : positions) {
            Vector q = p;
            (axis == 0 ? q.x : axis == 1 ? q.y : q.z) *= -1.0f;
            uint32_t nearest = 0;
            for (uint32_t v = 0; v < positions.size(); ++v)
                if ((positions[v] - q).Length() < (positions[nearest] - q).Length()) nearest = v;
            twins[axis].push_back(nearest);
        }
        atFirst = positions;
    }
    static float Along(const Vector& v, int axis) {
        return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
    }
    Vector Image(uint32_t vertex, int axis) {
        Vector p = ball.Mesh().Position(twins[axis][vertex]);
        (axis == 0 ? p.x : axis == 1 ? p.y : p.z) *= -1.0f;
        return p;
    }

    BallDocument ball;
    std::vector<uint32_t> twins[3];
    std::vector<Vector> atFirst;
};

TEST_P(AsymmetricBall, BecomesTheExactMirrorImageOfOneHalf) {
    const int axis = GetParam();
    for (const SymmetrySide side : {SymmetrySide::Positive, SymmetrySide::Negative}) {
        const std::vector<Vector> before = ball.Positions();
        EXPECT_GT(ball->MakeSymmetric(axis, side), 20u);
        const float sign = side == SymmetrySide::Positive ? 1.0f : -1.0f;
        for (uint32_t v = 0; v < before.size(); ++v) {
            const Vector now = ball.Mesh().Position(v);
            EXPECT_EQ(now, Image(v, axis)) << v;
            const bool inPlane = twins[axis][v] == v;
            EXPECT_EQ(inPlane, Along(now, axis) == 0.0f) << v;
            const bool isModel = sign * Along(atFirst[v], axis) > 1e-3f;
            EXPECT_TRUE(!isModel || before[v] == now) << v;
        }
        EXPECT_EQ(0u, ball->MakeSymmetric(axis, side)) << "some vertices are still asymmetric";
        ASSERT_TRUE(ball->Undo());
        EXPECT_TRUE(ball.Positions() == before);
    }
}

INSTANTIATE_TEST_SUITE_P(Axes, AsymmetricBall, testing::Values(0, 1, 2));

using MakeSymmetricOfABall = AsymmetricBall;

TEST_P(MakeSymmetricOfABall, ScalesTheMoveByTheMask) {
    const std::vector<Vector> before = ball.Positions();
    ball->MakeSymmetric(0, SymmetrySide::Positive);
    const std::vector<Vector> goal = ball.Positions();
    ball->Undo();
    ball.Freeze([](uint32_t v) {
        return static_cast<uint8_t>(v % 3 == 0 ? 127 : v % 3 == 1 ? 64 : 0);
    });
    ball->MakeSymmetric(0, SymmetrySide::Positive);
    for (uint32_t v = 0; v < before.size(); ++v) {
        const Vector now = ball.Mesh().Position(v);
        if (v % 3 == 0) {
            EXPECT_EQ(before[v], now) << v;
        } else if (v % 3 == 1) {
            const Vector half = before[v] + (goal[v] - before[v]) * (63.0f / 127.0f);
            EXPECT_LT((now - half).Length(), 1e-6f) << v;
        } else {
            EXPECT_EQ(goal[v], now) << v;
        }
    }
}

TEST_P(MakeSymmetricOfABall, IsWrittenToTheActiveLayer) {
    const std::vector<Vector> before = ball.Positions();
    ball->AddLayer("symmetry");
    ball->MakeSymmetric(0, SymmetrySide::Negative);
    for (uint32_t v = 0; v < before.size(); ++v) ASSERT_EQ(Image(v, 0), ball.Mesh().Position(v));
    ball->SetLayerStrength(0.0f);
    for (uint32_t v = 0; v < before.size(); ++v)
        ASSERT_LT((ball.Mesh().Position(v) - before[v]).Length(), 1e-6f) << v;
}

INSTANTIATE_TEST_SUITE_P(AcrossX, MakeSymmetricOfABall, testing::Values(0));

TEST(MakeSymmetric, ReportsAMeshWithoutAMirror) {
    const TemporaryFolder folder;
    PolygonMesh mesh = GridMesh(3, 2);
    // One face fewer, so that one corner differs from all others.
    mesh.faceSizes.pop_back();
    mesh.faceVertices.resize(mesh.faceVertices.size() - 4);
    mesh.positions.pop_back();
    const std::string path = folder.Path("mesh.obj");
    WriteMeshFile(path, mesh);
    Document document(path);
    try {
        document.MakeSymmetric(2, SymmetrySide::Positive);
        FAIL();
    } catch (const HostError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("no mirror across z"));
    }
}

}  // namespace
}  // namespace trovik::test
