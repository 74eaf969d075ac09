// SPDX-License-Identifier: Apache-2.0

/// \file Tests that a stroke drawn live from pen samples has the same result, bit for bit, as a
/// script with the same samples, for every tool of the plug-in and for the freeze brush.
#include "framework/document/DocumentStroke.h"
#include "framework/errors/HostError.h"
#include "framework/freeze/FreezeBlend.h"
#include "framework/multires/Steps.h"
#include "framework/script/PenStream.h"
#include "framework/script/ScriptRunner.h"
#include "tests/SourceFolder.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace trovik::test {
namespace {

class DocumentStrokeTest : public testing::Test {
protected:
    DocumentStrokeTest() {
        folder.Fill("quad.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n");
    }

    /// Returns a runner that owns a square of 32 x 32 quads with these settings.
    std::unique_ptr<ScriptRunner> Work(const std::string& tool,
                                       const std::string& settings = "{}") {
        // The script is stored in a member, because its steps are used after the call.
        script = nlohmann::json::parse(R"({"mesh": "quad.obj", "levels": 5, "seed": 3,
            "camera": {"eye": [0, 0, 10], "target": [0, 0, 0], "fieldOfView": 17.061518,
                       "width": 800, "height": 600}, "steps": []})");
        auto runner = std::make_unique<ScriptRunner>(
            folder.Path("script.json"), folder.Path("out"), ScriptProgress{});
        runner->Open(script);
        Step(*runner, R"({"tool": ")" + tool + R"(", "set": {"radius": 0.2, "strength": 30}})");
        Step(*runner, R"({"set": )" + settings + "}");
        return runner;
    }
    void Step(ScriptRunner& runner, const std::string& step) {
        steps.push_back(std::make_unique<nlohmann::json>(nlohmann::json::parse(step)));
        runner.Do(*steps.back(), steps.size());
    }
    static std::string FileOf(const std::string& name) {
        return SourceFolder() + "/tests/data/pointer/" + name + ".json";
    }
    static std::string Stroke(const std::string& name, const std::string& more = "") {
        return R"({"stroke": {"pen": ")" + FileOf(name) + "\"" + more + "}}";
    }

    /// Returns everything that a stroke changes, as bytes: positions, normals and mask weights.
    static std::string BitsOf(Document& document) {
        const LevelMesh& level = *document.Geometry().Bound();
        std::string bits(reinterpret_cast<const char*>(level.vertexNormals.array),
                         level.VertexCount() * sizeof(PackedNormal));
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            const Vector place = level.Position(v);
            bits.append(reinterpret_cast<const char*>(&place), sizeof place);
            bits.push_back(static_cast<char>(level.Freeze(v)));
        }
        return bits;
    }

    static void Draw(DocumentStroke& stroke, const std::string& name, std::size_t piece) {
        const auto samples = ReadPenStream(FileOf(name));
        for (std::size_t i = 0; i < samples.size(); i += piece) {
            const auto from = samples.begin() + static_cast<std::ptrdiff_t>(i);
            const std::size_t count = std::min(piece, samples.size() - i);
            stroke.Add(std::vector<PathSample>(from, from + static_cast<std::ptrdiff_t>(count)));
        }
    }

    TemporaryFolder folder;
    nlohmann::json script;
    std::vector<std::unique_ptr<nlohmann::json>> steps;
};

constexpr const char* settingsOfPens[] = {
    "{}",
    R"({"smoothing": 0.05, "stabiliser": 0.03, "randomSize": 0.5})",
    R"({"smoothing": false, "airbrush": 40, "sizeCurve": [[0, 0.3], [1, 1]]})"};

TEST_F(DocumentStrokeTest, InteractiveStrokesHaveLessLag) {
    const auto samples = ReadPenStream(FileOf("clean"));
    const std::vector<PathSample> firstHalf(
        samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2));
    const auto dabsOf = [&](const PenStrokeOptions& options) {
        auto work = Work("Sculpt");
        DocumentStroke stroke(work->GetDocument(), options);
        stroke.Add(firstHalf);
        return stroke.Count();
    };
    EXPECT_GT(dabsOf(PenStrokeOptions::Interactive()), dabsOf({}));

    auto work = Work("Sculpt");
    DocumentStroke byDefault(work->GetDocument());
    byDefault.Add(firstHalf);
    EXPECT_EQ(byDefault.Count(), dabsOf(PenStrokeOptions::Interactive()));
}

