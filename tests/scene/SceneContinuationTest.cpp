// SPDX-License-Identifier: Apache-2.0

/// \file Tests that scenes preserve the complete state: the same steps give bit-identical results,
/// whether or not the scene is saved and reopened between them.
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/images/ImageFile.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/script/ScriptRunner.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/scene/SampleScene.h"

namespace trovik::test {
namespace {

std::vector<Vector> PositionsOf(Document& document) {
    return trovik::PositionsOf(*document.Geometry().Bound());
}

class SceneContinuation : public ::testing::Test {
protected:
    void Run(const std::string& head, const std::vector<std::string>& steps) {
        std::string list;
        for (const std::string& step : steps) list += (list.empty() ? "" : ",\n") + step;
        const std::string script =
            folder.Fill("script.json", "{" + head + ", \"steps\": [" + list + "]}");
        ScriptRunner(script, folder.Path("."), {}).Run();
    }

    /// Runs all steps without interruption, and then, for each position between the steps, with a
    /// save and a reopen at that position. The final scenes must be identical byte for byte. They
    /// contain the positions, normals and masks of all levels, pending changes to coarser levels,
    /// layers with their bases and offsets, nodes, tools, mirrors and the view.
    void ExpectNoDifference(const PolygonMesh& mesh,
                            const std::string& head,
                            const std::vector<std::string>& steps) {
        WriteMeshFile(folder.Path("mesh.ply"), mesh);
        const std::string opening = "\"mesh\": \"mesh.ply\"" + head;
        std::vector<std::string> all = steps;
        all.push_back(R"({"save": "end.trovik"})");
        Run(opening, all);
        const std::string expected = TemporaryFolder::Content(folder.Path("end.trovik"));
        ASSERT_FALSE(expected.empty());
        for (std::size_t cut = 0; cut <= steps.size(); ++cut) {
            SCOPED_TRACE("saved before step " + std::to_string(cut));
            const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(cut);
            std::vector<std::string> first(steps.begin(), middle);
            first.push_back(R"({"save": "middle.trovik"})");
            std::vector<std::string> second(middle, steps.end());
            second.push_back(R"({"save": "end.trovik"})");
            Run(opening, first);
            std::filesystem::remove(folder.Path("end.trovik"));
            Run(R"("scene": "middle.trovik")", second);
            // EXPECT_EQ would print both files.
            EXPECT_TRUE(TemporaryFolder::Content(folder.Path("end.trovik")) == expected);
        }
    }

    TemporaryFolder folder;
};

const std::vector<std::string>& ManySteps() {
    static const std::vector<std::string> steps = {
        R"({"tool": "Sculpt", "set": {"radius": 0.9, "strength": 35, "direction": "x"}})",
        R"({"stroke": {"surface": [[0.3, 0.2, 1], [0.9, 0.4, 1]]}})",
        R"({"layer": {"add": "first"}})",
        R"({"tool": "Wax", "set": {"strength": 60, "buildUpRate": 0.8}})",
        R"({"stroke": {"surface": [[0.1, 0.8, 0.7], [0.8, 0.4, 0.6]], "modifier": "invert"}})",
        R"({"layer": {"strength": 0.4}})",
        R"({"mask": {"center": [0.5, 0.4, 0.9], "radius": 0.6, "softness": 0.5, "amount": 0.9}})",
        R"({"tool": "Smooth", "set": {"affectAllLayers": false}})",
        R"({"stroke": {"surface": [[0.2, 0.3, 1], [0.9, 0.4, 1]]}})",
        R"({"level": 1})",
        R"({"layer": {"add": "below"}})",
        R"({"tool": "Flatten", "set": {"falloff": [1, 0.9, 0.5, 0.2, 0], "globalPlane": true}})",
        R"({"stroke": {"surface": [[0.3, 0.2, 1], [0.4, 0.4, 1]]}})",
        R"({"tool": "Bulge", "set": {"facing": {"enabled": true, "start": 30, "range": 50}}})",
        R"({"stroke": {"pointer": [[120, 110], [150, 130, 0.5]]}})",
        R"({"level": 2})",
        R"({"mirror": ["x", "y"]})",
        R"({"layer": {"strength": 0.9}})",
        R"({"tool": "Wax"})",
        R"({"stroke": {"surface": [[0.2, 0.1, 0.9], [0.7, 0.2, 0.9]]}})",
        R"({"layer": {"select": null}})",
        R"({"tool": "Pinch", "set": {"spacing": 40}})",
        R"({"stroke": {"surface": [[0.4, 0.3, 0.9], [0.7, 0.2, 0.9]]}})",
        R"({"subdivide": 1})",
        R"({"tool": "Smear"})",
        R"({"stroke": {"surface": [[0.4, 0.3, 0.9], [0.9, 0.1, 0.9]]}})",
        R"({"layer": {"add": "top"}})",
        R"({"tool": "Foamy"})",
        R"({"stroke": {"surface": [[0.1, 0.3, 0.9], [0.5, 0.1, 0.9]]}})",
        R"({"set": {"facing": {"enabled": false}}})"};
    return steps;
}

TEST_F(SceneContinuation, GivesTheSameBitsOnQuadsWithMirrorAndTransformation) {
    ExpectNoDifference(
        SteppedBox(),
        R"(, "levels": 2, "mirror": ["z"], "camera": {"from": [0.2, 0.3, 1], "width": 256,
            "height": 256}, "transform": {"scale": [1, 1.2, 0.9], "rotate": [5, 10, 15]})",
        ManySteps());
}

