// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/remesh/ReducedFiles.h"
#include "tests/jobs/TestJob.h"
#include "tests/remesh/ReplacedSurface.h"

#include <set>

namespace trovik::test {
namespace {

/// A sphere of 1536 quads in two groups, whose colours are functions of the position.
PolygonMesh GroupedSphere() {
    PolygonMesh mesh = SphereQuads(4);
    SurfaceAttributes& attributes = mesh.attributes;
    for (const auto& p : mesh.positions)
        attributes.colors.push_back({p[0] * 0.5f + 0.5f, 0.0f, 0.0f, 1.0f});
    attributes.groupNames = {"left", "right"};
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face)
        attributes.faceGroups.push_back(mesh.positions[mesh.faceVertices[face * 4]][0] < 0.0f ? 0
                                                                                              : 1);
    return mesh;
}

class Reductions : public testing::Test {
protected:
    ReducedFiles Write(const MeshReduction& reduction,
                       bool includesHidden = true,
                       const LevelSource::Options& options = {}) {
        const std::string before = SceneOf(document);
        const auto copy = CopyForReduction(document.Geometry(), includesHidden);
        ReducedFiles files = WriteReduced(path, *copy, reduction, options);
        EXPECT_EQ(SceneOf(document), before);
        return files;
    }

    TemporaryFolder folder;
    std::string path = folder.Path("ball.obj");
    Document document{"ball", GroupedSphere()};
};

TEST_F(Reductions, WriteLevelsOfDetail) {
    MeshReduction reduction;
    reduction.decimation = Decimation{1000u};
    reduction.lods = 3;
    reduction.lodRatio = 0.4f;
    const ReducedFiles files = Write(reduction);
    ASSERT_EQ(files.meshes.size(), 4u);
    const char* names[] = {"ball.obj", "ball.lod1.obj", "ball.lod2.obj", "ball.lod3.obj"};
    const double triangles[] = {1000, 400, 160, 64};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(files.meshes[i].file, folder.Path(names[i]));
        EXPECT_THAT(files.meshes[i].warnings, testing::IsEmpty());
        const PolygonMesh mesh = ReadMeshFile(folder.Path(names[i]));
        EXPECT_EQ(mesh.faceSizes.size(), files.meshes[i].faces);
        EXPECT_EQ(mesh.positions.size(), files.meshes[i].vertices);
        EXPECT_NEAR(static_cast<double>(mesh.faceSizes.size()), triangles[i], 4.0);
        ExpectManifold(mesh);
        EXPECT_THAT(mesh.attributes.groupNames, testing::UnorderedElementsAre("left", "right"));
        // The vertices are vertices of the sphere, with their colours.
        for (std::size_t v = 0; v < mesh.positions.size(); ++v) {
            const auto& p = mesh.positions[v];
            EXPECT_NEAR(std::hypot(p[0], p[1], p[2]), 1.0f, 1e-5f);
            EXPECT_NEAR(mesh.attributes.colors[v][0], p[0] * 0.5f + 0.5f, 1e-5f);
        }
        EXPECT_EQ(mesh.normals.size(), mesh.positions.size());
    }
}

TEST_F(Reductions, LevelsOfDetailEndWhereNoFacesWouldRemain) {
    const auto copy = CopyForReduction(Pillow());
    MeshReduction reduction;
    reduction.lods = 4;
    reduction.lodRatio = 0.3f;
    const ReducedFiles files = WriteReduced(path, *copy, reduction, {});
    EXPECT_LT(files.meshes.size(), 4u);
    ASSERT_EQ(files.warnings.size(), 1u);
    EXPECT_THAT(files.warnings[0], testing::HasSubstr("no faces would remain"));
    reduction.decimation = Decimation{1u};
    try {
        WriteReduced(path, *copy, reduction, {});
        FAIL() << "the decimation must be refused";
    } catch (const HostError& error) {
        EXPECT_THAT(error.what(), testing::StartsWith(path));
    }
}

TEST_F(Reductions, LevelsOfDetailFollowTheUndecimatedMesh) {
    MeshReduction reduction;
    reduction.lods = 1;
    const ReducedFiles files = Write(reduction);
    ASSERT_EQ(files.meshes.size(), 1u);
    EXPECT_EQ(files.meshes[0].file, folder.Path("ball.lod1.obj"));
    EXPECT_EQ(files.meshes[0].faces, 1536u);
    EXPECT_THROW(ReadMeshFile(path), HostError);
}