TEST_F(DocumentStrokeTest, ScriptCanSelectTheDefaultsOfLiveStrokes) {
    auto recorded = Work("Sculpt");
    Step(*recorded, Stroke("everything", R"(, "path": {"interactive": true})"));
    auto live = Work("Sculpt");
    DocumentStroke stroke(live->GetDocument());
    Draw(stroke, "everything", 3);
    stroke.Release();
    EXPECT_TRUE(BitsOf(live->GetDocument()) == BitsOf(recorded->GetDocument()));
    auto plain = Work("Sculpt");
    Step(*plain, Stroke("everything"));
    EXPECT_FALSE(BitsOf(plain->GetDocument()) == BitsOf(recorded->GetDocument()));
}

TEST_F(DocumentStrokeTest, IsBitIdenticalToTheScript) {
    for (const char* tool : {"Sculpt", "Smooth", "Knife", "Flatten", "Pinch", "Freeze"}) {
        for (const char* settings : settingsOfPens) {
            for (const char* name : {"clean", "everything"}) {
                SCOPED_TRACE(std::string(tool) + settings + name);
                auto recorded = Work(tool, settings);
                const std::string untouched = BitsOf(recorded->GetDocument());
                Step(*recorded, Stroke(name));
                Step(*recorded, Stroke(name, R"(, "modifier": "invert")"));
                Step(*recorded, Stroke(name, R"(, "modifier": "smooth")"));
                const std::string expected = BitsOf(recorded->GetDocument());
                ASSERT_TRUE(expected != untouched || std::string(tool) == "Smooth" ||
                            std::string(tool) == "Flatten");
                auto live = Work(tool, settings);
                {
                    DocumentStroke stroke(live->GetDocument(), PenStrokeOptions());
                    Draw(stroke, name, 1);
                    stroke.Release();
                    EXPECT_TRUE(stroke.IsOver());
                }
                for (const auto modifier :
                     {BrushOperation::ModifierInvert, BrushOperation::ModifierSmooth}) {
                    PenStrokeOptions options;
                    options.modifier = modifier;
                    DocumentStroke modified(live->GetDocument(), options);
                    Draw(modified, name, 7);
                    modified.Release();
                }
                EXPECT_TRUE(BitsOf(live->GetDocument()) == expected);
                EXPECT_EQ(live->GetDocument().Settings().strokesBegun, 3u);
            }
        }
    }
}

TEST_F(DocumentStrokeTest, AppliesPathShapesLikeAScript) {
    const std::string path =
        R"(, "seed": 5, "path": {"curve": true, "smoothing": 12, "filter": false,
        "snap": {"curve": [[250, 200], [420, 330], [600, 250]], "distance": 60}})";
    auto recorded = Work("Sculpt");
    Step(*recorded, Stroke("clean", path));
    auto live = Work("Sculpt");
    PenStrokeOptions options;
    options.seed = 5;
    options.isFiltered = false;
    options.shape.curve = true;
    options.shape.snapTo = {{250, 200, 0}, {420, 330, 0}, {600, 250, 0}};
    options.shape.snapDistance = 60.0f;
    options.smoothing = 12.0f;
    DocumentStroke stroke(live->GetDocument(), options);
    Draw(stroke, "clean", 2);
    stroke.Release();
    EXPECT_TRUE(BitsOf(live->GetDocument()) == BitsOf(recorded->GetDocument()));
}

TEST_F(DocumentStrokeTest, DabsAreVisibleWhileItIsDrawn) {
    auto work = Work("Sculpt", R"({"smoothing": false})");
    DocumentStroke stroke(work->GetDocument(), PenStrokeOptions());
    const auto samples = ReadPenStream(FileOf("clean"));
    unsigned before = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        stroke.Add(samples[i]);
        EXPECT_GE(stroke.Count(), before);
        before = stroke.Count();
        if (i == samples.size() / 2) {
            EXPECT_GT(before, 15u);
        }
    }
    EXPECT_GT(before, 40u);
    EXPECT_EQ(stroke.Preview().size(), samples.size());
    stroke.Release();
    EXPECT_LT(stroke.Count(), before + 10);
}