TEST_F(SceneContinuation, GivesTheSameBitsOnLevelsAboveTriangles) {
    ExpectNoDifference(
        Icosahedron(), R"(, "levels": 2, "camera": {"width": 256, "height": 256})", ManySteps());
}

TEST_F(SceneContinuation, GivesTheSameBitsOnTriangles) {
    ExpectNoDifference(Icosahedron(),
                       "",
                       {R"({"tool": "Sculpt", "set": {"radius": 1.2, "strength": 20}})",
                        R"({"stroke": {"surface": [[0.3, 0.2, 1], [0.4, 0.9, 0.2]]}})",
                        R"({"layer": {"add": "one"}})",
                        R"({"tool": "Smooth"})",
                        R"({"stroke": {"surface": [[0.3, 0.2, 1], [0.9, 0.4, 1]]}})",
                        R"({"mask": {"center": [0, 1, 0], "radius": 1.1}})",
                        R"({"tool": "Bulge"})",
                        R"({"stroke": {"surface": [[0.3, 0.2, 1], [0.9, 0.4, 1]]}})"});
}

TEST_F(SceneContinuation, GivesTheSameBitsOnAMeshThatWasSplitOnImport) {
    ExpectNoDifference(NgonMix(),
                       R"(, "levels": 2, "camera": {"width": 64, "height": 64})",
                       {R"({"tool": "Sculpt", "set": {"radius": 0.8, "strength": 40}})",
                        R"({"stroke": {"surface": [[0.3, 0.2, 0], [1.5, 0.4, 0]]}})",
                        R"({"reset": true})",
                        R"({"tool": "Amplify"})",
                        R"({"stroke": {"surface": [[0.3, 0.2, 0], [1.5, 0.4, 0]]}})"});
}

TEST_F(SceneContinuation, GivesTheSameBitsWithStampsAndRandomness) {
    std::vector<uint8_t> pixels(16 * 16);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint8_t>(i * 37 % 256);
    WriteImageFile(folder.Path("rough.png"), pixels.data(), 16, 16, 1);
    WriteImageFile(folder.Path("half.png"), pixels.data(), 8, 32, 1);
    ExpectNoDifference(
        SteppedBox(),
        R"(, "levels": 4, "seed": 9, "camera": {"width": 256, "height": 256})",
        {R"({"tool": "Spray", "set": {"radius": 0.7, "strength": 30, "stamp": "rough.png"}})",
         R"({"stroke": {"surface": [[0.3, 0.2, 1], [0.9, 0.4, 1]]}})",
         R"({"tool": "Repeat", "set": {"radius": 0.2, "stamp": {"path": "half.png",
             "spacing": 10, "randomSpacing": 20, "randomRotation": 0.5, "bilinear": true}}})",
         R"({"stroke": {"surface": [[0.3, 0.2, 1], [0.9, 0.4, 1]]}})",
         R"({"tool": "Sculpt", "set": {"radius": 0.5, "stamp": {"path": "rough.png",
             "tiled": true, "positioning": "start", "rotation": 30, "inverted": true}}})",
         R"({"stroke": {"surface": [[0.3, 0.2, 1], [0.9, 0.4, 1]]}})",
         R"({"tool": "Imprint", "set": {"stamp": "half.png"}})",
         R"({"stroke": {"surface": [[0.3, 0.2, 1], [0.6, 0.4, 1]]}})",
         R"({"tool": "Spray"})",
         R"({"stroke": {"pointer": [[120, 110], [150, 130]]}})",
         R"({"tool": "Sculpt"})",
         R"({"stroke": {"surface": [[0.1, 0.2, 1], [0.3, 0.4, 1]]}})"});
}

TEST_F(SceneContinuation, GivesTheSameBitsWithPensAndTheFreezeBrush) {
    const std::string pen =
        R"("pen": [[100, 120, 0.1, 0, 0.2, 0.1], [125, 130, 0.6, 40, 0.3, 0], [125, 130, 0.7, 190,
                   0.3, 0], [150, 110, 0.2, 260, 0, 0]])";
    ExpectNoDifference(
        SteppedBox(),
        R"(, "levels": 3, "seed": 4, "camera": {"width": 256, "height": 256})",
        {R"({"tool": "Sculpt", "set": {"radius": 0.4, "strength": 30, "smoothing": 0.05,
             "strengthCurve": [[0, 0.1], [0.4, 0.3], [1, 0.9]], "sizeCurve": [[0, 0.3], [1, 1]],
             "tilt": {"rotate": true, "size": 0.5, "strength": -0.25}, "randomSize": 0.4}})",
         "{\"stroke\": {" + pen + "}}",
         R"({"set": {"airbrush": 25, "stabiliser": 0.02, "pressureControlsSize": false}})",
         "{\"stroke\": {" + pen + "}}",
         R"({"tool": "Freeze", "set": {"radiusPixels": 22, "strength": 35, "falloff": "cone",
             "facing": {"enabled": true, "start": 40, "range": 30}, "smoothing": 0.1}})",
         "{\"stroke\": {" + pen + "}}",
         "{\"stroke\": {" + pen + R"(, "modifier": "smooth"}})",
         R"({"tool": "Wax", "set": {"strengthCurve": null, "facing": {"enabled": false}}})",
         "{\"stroke\": {" + pen + "}}",
         R"({"tool": "Freeze", "set": {"radius": 0.3}})",
         "{\"stroke\": {" + pen + R"(, "modifier": "invert"}})"});
}