TEST_F(Reductions, RespectMaskTransformAndError) {
    std::vector<uint8_t> amounts;
    for (const Vector& p : PositionsOf(*document.Geometry().Bound()))
        amounts.push_back(p.z > 0.0f ? 127 : 0);
    document.Freeze(amounts, FreezeMode::Replace);
    MatrixTransform transform;
    transform.Set({2.0f, 2.0f, 2.0f}, {}, {10.0f, 0.0f, 0.0f});
    document.SetTransform(transform);
    MeshReduction reduction;
    reduction.decimation = Decimation{{}, 0.1f};
    Write(reduction, true, {true, {}});
    const PolygonMesh mesh = ReadMeshFile(path);
    std::size_t kept = 0;
    for (const auto& p : mesh.positions)
        if (p[2] > 0.01f) ++kept;
    std::size_t masked = 0;
    for (const Vector& p : PositionsOf(*document.Geometry().Bound()))
        if (p.z > 0.005f) ++masked;
    EXPECT_EQ(kept, masked);
    EXPECT_LT(mesh.positions.size(), masked + masked / 2);
    for (const auto& p : mesh.positions)
        EXPECT_NEAR(std::hypot(p[0] - 10.0f, p[1], p[2]), 2.0f, 1e-4f);
}

TEST_F(Reductions, OmitHiddenFaces) {
    FaceChoice chosen(document.Geometry().Bound()->faceCount);
    const SurfaceAttributes& attributes = document.Geometry().Attributes();
    for (std::size_t face = 0; face < chosen.size(); ++face)
        chosen[face] = attributes.faceGroups[face] == 0 ? 1 : 0;
    document.ChangeVisibility(VisibilityChange::Hide, chosen);
    MeshReduction reduction;
    reduction.decimation = Decimation{600u};
    reduction.decimation->keepsBorders = false;
    Write(reduction, false);
    const PolygonMesh visible = ReadMeshFile(path);
    EXPECT_THAT(visible.attributes.groupNames, testing::ElementsAre("right"));
    for (const auto& p : visible.positions) EXPECT_GT(p[0], -0.2f);
    Write(reduction, true);
    const PolygonMesh all = ReadMeshFile(path);
    EXPECT_EQ(
        std::set<std::string>(all.attributes.groupNames.begin(), all.attributes.groupNames.end())
            .size(),
        2u);
    ExpectManifold(all);
    // Faces get the group of the side on which they are, also if it is hidden.
    for (std::size_t face = 0; face < all.faceSizes.size(); ++face) {
        float x = 0.0f;
        for (std::size_t k = 0; k < 3; ++k) x += all.positions[all.faceVertices[face * 3 + k]][0];
        if (std::fabs(x) < 0.6f) continue;
        EXPECT_EQ(all.attributes.groupNames[all.attributes.faceGroups[face]],
                  x < 0.0f ? "left" : "right");
    }
    document.ChangeVisibility(VisibilityChange::Hide, FaceChoice(chosen.size(), 1));
    EXPECT_THROW(CopyForReduction(document.Geometry(), false), HostError);
}

TEST_F(Reductions, CanBeCancelled) {
    MeshReduction reduction;
    reduction.decimation = Decimation{300u};
    reduction.lods = 1;
    const auto run = [&](TestJob& job) {
        const auto copy = CopyForReduction(document.Geometry(), true, &job);
        WriteReduced(path, *copy, reduction, {}, &job);
    };
    TestJob every;
    run(every);
    every.ExpectFinished();
    TestJob whole(TestJob::never, TestJob::WithoutClock());
    run(whole);
    const std::string complete = TemporaryFolder::Content(path);
    const std::string before = SceneOf(document);
    for (uint64_t at = 1; at <= whole.reports; ++at) {
        folder.Fill("ball.obj", "old");
        TestJob job(at, TestJob::WithoutClock());
        EXPECT_THROW(run(job), Cancelled) << at;
        // A file is either complete or unchanged.
        const std::string content = TemporaryFolder::Content(path);
        EXPECT_TRUE(content == complete || content == "old") << at;
    }
    EXPECT_EQ(SceneOf(document), before);
}

TEST(ReducedFiles, PolygonsAreSplitIntoTriangles) {
    const TemporaryFolder folder;
    const auto copy = CopyForReduction(NgonMix());
    EXPECT_EQ(copy->Bound()->CornersPerFace(), 3u);
    EXPECT_EQ(copy->Bound()->VertexCount(), NgonMix().positions.size());
}

TEST(ReducedFiles, FilesOfLevelsOfDetail) {
    EXPECT_EQ(LodPath("a.b/mesh.ply", 2), "a.b/mesh.lod2.ply");
    EXPECT_EQ(LodPath("mesh.v2.obj", 10), "mesh.v2.lod10.obj");
}

}  // namespace
}  // namespace trovik::test
