// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests hidden faces in stroke scripts, documents and scenes.
#include "framework/document/Document.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/multires/Steps.h"
#include "framework/script/ScriptRunner.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/visibility/VisibilityState.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

namespace trovik::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string ReadAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// A square from (-1, -1) to (1, 1) and a small one off to the side, with two face groups and two
/// materials, seen from (0, 0, 5) in a viewport of 400 pixels; one unit is 100 pixels.
class VisibilityScript : public testing::Test {
protected:
    VisibilityScript() {
        folder.Fill(
            "quad.obj",
            "v -1 -1 0\nv 0 -1 0\nv 1 -1 0\nv -1 1 0\nv 0 1 0\nv 1 1 0\n"
            "v 1.5 0 0\nv 1.75 0 0\nv 1.75 0.25 0\nv 1.5 0.25 0\n"
            "usemtl skin\ng left\nf 1 2 5 4\ng right\nf 2 3 6 5\nusemtl cloth\nf 7 8 9 10\n");
    }

    std::string Script(const std::string& steps) {
        return folder.Fill(
            "script.json",
            R"({"mesh": "quad.obj", "levels": 3, "camera": {"eye": [0, 0, 5], "target": [0, 0, 0],)"
            R"( "fieldOfView": 43.602818, "width": 400, "height": 400}, "steps": [)" +
                steps + R"(, {"save": "out.trovik"}]})");
    }
    /// Runs the steps on 3 x 64 quads. \return the saved document.
    std::unique_ptr<Document> Run(const std::string& steps) {
        ScriptProgress progress;
        warnings.clear();
        progress.warning = [this](const std::string& text) { warnings.push_back(text); };
        ScriptRunner(Script(steps), folder.Path("out"), progress).Run();
        auto document = Document::OpenScene(folder.Path("out/out.trovik"));
        ExpectConsistent(document->Geometry());
        return document;
    }
    std::string ErrorOf(const std::string& steps) {
        return MessageOf<HostError>([&] { Run(steps); });
    }
    /// The number of hidden faces per face of level 0.
    std::vector<int> Hidden(const std::string& steps) {
        const auto document = Run(steps);
        const LevelMesh& level = *document->Geometry().Bound();
        std::vector<int> hidden(3);
        for (uint32_t face = 0; face < level.faceCount; ++face)
            hidden[face * 3 / level.faceCount] += level.IsFaceHidden(face) ? 1 : 0;
        return hidden;
    }

    TemporaryFolder folder;
    std::vector<std::string> warnings;
};

TEST_F(VisibilityScript, EverySelectionCanBeHidden) {
    EXPECT_THAT(Hidden(R"({"hide": {"group": "left"}})"), ElementsAre(64, 0, 0));
    EXPECT_THAT(Hidden(R"({"hide": {"group": null}})"), ElementsAre(0, 0, 0));
    EXPECT_THAT(warnings, ElementsAre(HasSubstr("/steps/0: no face is selected")));
    EXPECT_THAT(Hidden(R"({"hide": {"material": "cloth"}})"), ElementsAre(0, 0, 64));
    EXPECT_THAT(Hidden(R"({"hide": {"component": {"surface": [1.6, 0.1, 1]}}})"),
                ElementsAre(0, 0, 64));
    EXPECT_THAT(Hidden(R"({"hide": {"component": {"pointer": [150, 150]}}})"),
                ElementsAre(64, 64, 0));
    EXPECT_THAT(Hidden(R"({"hide": {"component": {"face": 191}}})"), ElementsAre(0, 0, 64));
    EXPECT_THAT(Hidden(R"({"hide": {"faces": [[0, 3], [100, 1]]}})"), ElementsAre(3, 1, 0));
    EXPECT_THAT(Hidden(R"({"hide": {"box": [201, 90, 400, 400]}})"), ElementsAre(0, 56, 64));
    EXPECT_THAT(Hidden(R"({"hide": {"lasso": [[201, 90], [320, 90], [320, 310], [201, 310]],
                            "reach": "through"}})"),
                ElementsAre(0, 56, 0));
    // Hides the masked half of the left square.
    EXPECT_THAT(Hidden(R"({"mask": {"min": [-2, -2, -1], "max": [-0.4, 2, 1], "amount": 0.5}},
                          {"hide": {"mask": 0.5}})"),
                ElementsAre(32, 0, 0));
    EXPECT_THAT(Hidden(R"({"mask": {"min": [-2, -2, -1], "max": [-0.4, 2, 1], "amount": 0.5}},
                          {"hide": {"mask": 0.6}})"),
                ElementsAre(0, 0, 0));
    EXPECT_THAT(Hidden(R"({"hide": {"group": "left", "grow": 1}})"), ElementsAre(64, 8, 0));
    EXPECT_THAT(Hidden(R"({"hide": {"group": "left", "shrink": 1}})"), ElementsAre(56, 0, 0));
    EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(VisibilityScript, ShowIsolateAndInvertWork) {
    EXPECT_THAT(Hidden(R"({"isolate": {"group": "left"}})"), ElementsAre(0, 64, 64));
    EXPECT_THAT(Hidden(R"({"isolate": {"group": "left"}}, {"invertVisibility": true})"),
                ElementsAre(64, 0, 0));
    EXPECT_THAT(Hidden(R"({"isolate": {"group": "left"}}, {"show": {"material": "cloth"}})"),
                ElementsAre(0, 64, 0));
    EXPECT_THAT(Hidden(R"({"isolate": {"group": "left"}}, {"hide": {"hidden": true, "grow": 2}})"),
                ElementsAre(16, 64, 64));
    EXPECT_THAT(Hidden(R"({"isolate": {"group": "left"}}, {"show": "all"})"), ElementsAre(0, 0, 0));
    EXPECT_THAT(warnings, IsEmpty());
    EXPECT_THAT(Hidden(R"({"show": "all"})"), ElementsAre(0, 0, 0));
    EXPECT_THAT(warnings, ElementsAre(HasSubstr("nothing is hidden")));
    EXPECT_THAT(Hidden(R"({"invertVisibility": true})"), ElementsAre(64, 64, 64));
    EXPECT_THAT(warnings, ElementsAre(HasSubstr("every face is hidden")));
    EXPECT_THAT(Hidden(R"({"hide": {"group": "left"}}, {"undo": 1})"), ElementsAre(0, 0, 0));
    EXPECT_THAT(Hidden(R"({"hide": {"group": "left"}}, {"undo": 1}, {"redo": 1})"),
                ElementsAre(64, 0, 0));
    EXPECT_THAT(Hidden(R"({"hide": {"group": "left"}}, {"reset": true})"), ElementsAre(0, 0, 0));
}