TEST_F(DocumentStrokeTest, AbandonedStrokeRestoresEverything) {
    for (const char* tool : {"Sculpt", "Wax", "Freeze"}) {
        SCOPED_TRACE(tool);
        auto work = Work(tool);
        Document& document = work->GetDocument();
        Step(*work, Stroke("clean"));
        const std::string before = BitsOf(document);
        const std::size_t position = document.Geometry().History().Position();
        {
            DocumentStroke stroke(document, PenStrokeOptions());
            Draw(stroke, "late", 5);
            EXPECT_FALSE(BitsOf(document) == before);
            stroke.Abandon();
            EXPECT_TRUE(stroke.IsOver());
            stroke.Release();
        }
        EXPECT_FALSE(document.Loop().IsActive());
        EXPECT_TRUE(BitsOf(document) == before);
        EXPECT_EQ(document.Geometry().History().Position(), position);
        // The next stroke is unaffected, except for its random numbers.
        PenStrokeOptions options;
        options.seed = 9;
        DocumentStroke next(document, options);
        Draw(next, "late", 5);
        next.Release();
        const std::string after = BitsOf(document);
        EXPECT_EQ(document.Geometry().History().Position(), position + 1);
        ASSERT_TRUE(document.Undo());
        EXPECT_TRUE(BitsOf(document) == before);
        auto other = Work(tool);
        Step(*other, Stroke("clean"));
        Step(*other, Stroke("late", R"(, "seed": 9)"));
        EXPECT_TRUE(BitsOf(other->GetDocument()) == after);
    }
}

TEST_F(DocumentStrokeTest, ReleasedStrokeCanBeAbandonedUntilAllDabsAreApplied) {
    auto work = Work("Sculpt");
    Document& document = work->GetDocument();
    const std::string before = BitsOf(document);
    const auto samples = ReadPenStream(FileOf("everything"));
    DocumentStroke stroke(document);
    stroke.Add(samples, LiveStroke::Budget::zero());
    ASSERT_TRUE(stroke.Release(LiveStroke::Budget::zero()));
    ASSERT_TRUE(stroke.Continue(LiveStroke::Budget::zero()));
    EXPECT_FALSE(stroke.IsOver());
    EXPECT_TRUE(document.IsStrokeOpen());
    EXPECT_NE(BitsOf(document), before);
    stroke.Abandon();
    EXPECT_FALSE(document.IsStrokeOpen());
    EXPECT_EQ(BitsOf(document), before);
    EXPECT_FALSE(document.Undo());
}

TEST_F(DocumentStrokeTest, ReleaseInTurnsEqualsReleaseAtOnce) {
    const auto samples = ReadPenStream(FileOf("everything"));
    const auto draw = [&](bool inTurns) {
        auto work = Work("Sculpt", settingsOfPens[1]);
        DocumentStroke stroke(work->GetDocument());
        stroke.Add(samples, LiveStroke::Budget::zero());
        unsigned turns = 0;
        if (inTurns) {
            for (bool remain = stroke.Release(LiveStroke::Budget::zero()); remain; ++turns)
                remain = stroke.Continue(LiveStroke::Budget::zero());
            EXPECT_GT(turns, 3u);
        } else {
            stroke.Release();
        }
        EXPECT_TRUE(stroke.IsOver());
        EXPECT_EQ(work->GetDocument().HistoryPosition(), 1u);
        return BitsOf(work->GetDocument());
    };
    EXPECT_EQ(draw(true), draw(false));
}

TEST_F(DocumentStrokeTest, DestroyedStrokeIsReleased) {
    auto work = Work("Sculpt");
    {
        DocumentStroke stroke(work->GetDocument(), PenStrokeOptions());
        Draw(stroke, "clean", 9);
    }
    EXPECT_FALSE(work->GetDocument().Loop().IsActive());
    auto recorded = Work("Sculpt");
    Step(*recorded, Stroke("clean"));
    EXPECT_TRUE(BitsOf(work->GetDocument()) == BitsOf(recorded->GetDocument()));
}

