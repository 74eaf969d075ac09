// SPDX-License-Identifier: Apache-2.0

/// \file
/// A stroke that is drawn while its pen reports gives the bits of the same samples in a script,
/// with every tool of the plug-in and with the freeze brush.
#include "framework/errors/HostError.h"
#include "framework/freeze/FreezeBlend.h"
#include "framework/multires/Steps.h"
#include "framework/script/PenStream.h"
#include "framework/script/ScriptRunner.h"
#include "framework/script/SessionStroke.h"
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

class SessionStrokeTest : public testing::Test {
protected:
    SessionStrokeTest() {
        folder.Fill("quad.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n");
    }

    /// A square of 32 x 32 quads under these settings, and the runner that holds it.
    std::unique_ptr<ScriptRunner> Work(const std::string& tool,
                                       const std::string& settings = "{}") {
        // Kept: steps outlive the call.
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

    /// All that a stroke leaves: places, normals and freeze amounts.
    static std::string BitsOf(SculptSession& session) {
        const LevelMesh& level = *session.Geometry().Bound();
        std::string bits(reinterpret_cast<const char*>(level.vertexNormals.array),
                         level.VertexCount() * sizeof(PackedNormal));
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            const Vector place = level.Position(v);
            bits.append(reinterpret_cast<const char*>(&place), sizeof place);
            bits.push_back(static_cast<char>(level.Freeze(v)));
        }
        return bits;
    }

    static void Draw(SessionStroke& stroke, const std::string& name, std::size_t piece) {
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
    R"({"smoothing": 0.05, "steady": 0.03, "randomSize": 0.5})",
    R"({"smoothing": false, "airbrush": 40, "sizeCurve": [[0, 0.3], [1, 1]]})"};

TEST_F(SessionStrokeTest, InteractiveStrokesTrailThePenByLess) {
    const auto samples = ReadPenStream(FileOf("clean"));
    const std::vector<PathSample> firstHalf(
        samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2));
    const auto dabsOf = [&](const PenStrokeOptions& options) {
        auto work = Work("Sculpt");
        SessionStroke stroke(work->Session(), options);
        stroke.Add(firstHalf);
        return stroke.Count();
    };
    const unsigned asRecorded = dabsOf({});
    PenStrokeOptions inOrder;
    inOrder.limits.lateTime = 0.0;
    EXPECT_GT(dabsOf(inOrder), asRecorded);
    EXPECT_GT(dabsOf(PenStrokeOptions::Interactive()), dabsOf(inOrder));

    auto work = Work("Sculpt");
    SessionStroke byDefault(work->Session());
    byDefault.Add(firstHalf);
    EXPECT_EQ(byDefault.Count(), dabsOf(PenStrokeOptions::Interactive()));
}

TEST_F(SessionStrokeTest, GivesTheBitsOfTheScript) {
    for (const char* tool : {"Sculpt", "Smooth", "Knife", "Flatten", "Pinch", "Freeze"}) {
        for (const char* settings : settingsOfPens) {
            for (const char* name : {"clean", "everything"}) {
                SCOPED_TRACE(std::string(tool) + settings + name);
                auto recorded = Work(tool, settings);
                const std::string untouched = BitsOf(recorded->Session());
                Step(*recorded, Stroke(name));
                Step(*recorded, Stroke(name, R"(, "modifier": "invert")"));
                const std::string expected = BitsOf(recorded->Session());
                ASSERT_TRUE(expected != untouched || std::string(tool) == "Smooth" ||
                            std::string(tool) == "Flatten");
                auto live = Work(tool, settings);
                {
                    SessionStroke stroke(live->Session(), PenStrokeOptions());
                    Draw(stroke, name, 1);
                    stroke.Release();
                    EXPECT_TRUE(stroke.IsOver());
                }
                PenStrokeOptions options;
                options.modifier = BrushOperation::ModifierInvert;
                SessionStroke second(live->Session(), options);
                Draw(second, name, 7);
                second.Release();
                EXPECT_TRUE(BitsOf(live->Session()) == expected);
                EXPECT_EQ(live->Session().Settings().strokesBegun, 2u);
            }
        }
    }
}

TEST_F(SessionStrokeTest, TakesShapesAsAScriptDoes) {
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
    SessionStroke stroke(live->Session(), options);
    Draw(stroke, "clean", 2);
    stroke.Release();
    EXPECT_TRUE(BitsOf(live->Session()) == BitsOf(recorded->Session()));
}