TEST_F(VisibilityScript, StrokesDoNotMoveHiddenFaces) {
    const std::string stroke =
        R"({"tool": "Sculpt", "set": {"radius": 0.5}},
           {"stroke": {"surface": [[0.3, -0.5, 0], [0.3, 0.5, 0]]}})";
    const auto whole = Run(stroke);
    const auto part = Run(R"({"hide": {"group": "right"}}, )" + stroke);
    const LevelMesh& level = *part->Geometry().Bound();
    uint32_t moved = 0;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const bool isMoved = level.Position(v).z != 0.0f;
        ASSERT_FALSE(level.IsVertexHidden(v) && isMoved) << v;
        moved += isMoved ? 1u : 0u;
    }
    EXPECT_GT(moved, 0u) << "the nearest surface points of the path are then at the border";
    EXPECT_NE(whole->Geometry().Bound()->Position(13).z, 100.0f);
}

TEST_F(VisibilityScript, ExportsMayLeaveHiddenFacesOut) {
    Run(R"({"hide": {"group": "left"}}, {"export": {"file": "all.obj"}},
           {"export": {"file": "part.obj", "hidden": false}},
           {"export": {"file": "same.obj", "hidden": true}})");
    const PolygonMesh all = ReadMeshFile(folder.Path("out/all.obj"));
    const PolygonMesh part = ReadMeshFile(folder.Path("out/part.obj"));
    EXPECT_EQ(all.faceSizes.size(), 192u);
    EXPECT_EQ(part.faceSizes.size(), 128u);
    EXPECT_EQ(all.positions.size(), 17u * 9u + 81u);
    EXPECT_EQ(part.positions.size(), 81u + 81u);
    EXPECT_EQ(ReadMeshFile(folder.Path("out/same.obj")).faceVertices, all.faceVertices);
    EXPECT_THAT(
        ErrorOf(R"({"invertVisibility": true}, {"export": {"file": "no.obj", "hidden": false}})"),
        HasSubstr("/steps/1/export: every face is hidden"));
}

TEST_F(VisibilityScript, ErrorsNameTheField) {
    EXPECT_THAT(ErrorOf(R"({"hide": {"group": "lef"}})"),
                HasSubstr("/steps/0/hide/group: the mesh has no group \"lef\"; there are left"));
    EXPECT_THAT(ErrorOf(R"({"hide": {"material": "x"}})"), HasSubstr("no material \"x\""));
    EXPECT_THAT(ErrorOf(R"({"hide": {}})"), HasSubstr("/steps/0/hide: needs one of \"mask\""));
    EXPECT_THAT(ErrorOf(R"({"isolate": {"mask": 1, "group": "left"}})"),
                HasSubstr("\"mask\" and \"group\" cannot be combined"));
    EXPECT_THAT(ErrorOf(R"({"show": {"component": {}}})"),
                HasSubstr("/steps/0/show/component: needs one of"));
    EXPECT_THAT(ErrorOf(R"({"show": {"faces": [[192, 1]]}})"), HasSubstr("there is no face 192"));
    EXPECT_THAT(ErrorOf(R"({"show": {"faces": [[190, 3]]}})"),
                HasSubstr("/steps/0/show/faces/0/1: there are only 2 faces"));
    EXPECT_THAT(ErrorOf(R"({"invertVisibility": true},
                           {"hide": {"component": {"pointer": [200, 200]}}})"),
                HasSubstr("there is no visible surface"));
    EXPECT_THAT(ErrorOf(R"({"tool": "Sculpt", "set": {"radius": 0.1}},
                           {"stroke": {"surface": [[0, 0, 0]], "open": true}},
                           {"hide": {"group": "left"}})"),
                HasSubstr("/steps/2/hide: a stroke is open"));
    ScriptRunner check(
        Script(R"({"hide": {"mask": 1, "group": "left"}}, {"show": {"component": {}}})"),
        folder.Path("out"),
        {});
    EXPECT_THAT(check.Check(),
                ElementsAre(HasSubstr("/steps/0/hide"), HasSubstr("/steps/1/show/component")));
}

