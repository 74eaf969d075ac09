// SPDX-License-Identifier: Apache-2.0

/// \file Tests undo of random work in documents: live strokes of all kinds of tools, which are
/// released at once or in parts, abandoned or cancelled, and steps, some of which are cancelled.
/// Only undo steps may change a document, and undo and redo must restore bit-identical states. The
/// default run is short; TROVIK_RANDOM_EDITS sets the number of edits.
#include "framework/document/DocumentStroke.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/script/ScriptRunner.h"
#include "tests/edits/VisibleState.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace trovik::test {
namespace {

using nlohmann::json;

constexpr uint32_t editsPerDocument = 40;
constexpr uint32_t maxFaces = 1000;
constexpr float viewWidth = 400.0f;
constexpr float viewHeight = 300.0f;

/// Cancels at a given report.
class CancellingJob final : public JobControl {
public:
    CancellingJob() : JobControl(JobPace{1, {}}) {}
    bool Report(uint64_t, uint64_t, const char*) override { return left == 0 || --left > 0; }
    /// Number of reports until the job is cancelled; 0 if it is not cancelled.
    uint64_t left = 0;
};

PolygonMesh MeshOf(uint32_t kind) {
    switch (kind) {
        case 0:
            return SphereQuads(6);
        case 1:
            return Icosahedron();
        case 2:
            return GridMesh(9, 9);
        case 3:
            return Torus(12, 8);
        default:
            return Cube();
    }
}

/// A document, and all its states by the positions of its history.
class RandomWork {
public:
    /// \param isRefining  whether strokes refine the mesh, which then consists of triangles.
    RandomWork(uint32_t seed, bool isRefining)
        : refines(isRefining), random(seed), runner("work.json", folder.Path(""), ProgressOf(job)) {
        const uint32_t kind = refines ? 1 : random.Below(5);
        const json setup = {
            {"levels", refines || kind == 0 ? 0 : 2},
            {"seed", 3},
            {"camera",
             {{"eye", {1.5, 1.0, 4.0}}, {"target", {0, 0, 0}}, {"width", 400}, {"height", 300}}},
            {"steps", json::array()}};
        runner.Open("mesh", MeshOf(kind), setup);
        log = "seed " + std::to_string(seed) + ", mesh " + std::to_string(kind);
        states.emplace(0, VisibleState(GetDocument().Geometry()));
        Do({{"set", {{"radius", 0.4}}}});
        if (refines) Do({{"set", {{"detail", {{"unit", "world"}, {"length", 0.15}}}}}});
    }

    void Edit() {
        const uint32_t kind = random.Below(10);
        // Layers and further levels would end the refinement.
        if (kind < 4 || (refines && kind < 6))
            Stroke();
        else if (kind < 6)
            Do(LayerStep());
        else if (kind == 6)
            Walk();
        else
            Do(AnyStep());
    }

    /// Undoes everything, and redoes it.
    void UndoAndRedo() {
        while (!testing::Test::HasFailure() && GetDocument().Undo()) Check("differ after undo");
        while (!testing::Test::HasFailure() && GetDocument().Redo()) Check("differ after redo");
    }

    std::size_t StateCount() const { return states.size(); }
    const std::string& Log() const { return log; }

private:
    static ScriptProgress ProgressOf(CancellingJob& job) {
        ScriptProgress progress;
        progress.job = &job;
        return progress;
    }
    Document& GetDocument() { return runner.GetDocument(); }
    const UndoStep* Newest() {
        const UndoHistory& history = GetDocument().Geometry().History();
        return history.Position() == 0 ? nullptr : &history.Shell(history.Position() - 1);
    }

    void Check(const std::string& when) {
        const auto known = states.find(GetDocument().HistoryPosition());
        ASSERT_TRUE(known != states.end()) << when << " in " << log;
        const VisibleState now(GetDocument().Geometry());
        ASSERT_TRUE(now == known->second) << now.DifferenceTo(known->second) << " " << when
                                          << " to " << known->first << " in " << log;
    }