TEST_F(DocumentStrokeTest, OnlyOneStrokeIsDrawnAtATime) {
    auto work = Work("Sculpt");
    DocumentStroke stroke(work->GetDocument(), PenStrokeOptions());
    EXPECT_EQ(MessageOf<HostError>([&] { DocumentStroke(work->GetDocument()); }),
              "cannot begin another stroke while a stroke is open; release or abandon it first");
    EXPECT_THROW(work->GetDocument().Loop().Begin(BrushOperation::ModifierNone), HostError);
    EXPECT_FALSE(stroke.IsOver());
    stroke.Release();
    EXPECT_EQ(work->GetDocument().Settings().strokesBegun, 1u);
}

/// An operation that a document rejects while a stroke is open, and its name in the error message.
struct Refused {
    const char* work;
    std::function<void(Document&)> run;
};

std::vector<Refused> AllRefused(const std::string& scene) {
    const auto push = [](Document& document) {
        const MatrixTransform before = document.Geometry().Transform();
        document.Geometry().Transform().Set({2, 2, 2}, {}, {});
        document.Push(MakeTransformStep(document.Geometry(), before));
    };
    return {
        {"undo", [](Document& s) { s.Undo(); }},
        {"redo", [](Document& s) { s.Redo(); }},
        {"change the tool", [](Document& s) { s.SelectTool("Wax"); }},
        {"change the tool", [](Document& s) { s.SelectTool("Freeze"); }},
        {"change the level", [](Document& s) { s.BindLevel(2); }},
        {"subdivide", [](Document& s) { s.Subdivide(); }},
        {"unsubdivide", [](Document& s) { s.Unsubdivide(); }},
        {"delete levels", [](Document& s) { s.DeleteLevels(true); }},
        {"apply the level to the base", [](Document& s) { s.ApplyToBase(); }},
        {"reset the mesh", [](Document& s) { s.Reset(); }},
        {"change the mesh", push},
        {"change the mesh", [](Document& s) { s.RefreshSurface(); }},
        {"change the mirrors", [](Document& s) { s.SetMirrors({{0}}); }},
        {"change the mirrors", [](Document& s) { s.SetTopologicalMirror(); }},
        {"make the mesh symmetric",
         [](Document& s) { s.MakeSymmetric(0, SymmetrySide::Positive); }},
        {"change the renderers", [](Document& s) { s.SetRenderers({1.0f}); }},
        {"add a layer", [](Document& s) { s.AddLayer("new"); }},
        {"change the active layer", [](Document& s) { s.SelectLayer(""); }},
        {"change the layer", [](Document& s) { s.SetLayerStrength(0.5f); }},
        {"save the scene", [scene](Document& s) { s.Save(scene); }},
    };
}

TEST_F(DocumentStrokeTest, NothingChangesTheMeshUnderAnOpenStroke) {
    for (const char* tool : {"Sculpt", "Freeze"}) {
        const auto prepare = [&](ScriptRunner& work) {
            Step(work, R"({"layer": {"add": "layer"}})");
            Step(work, Stroke("clean"));
            Step(work, Stroke("late"));
            Step(work, R"({"undo": 1})");
        };
        auto expected = Work(tool);
        prepare(*expected);
        Step(*expected, Stroke("clean", R"(, "seed": 5)"));
        auto work = Work(tool);
        prepare(*work);
        Document& document = work->GetDocument();
        document.SetRenderers({1.0f});
        const std::size_t position = document.Geometry().History().Position();
        PenStrokeOptions options;
        options.seed = 5;
        DocumentStroke stroke(document, options);
        const auto samples = ReadPenStream(FileOf("clean"));
        const std::string scene = folder.Path("open.trovik");
        const auto refused = AllRefused(scene);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            stroke.Add(samples[i]);
            const Refused& one = refused[i % refused.size()];
            SCOPED_TRACE(std::string(tool) + ": " + one.work);
            EXPECT_THAT(MessageOf<HostError>([&] { one.run(document); }),
                        testing::EndsWith(std::string("cannot ") + one.work +
                                          " while a stroke is open; release or abandon it first"));
        }
        ASSERT_GT(samples.size(), refused.size());
        if (document.IsFreezing()) {
            const std::vector<uint8_t> all(document.Geometry().Bound()->VertexCount(), 127);
            EXPECT_THROW(document.Freeze(all, FreezeMode::Replace), HostError);
        }
        EXPECT_FALSE(stroke.IsOver());
        stroke.Release();
        EXPECT_FALSE(std::filesystem::exists(scene));
        EXPECT_TRUE(BitsOf(document) == BitsOf(expected->GetDocument()));
        EXPECT_EQ(document.Geometry().History().Position(), position + 1);
        EXPECT_EQ(document.Brush().ActiveConfiguration()->Name().toStdString(), tool);
        ASSERT_TRUE(document.Undo());
        ASSERT_TRUE(document.Undo());
        ASSERT_TRUE(document.Redo());
    }
}