TEST_F(VisibilityScript, ScenesStoreHiddenFacesAndTheirMasks) {
    const std::string steps =
        R"({"mask": {"min": [-2, -2, -1], "max": [0.2, 2, 1], "amount": 0.3}},
           {"hide": {"faces": [[0, 20], [70, 9]]}}, {"level": 1})";
    const auto document = Run(steps);
    const LevelGeometry& geometry = document->Geometry();
    EXPECT_EQ(geometry.BoundIndex(), 1u);
    EXPECT_EQ(geometry.Level(3)->HiddenFaceCount(), 29u);
    EXPECT_EQ(geometry.Level(1)->HiddenFaceCount(), 1u);
    const uint8_t amount = FreezeAmountOf(0.3f);
    for (uint32_t v = 0; v < geometry.Level(3)->VertexCount(); ++v) {
        const bool isInside = geometry.Level(3)->Position(v).x <= 0.2f;
        ASSERT_EQ(geometry.Level(3)->Freeze(v), isInside ? amount : 0) << v;
    }
    // A reopened document continues like one that was never closed.
    document->Save(folder.Path("again.trovik"));
    const auto again = Document::OpenScene(folder.Path("again.trovik"));
    EXPECT_EQ(ReadAll(folder.Path("again.trovik")), ReadAll(folder.Path("out/out.trovik")));
    ASSERT_TRUE(again->ChangeVisibility(VisibilityChange::ShowAll));
    ExpectConsistent(again->Geometry());
    ASSERT_TRUE(again->Undo());
    EXPECT_EQ(again->Geometry().Level(3)->HiddenFaceCount(), 29u);
}

TEST_F(VisibilityScript, HighestLevelOfASceneDecidesInconsistencies) {
    const auto document = Run(R"({"hide": {"group": "left"}})");
    // Simulates a scene from a program that subdivides without support for hidden faces.
    LevelMesh& top = *document->Geometry().Level(3);
    for (uint32_t face = 0; face < 32; ++face) top.faceFlags[face] = faceIsLive;
    document->Save(folder.Path("other.trovik"));
    const auto read = Document::OpenScene(folder.Path("other.trovik"));
    ExpectConsistent(read->Geometry());
    EXPECT_EQ(read->Geometry().Level(3)->HiddenFaceCount(), 32u);
    EXPECT_EQ(read->Geometry().Level(0)->HiddenFaceCount(), 0u);
}

TEST_F(VisibilityScript, HidingIsRefusedDuringAStrokeAndNeedsNoRebuildForPicking) {
    const auto document = Run(R"({"tool": "Sculpt"})");
    const FaceChoice left = FacesOfGroup(document->Geometry(), 0);
    const PatchTree* tree = &document->Tree();
    const Ray ray{{-0.5f, 0.1f, 1.0f}, {0.0f, 0.0f, -1.0f}};
    ASSERT_TRUE(document->Tree().Pick(ray));
    ASSERT_TRUE(document->ChangeVisibility(VisibilityChange::Hide, left));
    EXPECT_FALSE(document->ChangeVisibility(VisibilityChange::Hide, left));
    EXPECT_EQ(tree, &document->Tree());
    EXPECT_FALSE(document->Tree().Pick(ray));
    ASSERT_TRUE(document->Undo());
    EXPECT_TRUE(document->Tree().Pick(ray));
    ASSERT_TRUE(document->BindLevel(0));
    ASSERT_TRUE(document->ChangeVisibility(VisibilityChange::Hide, {1, 0, 0}));
    EXPECT_FALSE(document->Tree().Pick(ray));
    document->Loop().Begin(BrushOperation::ModifierNone);
    EXPECT_THAT([&] { document->ChangeVisibility(VisibilityChange::ShowAll); },
                testing::ThrowsMessage<HostError>(HasSubstr("cannot hide faces while a stroke")));
    document->Loop().End();
    EXPECT_EQ(document->Geometry().Level(0)->HiddenFaceCount(), 1u);
}

}  // namespace
}  // namespace trovik::test