// The mirror is computed from the imported mesh and must not be recomputed from the sculpted one.
TEST_F(SceneContinuation, GivesTheSameBitsWithTheTopologicalMirror) {
    ExpectNoDifference(SphereQuads(1),
                       R"(, "levels": 2, "mirror": "topological")",
                       {R"({"level": 0})",
                        R"({"tool": "Sculpt", "set": {"radius": 0.6, "strength": 90}})",
                        R"({"stroke": {"surface": [[0.6, 0.5, 0.6], [0.2, 0.9, 0.3]]}})",
                        R"({"level": 2})",
                        R"({"tool": "Wax"})",
                        R"({"stroke": {"surface": [[0.6, 0.2, 0.6], [0.2, 0.8, 0.3]]}})"});
}

TEST_F(SceneContinuation, TopologicalMirrorIsTheOneFoundBeforeSaving) {
    auto document = DocumentOn(folder, SphereQuads(1));
    document->SetTopologicalMirror();
    const std::vector<uint32_t> images = document->Geometry().Mirror()->Images();
    LevelMesh& base = *document->Geometry().Level(0);
    // Rotated by 90 degrees around y, so that front and back become left and right.
    for (uint32_t v = 0; v < base.VertexCount(); ++v) {
        const Vector p = base.Position(v);
        base.SetPosition(v, {p.z, p.y, -p.x});
    }
    document->Save(folder.Path("turned.trovik"));
    auto read = Document::OpenScene(folder.Path("turned.trovik"));
    ASSERT_NE(read->Geometry().Mirror(), nullptr);
    EXPECT_EQ(read->Geometry().Mirror()->Images(), images);
    ASSERT_TRUE(read->Geometry().FindMirror());
    EXPECT_NE(read->Geometry().Mirror()->Images(), images)
        << "a new search would find another mirror";
}

TEST_F(SceneContinuation, StampImageStaysLoadedDuringSaving) {
    auto document = RichDocument(folder);
    const std::vector<uint8_t> grey(64, 200);
    WriteImageFile(folder.Path("grey.png"), grey.data(), 8, 8, 1);
    document->SelectTool("Sculpt");
    document->Brush().SetStamp(true, QString::fromStdString(folder.Path("grey.png")));
    StrokeOver(*document, {0}, 1.0f);
    Image* image = document->Brush().MaskImage(-1);
    ASSERT_EQ(image->Width(), 8u);
    document->Save(folder.Path("one.trovik"));
    EXPECT_EQ(document->Brush().MaskImage(-1), image);
    EXPECT_EQ(document->Brush().MaskName(-1), QStringLiteral("grey.png"));
}

TEST_F(SceneContinuation, SceneCannotBeSavedDuringAStroke) {
    auto document = RichDocument(folder);
    document->Loop().Begin(BrushOperation::ModifierNone);
    const std::string file = folder.Path("open.trovik");
    EXPECT_EQ(MessageOf<HostError>([&] { document->Save(file); }),
              file + ": cannot save the scene while a stroke is open; release or abandon it first");
    document->Loop().End();
    document->Save(file);
    EXPECT_TRUE(std::filesystem::exists(file));
}

TEST_F(SceneContinuation, UndoAfterTheBreakIsAsExactAsWithoutABreak) {
    auto document = RichDocument(folder);
    document->Save(folder.Path("break.trovik"));
    auto read = Document::OpenScene(folder.Path("break.trovik"));
    const std::vector<Vector> before = PositionsOf(*read);
    for (Document* each : {document.get(), read.get()}) {
        StrokeOver(*each, {2, 9}, 1.5f);
        each->BindLevel(2);
        StrokeOver(*each, {40}, 1.0f);
    }
    EXPECT_TRUE(StateOf(*read, folder) == StateOf(*document, folder));
    for (int step = 0; step < 3; ++step) {
        ASSERT_TRUE(document->Undo());
        ASSERT_TRUE(read->Undo());
        EXPECT_TRUE(StateOf(*read, folder) == StateOf(*document, folder)) << step;
    }
    EXPECT_FALSE(read->Undo());
    EXPECT_EQ(PositionsOf(*read), before);
}

}  // namespace
}  // namespace trovik::test