TEST_F(DocumentStrokeTest, StrokeWithoutEffectOnTheMainSideDoesNotJoinTheStepBefore) {
    const std::string stroke = R"({"stroke": {"surface": [[0.3, 0.4, 0], [0.6, 0.4, 0]]}})";
    auto work = Work("Sculpt");
    Document& document = work->GetDocument();
    Step(*work, R"({"mirror": ["x", "y"]})");
    Step(*work, stroke);
    Step(*work, R"({"mask": {"min": [-1, 0, -1], "max": [1, 1, 1]}})");
    const std::string masked = BitsOf(document);
    const std::size_t position = document.HistoryPosition();
    // This tool uses one plane for the whole stroke, so two of its four sides are applied later.
    Step(*work,
         R"({"tool": "Flatten", "set": {"radius": 0.3, "strength": 90, "updatePlane": false}})");
    Step(*work, stroke);
    ASSERT_EQ(document.HistoryPosition(), position + 1);
    ASSERT_FALSE(BitsOf(document) == masked);
    ASSERT_TRUE(document.Undo());
    EXPECT_EQ(document.HistoryPosition(), position);
    EXPECT_TRUE(BitsOf(document) == masked);
}

// Normals after a filter differ from those that a brush computes for the same positions.
TEST_F(DocumentStrokeTest, StrokesUnderALockedOrHiddenLayerChangeNothing) {
    for (const char* tool :
         {"Sculpt", "Smooth", "Flatten", "Amplify", "Wax", "Grab", "SnakeHook"}) {
        for (const char* state : {R"("writable": false)", R"("visible": false)"}) {
            for (const char* mirrors : {R"([])", R"(["x", "y"])"}) {
                SCOPED_TRACE(std::string(tool) + state + mirrors);
                auto work = Work(tool);
                Document& document = work->GetDocument();
                Step(*work, R"({"tool": "Sculpt"})");
                Step(*work, Stroke("clean"));
                Step(*work, R"({"filter": {"kind": "relax"}})");
                Step(*work, std::string(R"({"tool": ")") + tool + "\"}");
                Step(*work, std::string(R"({"mirror": )") + mirrors + "}");
                Step(*work, std::string(R"({"layer": {"add": "layer", )") + state + "}}");
                const std::string before = BitsOf(document);
                const std::size_t position = document.HistoryPosition();
                Step(*work, Stroke("everything"));
                EXPECT_TRUE(BitsOf(document) == before);
                {
                    DocumentStroke stroke(document);
                    Draw(stroke, "everything", 7);
                    stroke.Abandon();
                }
                EXPECT_TRUE(BitsOf(document) == before);
                if (std::string(tool) != "Grab" && std::string(tool) != "SnakeHook")
                    Step(*work, R"({"stroke": {"wholeMesh": {"strength": 1}}})");
                EXPECT_TRUE(BitsOf(document) == before);
                EXPECT_EQ(document.HistoryPosition(), position);
                Step(*work, R"({"layer": {"writable": true, "visible": true}})");
                Step(*work, Stroke("everything"));
                EXPECT_FALSE(BitsOf(document) == before);
            }
        }
    }
}

TEST_F(DocumentStrokeTest, StrokeEndedByTheLoopIsClosed) {
    auto work = Work("Sculpt");
    Document& document = work->GetDocument();
    DocumentStroke stroke(document, PenStrokeOptions());
    Draw(stroke, "clean", 9);
    document.Loop().End();
    EXPECT_TRUE(stroke.IsOver());
    DocumentStroke next(document, PenStrokeOptions());
    const std::string before = BitsOf(document);
    Draw(stroke, "late", 9);
    stroke.Release();
    EXPECT_TRUE(BitsOf(document) == before);
    EXPECT_FALSE(next.IsOver()) << "another stroke is open";
    next.Release();
}