    /// Calls an edit, and adds the new state if there is a new undo step.
    template <typename Work>
    void Record(const std::string& what, const Work& work) {
        log += "; " + what;
        const UndoStep* before = Newest();
        const std::size_t position = GetDocument().HistoryPosition();
        const std::size_t count = GetDocument().Geometry().History().StepCount();
        try {
            work();
        } catch (const Cancelled&) {
            log += " (cancelled)";
        } catch (const HostError&) {
            log += " (refused)";
        }
        job.left = 0;
        const std::size_t now = GetDocument().HistoryPosition();
        if (Newest() == before && now == position) {
            Check("differ without a step");
            return;
        }
        ASSERT_TRUE(now > position || count != GetDocument().Geometry().History().StepCount());
        states.erase(states.upper_bound(position), states.end());
        states.emplace(now, VisibleState(GetDocument().Geometry()));
    }

    void Do(const json& step) {
        Record(step.dump(), [&] {
            if (random.Chance(0.2f)) job.left = 1 + random.Below(random.OneOf({4u, 40u, 4000u}));
            runner.Do(step, 0);
        });
    }

    void Walk() {
        for (uint32_t n = random.Below(4); n > 0; --n) {
            const bool isUndo = random.Chance(0.7f);
            log += isUndo ? "; undo" : "; redo";
            if (isUndo ? GetDocument().Undo() : GetDocument().Redo())
                Check("differ after undo or redo");
        }
    }

    json AnyStep() {
        const json axis = random.OneOf({"x", "y", "z"});
        switch (random.Below(20)) {
            case 0:
                return {{"mask", {{"center", {0.5, 0.3, 0.5}}, {"radius", 0.7}}}};
            case 1:
                return {{"mask", random.OneOf({"all", "clear", "invert"})}};
            case 2:
                return {{"hide",
                         {{"box", {random.Below(200), random.Below(150), 350, 280}},
                          {"reach", "through"}}}};
            case 3:
                return {{"show", "all"}};
            case 4:
                return {{"invertVisibility", true}};
            case 5:
                return {{"mirror", random.OneOf<json>({json::array(), {"x"}, {"x", "z"}})}};
            case 6:
                return {{"mirror", {{"radial", 2 + random.Below(3)}, {"axis", axis}}}};
            case 7:
                return {{"symmetrize", {{"axis", axis}}}};
            case 8:
                return {{"filter",
                         {{"kind", random.OneOf({"smooth", "relax", "sharpen"})},
                          {"strength", random.Between(0.1f, 1.0f)}}}};
            case 9:
                return {{"transform", {{"scale", {1, random.OneOf({0.5, 1.0, 2.0}), 1}}}}};
            case 10:
                return {{"applyToBase", true}};
            case 11:
                return {{"deleteLevels", random.OneOf({"lower", "higher"})}};
            case 12:
                return refines || GetDocument().State()->levels.back().faces > maxFaces
                           ? json{{"level", 0}}
                           : json{{"subdivide", 1}};
            case 13:
                return {{"unsubdivide", 1}};
            case 14:
                return {{"decimate", {{"ratio", 0.8}}}};
            case 15:
                return {{"repair", json::object()}};
            case 16:
                return {{"mirror", "topological"}};
            default:
                return {{"level", random.Below(GetDocument().Geometry().LevelCount())}};
        }
    }

    json LayerStep() {
        Document& document = GetDocument();
        if (document.State()->layers.empty() || random.Chance(0.1f))
            return {{"layer", {{"add", "layer " + std::to_string(++named)}}}};
        if (document.ActiveLayer() == nullptr)
            return {{"layer", {{"select", document.State()->layers.front().name}}}};
        switch (random.Below(9)) {
            case 0:
            case 1:
                return {{"layer", {{"writable", random.Chance(0.4f)}}}};
            case 2:
                return {{"layer", {{"visible", random.Chance(0.4f)}}}};
            case 3:
                return {{"layer", {{"strength", random.OneOf({-1.0, 0.0, 0.3, 1.0, 1.7})}}}};
            case 4:
                return {{"layer", {{"remove", true}}}};
            case 5:
                return {{"layer", {{"duplicate", "copy " + std::to_string(++named)}}}};
            case 6:
                return {{"layer", {{"mergeDown", true}}}};
            case 7:
                return {{"layer", {{"erase", true}}}};
            default:
                return {{"layer", {{"select", json()}}}};
        }
    }