TEST_F(SessionStrokeTest, ShowsDabsWhileItIsDrawn) {
    auto work = Work("Sculpt", R"({"smoothing": false})");
    SessionStroke stroke(work->Session(), PenStrokeOptions());
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

TEST_F(SessionStrokeTest, AnAbandonedStrokeLeavesNoTrace) {
    for (const char* tool : {"Sculpt", "Wax", "Freeze"}) {
        SCOPED_TRACE(tool);
        auto work = Work(tool);
        SculptSession& session = work->Session();
        Step(*work, Stroke("clean"));
        const std::string before = BitsOf(session);
        const std::size_t position = session.Geometry().History().Position();
        {
            SessionStroke stroke(session, PenStrokeOptions());
            Draw(stroke, "late", 5);
            EXPECT_FALSE(BitsOf(session) == before);
            stroke.Abandon();
            EXPECT_TRUE(stroke.IsOver());
            stroke.Release();
        }
        EXPECT_FALSE(session.Loop().IsActive());
        EXPECT_TRUE(BitsOf(session) == before);
        EXPECT_EQ(session.Geometry().History().Position(), position);
        // What is drawn next is what it would have been, but for chance.
        PenStrokeOptions options;
        options.seed = 9;
        SessionStroke next(session, options);
        Draw(next, "late", 5);
        next.Release();
        const std::string after = BitsOf(session);
        EXPECT_EQ(session.Geometry().History().Position(), position + 1);
        ASSERT_TRUE(session.Undo());
        EXPECT_TRUE(BitsOf(session) == before);
        auto other = Work(tool);
        Step(*other, Stroke("clean"));
        Step(*other, Stroke("late", R"(, "seed": 9)"));
        EXPECT_TRUE(BitsOf(other->Session()) == after);
    }
}

TEST_F(SessionStrokeTest, AStrokeThatIsLeftIsReleased) {
    auto work = Work("Sculpt");
    {
        SessionStroke stroke(work->Session(), PenStrokeOptions());
        Draw(stroke, "clean", 9);
    }
    EXPECT_FALSE(work->Session().Loop().IsActive());
    auto recorded = Work("Sculpt");
    Step(*recorded, Stroke("clean"));
    EXPECT_TRUE(BitsOf(work->Session()) == BitsOf(recorded->Session()));
}

TEST_F(SessionStrokeTest, OnlyOneIsDrawnAtATime) {
    auto work = Work("Sculpt");
    SessionStroke stroke(work->Session(), PenStrokeOptions());
    EXPECT_EQ(MessageOf<HostError>([&] { SessionStroke(work->Session()); }),
              "cannot begin another stroke while a stroke is open; release or abandon it first");
    EXPECT_THROW(work->Session().Loop().Begin(BrushOperation::ModifierNone), HostError);
    EXPECT_FALSE(stroke.IsOver());
    stroke.Release();
    EXPECT_EQ(work->Session().Settings().strokesBegun, 1u);
}

/// What a session refuses while a stroke is open, and the words for it.
struct Refused {
    const char* work;
    std::function<void(SculptSession&)> run;
};

std::vector<Refused> AllRefused(const std::string& scene) {
    const auto push = [](SculptSession& session) {
        const Placement before = session.Geometry().Place();
        session.Geometry().Place().Set({2, 2, 2}, {}, {});
        session.Push(MakeTransformStep(session.Geometry(), before));
    };
    return {
        {"undo", [](SculptSession& s) { s.Undo(); }},
        {"redo", [](SculptSession& s) { s.Redo(); }},
        {"change the tool", [](SculptSession& s) { s.SelectTool("Wax"); }},
        {"change the tool", [](SculptSession& s) { s.SelectTool("Freeze"); }},
        {"change the level", [](SculptSession& s) { s.BindLevel(2); }},
        {"subdivide", [](SculptSession& s) { s.Subdivide(); }},
        {"unsubdivide", [](SculptSession& s) { s.Unsubdivide(); }},
        {"delete levels", [](SculptSession& s) { s.DeleteLevels(true); }},
        {"apply the level to the base", [](SculptSession& s) { s.ApplyToBase(); }},
        {"reset the mesh", [](SculptSession& s) { s.Reset(); }},
        {"change the mesh", push},
        {"change the mesh", [](SculptSession& s) { s.RefreshSurface(); }},
        {"change the mirrors", [](SculptSession& s) { s.SetMirrors({{0}}); }},
        {"change the mirrors", [](SculptSession& s) { s.SetTopologicalMirror(); }},
        {"make the mesh symmetric",
         [](SculptSession& s) { s.MakeSymmetric(0, SymmetrySide::Positive); }},
        {"change the renderers", [](SculptSession& s) { s.SetRenderers({1.0f}); }},
        {"add a layer", [](SculptSession& s) { s.AddLayer("new"); }},
        {"change the active layer", [](SculptSession& s) { s.SelectLayer(""); }},
        {"change the layer", [](SculptSession& s) { s.SetLayerStrength(0.5f); }},
        {"save the scene", [scene](SculptSession& s) { s.Save(scene); }},
    };
}

TEST_F(SessionStrokeTest, NothingChangesTheMeshUnderAnOpenStroke) {
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
        SculptSession& session = work->Session();
        session.SetRenderers({1.0f});
        const std::size_t position = session.Geometry().History().Position();
        PenStrokeOptions options;
        options.seed = 5;
        SessionStroke stroke(session, options);
        const auto samples = ReadPenStream(FileOf("clean"));
        const std::string scene = folder.Path("open.trovik");
        const auto refused = AllRefused(scene);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            stroke.Add(samples[i]);
            const Refused& one = refused[i % refused.size()];
            SCOPED_TRACE(std::string(tool) + ": " + one.work);
            EXPECT_THAT(MessageOf<HostError>([&] { one.run(session); }),
                        testing::EndsWith(std::string("cannot ") + one.work +
                                          " while a stroke is open; release or abandon it first"));
        }
        ASSERT_GT(samples.size(), refused.size());
        if (session.IsFreezing()) {
            const std::vector<uint8_t> all(session.Geometry().Bound()->VertexCount(), 127);
            EXPECT_THROW(session.Freeze(all, FreezeMode::Replace), HostError);
        }
        EXPECT_FALSE(stroke.IsOver());
        stroke.Release();
        EXPECT_FALSE(std::filesystem::exists(scene));
        EXPECT_TRUE(BitsOf(session) == BitsOf(expected->Session()));
        EXPECT_EQ(session.Geometry().History().Position(), position + 1);
        EXPECT_EQ(session.Brush().ActiveConfiguration()->Name().toStdString(), tool);
        ASSERT_TRUE(session.Undo());
        ASSERT_TRUE(session.Undo());
        ASSERT_TRUE(session.Redo());
    }
}