TEST_F(DocumentStrokeTest, RadiusAndSpacingAreCheckedBeforeAStrokeBegins) {
    auto work = Work("Sculpt");
    Document& document = work->GetDocument();
    document.Settings().spacing = 1e-6f;
    EXPECT_THROW(DocumentStroke{document}, HostError);
    document.Settings().spacing = 0.25f;
    document.Settings().radius = 0.0f;
    EXPECT_EQ(MessageOf<HostError>([&] { DocumentStroke{document}; }),
              "the radius is 0; it must be above 0");
    EXPECT_FALSE(document.Loop().IsActive());
    EXPECT_EQ(document.Settings().strokesBegun, 0u);
}

// A stroke borrows the falloff samples when it begins.
TEST_F(DocumentStrokeTest, NewFalloffTakesEffectInTheNextStroke) {
    std::string many = "1";
    for (int i = 1; i < 40000; ++i) many += i % 3 == 0 ? ", 0.25" : ", 1";
    const std::string custom = R"({"set": {"falloff": [1, 0.9, 0.3, 0]}})";
    const std::string first =
        R"({"stroke": {"open": true, "seed": 3, "surface": [[0.1, 0, 0], [0.4, 0.1, 0]]}})";
    const std::string second =
        R"({"stroke": {"continue": true, "surface": [[0.45, 0.1, 0], [0.6, 0.5, 0]]}})";
    const std::string changes[] = {R"("constant")",
                                   R"("sharp")",
                                   "3",
                                   "[0.5, 0.5]",
                                   "[0, 1, 0, 1, 0, 1, 0, 1, 0]",
                                   "[" + many + "]"};
    for (const char* tool : {"Sculpt", "Flatten", "Freeze"}) {
        for (const bool isMirrored : {false, true}) {
            for (const bool isCustom : {false, true}) {
                const auto begin = [&] {
                    auto work = Work(
                        tool, std::string(tool) == "Flatten" ? R"({"updatePlane": false})" : "{}");
                    Step(*work, R"({"stroke": {"surface": [[0, 0, 0], [0.3, 0.4, 0]]}})");
                    if (isMirrored) Step(*work, R"({"mirror": {"radial": 5, "axis": "z"}})");
                    if (isCustom) Step(*work, custom);
                    Step(*work, first);
                    return work;
                };
                auto plain = begin();
                Step(*plain, second);
                const std::string expected = BitsOf(plain->GetDocument());
                for (const std::string& change : changes) {
                    SCOPED_TRACE(tool + change.substr(0, 40) + (isMirrored ? " mirrored" : "") +
                                 (isCustom ? " custom" : ""));
                    auto work = begin();
                    // The falloff is set twice, so that freed memory would be reused.
                    Step(*work, R"({"set": {"falloff": [0.3, 0.7, 0.1, 0.2]}})");
                    Step(*work, R"({"set": {"falloff": )" + change + "}}");
                    Step(*work, second);
                    EXPECT_TRUE(BitsOf(work->GetDocument()) == expected);
                    Step(*work, first);
                    Step(*work, second);
                    auto other = begin();
                    Step(*other, second);
                    Step(*other, R"({"set": {"falloff": )" + change + "}}");
                    Step(*other, first);
                    Step(*other, second);
                    EXPECT_TRUE(BitsOf(work->GetDocument()) == BitsOf(other->GetDocument()));
                }
            }
        }
    }
}

TEST_F(DocumentStrokeTest, ErrorEndsTheStroke) {
    auto work = Work("Sculpt", R"({"smoothing": false})");
    PenStrokeOptions options;
    options.isFiltered = false;
    DocumentStroke stroke(work->GetDocument(), options);
    stroke.Add({PathSample({300, 300, 0}), PathSample({350, 300, 0})});
    EXPECT_GT(stroke.Count(), 2u);
    EXPECT_THROW(stroke.Add(PathSample({1e30f, 300, 0})), HostError);
    EXPECT_TRUE(stroke.IsOver());
    EXPECT_FALSE(work->GetDocument().Loop().IsActive());
}

}  // namespace
}  // namespace trovik::test