    std::vector<PathSample> Path() {
        Vector position(
            random.Between(0.3f, 0.7f) * viewWidth, random.Between(0.3f, 0.7f) * viewHeight, 0.0f);
        std::vector<PathSample> samples;
        for (uint32_t n = 1 + random.Below(25); n > 0; --n) {
            PathSample sample(position, random.Between(0.0f, 1.0f));
            sample.time = time += 0.008;
            samples.push_back(sample);
            position += Vector(random.Between(-15.0f, 15.0f), random.Between(-15.0f, 15.0f), 0.0f);
        }
        return samples;
    }

    void Stroke() {
        const std::vector<std::string> tools = GetDocument().ToolNames();
        const std::string& tool = tools[random.Below(static_cast<uint32_t>(tools.size()))];
        log += "; tool " + tool;
        runner.Do({{"tool", tool}}, 0);
        const uint32_t end = random.Below(6);
        Record("stroke " + std::to_string(end), [&] { StrokeUntil(end); });
    }

    void StrokeUntil(uint32_t end) {
        Document& document = GetDocument();
        PenStrokeOptions options = PenStrokeOptions::Interactive();
        options.modifier = random.OneOf({BrushOperation::ModifierNone,
                                         BrushOperation::ModifierNone,
                                         BrushOperation::ModifierSmooth,
                                         BrushOperation::ModifierInvert});
        uint32_t polls = end == 5 ? 1 + random.Below(6) : 0;
        options.mirrorPoll = [&polls] {
            if (polls > 0 && --polls == 0) throw Cancelled();
        };
        const LiveStroke::Budget none{};
        const UndoStep* before = Newest();
        DocumentStroke stroke(document, options);
        const std::vector<PathSample> path = Path();
        const std::size_t kept = end == 0 ? random.Below(25) : path.size();
        for (std::size_t i = 0; i < std::min(kept, path.size()); ++i) {
            stroke.Add({path[i]}, none);
            if (random.Chance(0.3f)) stroke.Continue(none);
            if (random.Chance(0.1f)) stroke.Tick(path[i].time + 0.001);
        }
        try {
            if (end == 0) {
                stroke.Abandon();
            } else if (end == 1) {
                if (stroke.Release(none)) stroke.Abandon();
            } else if (end == 2) {
                for (bool remain = stroke.Release(none); remain;) remain = stroke.Continue(none);
            } else {
                stroke.Release();
            }
        } catch (const Cancelled&) {
            // Mirrored sides that were applied belong to the undo step of the stroke.
            if (Newest() != before) document.Undo();
            document.DropUndone();
            throw;
        }
    }

    const bool refines;
    TemporaryFolder folder;
    RandomNumbers random;
    CancellingJob job;
    ScriptRunner runner;
    std::map<std::size_t, VisibleState> states;
    std::string log;
    int named = 0;
    double time = 0.0;
};

void ExpectExactUndo(uint32_t firstSeed, bool refines) {
    const uint32_t wanted = CountFromEnvironment("TROVIK_RANDOM_EDITS", 400);
    std::size_t count = 0;
    for (uint32_t edit = 0; edit < wanted; edit += editsPerDocument) {
        RandomWork work(firstSeed + edit, refines);
        for (uint32_t i = 0; i < editsPerDocument && !testing::Test::HasFailure(); ++i) work.Edit();
        if (!testing::Test::HasFailure()) work.UndoAndRedo();
        ASSERT_FALSE(testing::Test::HasFailure());
        count += work.StateCount();
    }
    // The test is meaningless if the edits do nothing.
    EXPECT_GT(count, wanted / 4);
}

TEST(RandomWork, IsUndoneAndRedoneBitExactly) { ExpectExactUndo(87990, false); }

TEST(RandomWork, WithStrokesThatRefineTheMeshIsUndoneAndRedoneBitExactly) {
    ExpectExactUndo(50020, true);
}

}  // namespace
}  // namespace trovik::test