TEST_F(SessionStrokeTest, AStrokeThatIsEndedByTheLoopIsOver) {
    auto work = Work("Sculpt");
    SculptSession& session = work->Session();
    SessionStroke stroke(session, PenStrokeOptions());
    Draw(stroke, "clean", 9);
    session.Loop().End();
    EXPECT_TRUE(stroke.IsOver());
    SessionStroke next(session, PenStrokeOptions());
    const std::string before = BitsOf(session);
    Draw(stroke, "late", 9);
    stroke.Release();
    EXPECT_TRUE(BitsOf(session) == before);
    EXPECT_FALSE(next.IsOver()) << "the open stroke is another one";
    next.Release();
}

TEST_F(SessionStrokeTest, RadiusAndSpacingAreCheckedBeforeAStrokeBegins) {
    auto work = Work("Sculpt");
    SculptSession& session = work->Session();
    session.Settings().spacing = 1e-6f;
    EXPECT_THROW(SessionStroke{session}, HostError);
    session.Settings().spacing = 0.25f;
    session.Settings().radius = 0.0f;
    EXPECT_EQ(MessageOf<HostError>([&] { SessionStroke{session}; }),
              "the radius is 0; a number above 0 is needed");
    EXPECT_FALSE(session.Loop().IsActive());
    EXPECT_EQ(session.Settings().strokesBegun, 0u);
}

// A stroke borrows the falloff's samples when it begins.
TEST_F(SessionStrokeTest, ANewFalloffIsForTheNextStroke) {
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
                const std::string expected = BitsOf(plain->Session());
                for (const std::string& change : changes) {
                    SCOPED_TRACE(tool + change.substr(0, 40) + (isMirrored ? " mirrored" : "") +
                                 (isCustom ? " custom" : ""));
                    auto work = begin();
                    // Twice, so that memory that was given back would be taken again.
                    Step(*work, R"({"set": {"falloff": [0.3, 0.7, 0.1, 0.2]}})");
                    Step(*work, R"({"set": {"falloff": )" + change + "}}");
                    Step(*work, second);
                    EXPECT_TRUE(BitsOf(work->Session()) == expected);
                    Step(*work, first);
                    Step(*work, second);
                    auto other = begin();
                    Step(*other, second);
                    Step(*other, R"({"set": {"falloff": )" + change + "}}");
                    Step(*other, first);
                    Step(*other, second);
                    EXPECT_TRUE(BitsOf(work->Session()) == BitsOf(other->Session()));
                }
            }
        }
    }
}

TEST_F(SessionStrokeTest, AnErrorEndsTheStroke) {
    auto work = Work("Sculpt", R"({"smoothing": false})");
    PenStrokeOptions options;
    options.isFiltered = false;
    SessionStroke stroke(work->Session(), options);
    stroke.Add({PathSample({300, 300, 0}), PathSample({350, 300, 0})});
    EXPECT_GT(stroke.Count(), 2u);
    EXPECT_THROW(stroke.Add(PathSample({1e30f, 300, 0})), HostError);
    EXPECT_TRUE(stroke.IsOver());
    EXPECT_FALSE(work->Session().Loop().IsActive());
}

}  // namespace
}  // namespace trovik::test
