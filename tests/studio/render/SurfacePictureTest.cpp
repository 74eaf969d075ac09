// SPDX-License-Identifier: Apache-2.0

/// \file Tests that a viewport to which only changed patches are sent draws the same image, bit for
/// bit, as a viewport that receives the whole surface, and that their buffers are byte-identical.
#include "tests/display/PackedLevel.h"
#include "tests/studio/WaitFor.h"
#include "tests/studio/render/OffscreenViewport.h"

#include <gtest/gtest.h>

namespace trovik::studio {
namespace {

using test::OffscreenViewport;
using test::ShownDocument;

constexpr int width = 200;
constexpr int height = 150;
/// The size of a patch of 33 x 33 vertices.
constexpr uint64_t patchBytes = 21780;

/// A document shown by a viewport that follows its changes.
class SurfacePictureTest : public testing::Test {
protected:
    SurfacePictureTest()
        : shown(std::make_unique<Document>("sphere", trovik::test::SphereQuads(1))) {
        shown.Do(R"({"subdivide": 5})");
        shown.Do(R"({"camera": {"eye": [1.5, 1.2, 4.2], "target": [0, 0, 0], "fieldOfView": 32,
                                "width": 200, "height": 150}})");
        shown.Do(R"({"tool": "Sculpt", "set": {"radius": 0.3, "strength": 40}})");
        viewport.camera.SetView(shown.document->View());
        viewport.frame.settings.showsGroups = true;
        viewport.frame.settings.cavity = 0.7f;
        picture = Follow();
    }

    /// Passes the changes to the viewport in small updates, and draws.
    QImage Follow() {
        viewport.Add(shown.feed, 3 * patchBytes);
        return viewport.Draw();
    }

    /// The image drawn by a viewport that receives the whole surface.
    QImage Fresh() {
        other.Renderer().Clear();
        SurfaceFeed feed(*shown.document);
        other.camera = viewport.camera;
        other.frame = viewport.frame;
        other.Add(feed);
        return other.Draw();
    }

    /// Runs a step and compares the images. \return whether the step changed the image.
    bool StepIsShown(const std::string& step) {
        SCOPED_TRACE(step);
        shown.Do(step.c_str());
        const QImage now = Follow();
        EXPECT_EQ(now, Fresh()) << "the image differs from that of the whole surface";
        const LevelMesh& level = *shown.document->Geometry().Bound();
        const std::vector<DisplayVertex> uploaded = viewport.Renderer().Buffers().Read();
        const PatchLayout& layout = *viewport.Renderer().Buffers().Layout();
        const std::vector<DisplayVertex> packed = trovik::test::PackLevel(level, layout);
        for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch) {
            const auto first = static_cast<std::size_t>(layout.FirstVertex(patch));
            const std::size_t bytes = layout.VertexCount(patch) * sizeof(DisplayVertex);
            EXPECT_EQ(std::memcmp(&uploaded[first], &packed[first], bytes), 0)
                << "patch " << patch << " was not uploaded again";
        }
        const bool changed = now != picture;
        picture = now;
        return changed;
    }

    ShownDocument shown;
    OffscreenViewport viewport{width, height};
    OffscreenViewport other{width, height};
    QImage picture;
};

constexpr const char* stroke = R"({"stroke": {"pointer": [[75, 62], [125, 94]]}})";

TEST_F(SurfacePictureTest, ShowsStrokesOfEveryTool) {
    // Tools that smooth or move the surface have no effect on a surface without detail.
    EXPECT_TRUE(StepIsShown(R"({"stroke": {"pointer": [[69, 87], [131, 69]]}})"));
    unsigned shownTools = 0;
    const std::vector<std::string> tools = shown.document->ToolNames();
    ASSERT_GE(tools.size(), 15u);
    for (const std::string& tool : tools) {
        SCOPED_TRACE(tool);
        shown.runner.Do({{"tool", tool}, {"set", {{"radius", 0.3}}}});
        shownTools += StepIsShown(stroke) ? 1u : 0u;
    }
    // Some tools do nothing without a stamp.
    EXPECT_GE(shownTools, 12u);
}

TEST_F(SurfacePictureTest, ShowsUndoAndRedo) {
    const QImage before = picture;
    EXPECT_TRUE(StepIsShown(stroke));
    const QImage after = picture;
    EXPECT_TRUE(StepIsShown(R"({"undo": 1})"));
    EXPECT_EQ(picture, before);
    EXPECT_TRUE(StepIsShown(R"({"redo": 1})"));
    EXPECT_EQ(picture, after);
}

