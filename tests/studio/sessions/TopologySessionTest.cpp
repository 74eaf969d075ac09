// SPDX-License-Identifier: Apache-2.0

/// \file Tests operations that replace the mesh, between strokes, with events in a viewport.
#include "framework/files/MeshFiles.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/remesh/SourceSurface.h"
#include "tests/studio/sessions/StudioSession.h"

#include <gtest/gtest.h>

namespace trovik::studio::test {

namespace {

/// The mean distance of the vertices of a mesh file from the surface of another.
double MeanDistance(const std::string& file, const std::string& surfaceFile) {
    LevelGeometry geometry(ReadMeshFile(surfaceFile));
    SourceSurface surface(geometry);
    std::vector<Vector> positions;
    for (const auto& p : ReadMeshFile(file).positions) positions.emplace_back(p[0], p[1], p[2]);
    double sum = 0.0;
    for (const NearestPoint& nearest : surface.Nearest(positions))
        sum += static_cast<double>(nearest.distance);
    return sum / static_cast<double>(positions.size());
}

TEST(TopologySession, StrokesAndUndoWorkAcrossAVoxelRemesh) {
    StudioSession session;
    session.OpenBust();
    EXPECT_EQ(session.Play(PenStroke(300.0, 1000)), "");
    const std::size_t levels = session.engine.State()->levels.size();
    const char* remesh = R"({"voxelRemesh": {"faces": 6000, "levels": 1}})";
    EXPECT_EQ(session.Play(Joined({{Step(remesh)}, PenStroke(320.0, 3000)})), "");
    EXPECT_EQ(session.engine.State()->levels.size(), 2u);
    EXPECT_NEAR(session.engine.State()->levels[0].faces, 6000, 300);
    EXPECT_EQ(session.engine.State()->historyPosition, 3u);
    const ContentHash after = session.SceneHash();
    EXPECT_EQ(session.Play({Step(R"({"undo": 2})")}), "");
    EXPECT_EQ(session.engine.State()->levels.size(), levels);
    const ContentHash undone = session.SceneHash();
    EXPECT_NE(undone, after);
    EXPECT_EQ(session.Play({Step(R"({"redo": 2})")}), "");
    EXPECT_EQ(session.SceneHash(), after);
    EXPECT_EQ(session.Play({Step(R"({"undo": 2})")}), "");
    EXPECT_EQ(session.SceneHash(), undone);
}

TEST(TopologySession, AProjectionRestoresASmoothedSurface) {
    StudioSession session;
    session.OpenBust();
    const std::string file = session.Path("bust.ply");
    const std::string project = R"({"project": {"file": ")" + file + R"(", "distance": 0.4}})";
    const std::string smoothed = session.Path("smoothed.ply");
    const std::string projected = session.Path("projected.ply");
    const auto save = [](const std::string& path) {
        return Step((R"({"export": {"file": ")" + path + R"("}})").c_str());
    };
    EXPECT_EQ(session.Play({save(file),
                            Step(R"({"filter": {"kind": "smooth", "iterations": 20}})"),
                            save(smoothed),
                            Step(project.c_str()),
                            save(projected)}),
              "");
    const double before = MeanDistance(smoothed, file);
    EXPECT_GT(before, 1e-5);
    EXPECT_LT(MeanDistance(projected, file), 0.1 * before);
    EXPECT_EQ(session.engine.State()->historyPosition, 2u);
    EXPECT_EQ(session.engine.State()->history.back().label, "Project");
    EXPECT_EQ(session.Play({Step(R"({"project": {"file": "missing.obj", "distance": 1}})")})
                  .contains("missing.obj"),
              true);
}

}  // namespace

}  // namespace trovik::studio::test