TEST_F(SurfacePictureTest, ShowsLayersMaskHiddenFacesLevelsAndTransforms) {
    EXPECT_FALSE(StepIsShown(R"({"layer": {"add": "Skin"}})"));
    EXPECT_TRUE(StepIsShown(stroke));
    EXPECT_TRUE(StepIsShown(R"({"layer": {"strength": 0.4}})"));
    EXPECT_TRUE(StepIsShown(R"({"layer": {"visible": false}})"));
    EXPECT_TRUE(StepIsShown(R"({"mask": {"box": [62, 50, 112, 100]}})"));
    EXPECT_TRUE(StepIsShown(R"({"mask": {"blur": 3}})"));
    EXPECT_TRUE(StepIsShown(R"({"hide": {"mask": 0.9}})"));
    EXPECT_TRUE(StepIsShown(R"({"invertVisibility": true})"));
    EXPECT_TRUE(StepIsShown(R"({"show": "all"})"));
    EXPECT_TRUE(StepIsShown(R"({"level": 3})"));
    EXPECT_TRUE(StepIsShown(stroke));
    EXPECT_TRUE(StepIsShown(R"({"level": 1})"));
    ASSERT_FALSE(viewport.Renderer().Buffers().Layout()->IsGrid());
    EXPECT_TRUE(StepIsShown(stroke));
    EXPECT_TRUE(StepIsShown(R"({"hide": {"box": [70, 50, 125, 100]}})"));
    EXPECT_TRUE(StepIsShown(R"({"level": 5})"));
    viewport.frame.settings.isFlat = true;
    EXPECT_TRUE(StepIsShown(R"({"undo": 3})"));
}

TEST_F(SurfacePictureTest, ShowsEverySettingOfTheSurface) {
    const auto change = [&](const char* what, auto apply) {
        SCOPED_TRACE(what);
        apply(viewport.frame);
        const QImage now = viewport.Draw();
        EXPECT_NE(now, picture);
        EXPECT_EQ(now, Fresh());
        picture = now;
    };
    shown.Do(R"({"mask": {"box": [62, 50, 112, 100]}})");
    picture = Follow();
    using Frame = ViewportRenderer::Frame;
    change("mask", [](Frame& frame) { frame.settings.showsMask = false; });
    change("cavity", [](Frame& frame) { frame.settings.cavity = 0.0f; });
    change("wireframe", [](Frame& frame) { frame.settings.hasWireframe = true; });
    change("flat", [](Frame& frame) { frame.settings.isFlat = true; });
    change("ground", [](Frame& frame) { frame.settings.hasGround = true; });
    change("grid", [](Frame& frame) { frame.settings.hasGrid = false; });
    change("background", [](Frame& frame) { frame.settings.background[0] = Qt::darkRed; });
    change("plane", [](Frame& frame) { frame.overlays.symmetryPlanes = {0}; });
    for (const QString& matcap : Matcaps::Names().mid(1))
        change(qPrintable(matcap), [&](Frame& frame) { frame.settings.matcap = matcap; });
    BrushRing ring;
    ring.position = {0.3f, 0.24f, 0.92f};
    ring.radius = 0.3f;
    change("ring", [&](Frame& frame) { frame.overlays.ring = ring; });
    ring.falloff = {1.0f, 0.5f, 0.0f};
    change("falloff", [&](Frame& frame) { frame.overlays.ring = ring; });
    ring.position.x = -0.3f;
    change("mirror", [&](Frame& frame) { frame.overlays.mirroredRings = {ring}; });
    change("pixels", [](Frame& frame) { frame.pixelRatio = 2.0f; });
}

// At level 1 the surface has buckets, whose wireframe consists of lines.
TEST_F(SurfacePictureTest, DrawsTheWireframeOfBuckets) {
    shown.Do(R"({"level": 1})");
    Follow();
    const uint64_t calls = viewport.Renderer().Stats().drawCalls;
    viewport.frame.settings.hasWireframe = true;
    const QImage lines = viewport.Draw();
    EXPECT_GT(viewport.Renderer().Stats().drawCalls, calls);
    EXPECT_EQ(lines, Fresh());

    // A frame with a limited budget does not wait for the lines.
    viewport.Renderer().Clear();
    shown.Do(R"({"level": 0})");
    shown.Do(R"({"level": 1})");
    Follow();
    viewport.frame.uploadBudget = ViewportRenderer::restBudget;
    QImage drawn = viewport.Draw();
    EXPECT_TRUE(WaitFor([&] {
        drawn = viewport.Draw();
        return !viewport.Renderer().HasPending();
    }));
    EXPECT_EQ(drawn, lines);
}

TEST_F(SurfacePictureTest, CountsItsWork) {
    const PatchLayout& layout = *viewport.Renderer().Buffers().Layout();
    ASSERT_EQ(layout.VertexCount(0) * sizeof(DisplayVertex), patchBytes);
    const RenderStats& stats = viewport.Renderer().Stats();
    EXPECT_EQ(stats.bytesUploaded, layout.TotalVertexCount() * sizeof(DisplayVertex));
    EXPECT_EQ(stats.patchesUploaded, layout.PatchCount());
    EXPECT_EQ(stats.trianglesDrawn + stats.patchesCulled * 2048, layout.PatchCount() * 2048u);
    EXPECT_EQ(stats.bytesPending, 0u);
    const uint64_t indexBytes = GridIndices::OfDepth(5).Buffer().size_bytes();
    EXPECT_EQ(stats.bufferBytes, layout.TotalVertexCount() * sizeof(DisplayVertex) + indexBytes);

    const auto expectNoUpload = [&](const char* what) {
        SCOPED_TRACE(what);
        Follow();
        EXPECT_EQ(stats.bytesUploaded, 0u);
        EXPECT_EQ(stats.patchesUploaded, 0u);
        EXPECT_GT(stats.drawCalls, 0u);
    };
    expectNoUpload("unchanged");
    viewport.camera.Orbit({}, 40.0f, 10.0f);
    expectNoUpload("orbit");
    viewport.frame.overlays.ring = BrushRing{{0.0f, 0.0f, 1.0f}, {}, 0.2f, Qt::white, {}};
    expectNoUpload("hover");

    // A dab uploads the patches that the document reports, each once.
    struct Reported final : DocumentObserver {
        explicit Reported(const PatchLayout& of) : dirty(of) {}
        void SurfaceChanged(const SurfaceChange& change) override { dirty.Add(change); }
        DirtyPatches dirty;
    } reported(layout);
    shown.document->AddObserver(reported);
    shown.Do(R"({"stroke": {"pointer": [[100, 75]]}})");
    shown.document->RemoveObserver(reported);
    Follow();
    EXPECT_GT(stats.patchesUploaded, 0u);
    EXPECT_EQ(stats.patchesUploaded, reported.dirty.Patches().size());
    EXPECT_EQ(stats.bytesUploaded, stats.patchesUploaded * patchBytes);
    EXPECT_LT(stats.patchesUploaded, layout.PatchCount() / 2);

    viewport.camera.Dolly({0.0f, 0.0f, 1.0f}, 0.2f);
    viewport.Draw();
    EXPECT_GE(stats.patchesCulled, layout.PatchCount() / 3);
}

TEST_F(SurfacePictureTest, SpreadsUploadsOverFrames) {
    shown.Do(R"({"mask": "all"})");
    viewport.frame.uploadBudget = 10 * patchBytes;
    viewport.Add(shown.feed);
    const RenderStats& stats = viewport.Renderer().Stats();
    uint64_t uploaded = 0;
    int frames = 0;
    do {
        picture = viewport.Draw();
        EXPECT_LE(stats.bytesUploaded, 10 * patchBytes);
        uploaded += stats.patchesUploaded;
        ++frames;
        EXPECT_EQ(viewport.Renderer().HasPending(), stats.bytesPending > 0);
    } while (viewport.Renderer().HasPending());
    EXPECT_EQ(uploaded, viewport.Renderer().Buffers().Layout()->PatchCount());
    EXPECT_EQ(frames, 3);
    viewport.frame.uploadBudget = ViewportRenderer::unlimitedBudget;
    EXPECT_EQ(picture, Fresh());
}

TEST_F(SurfacePictureTest, DrawsLessDetailWhileTheCameraMovesAndFramesAreSlow) {
    const QImage full = viewport.Draw();
    viewport.frame.secondsAtRest = 0.0;
    // Software rendering of this surface takes longer than a frame may.
    for (int i = 0; i < 20 && !viewport.Renderer().IsCoarse(); ++i) viewport.Draw();
    EXPECT_TRUE(viewport.Renderer().IsCoarse());
    viewport.frame.secondsAtRest = 1.0;
    EXPECT_EQ(viewport.Draw(), full);
    EXPECT_FALSE(viewport.Renderer().IsCoarse());
}

}  // namespace
}  // namespace trovik::studio
