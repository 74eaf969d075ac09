// SPDX-License-Identifier: Apache-2.0

/// \file Tests that a trace reader can reconstruct changes by the host between calls.
#include "framework/document/DocumentStroke.h"
#include "framework/errors/HostError.h"
#include "framework/images/ImageFile.h"
#include "framework/trace/MeshState.h"
#include "tests/random/RandomNumbers.h"
#include "tests/trace/NpyArray.h"
#include "tests/trace/TraceFixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <set>

namespace trovik::test {
namespace {

/// The files of a mesh state, by name, as bytes.
using State = std::map<std::string, std::string>;

State ReadState(const std::string& folder) {
    State state;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        const std::string path = entry.path().string();
        state[path.substr(folder.size() + 1)] = TemporaryFolder::Content(path);
    }
    return state;
}

template <typename T>
struct ArrayIn {
    /// \param file  a file of a state; the values are those after the header.
    explicit ArrayIn(std::string& file) : bytes(file) {
        header = 10u + static_cast<uint8_t>(file.at(8)) + 256u * static_cast<uint8_t>(file.at(9));
        values.resize((file.size() - header) / sizeof(T));
        std::memcpy(values.data(), file.data() + header, values.size() * sizeof(T));
    }
    void Store() { std::memcpy(bytes.data() + header, values.data(), values.size() * sizeof(T)); }

    std::string& bytes;
    std::size_t header = 0;
    std::vector<T> values;
};

using Point = std::array<float, 3>;
using Packed = std::array<int16_t, 4>;

Point Minus(const Point& a, const Point& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Point Cross(const Point& a, const Point& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// A trace reader without a mesh: it uses only the files and the rules in docs/trace.md.
class Reader {
public:
    void Replace(State newState) { state = std::move(newState); }
    /// Applies the state after a call into the brush. The mirror belongs to the host.
    void AfterCall(State result) {
        const auto mirror = state.find(mirrorCornersFile);
        if (mirror != state.end()) result.insert(*mirror);
        state = std::move(result);
    }
    const State& Present() const { return state; }

    /// Like MeshChange::Finish: restores the link words from the records.
    void EndStroke() {
        const auto open = state.find("records.npy");
        if (open == state.end()) return;
        const ArrayIn<StoredVertexInfo> records(open->second);
        ArrayIn<uint32_t> links(state.at("change_link.npy"));
        for (uint32_t i = 0; i < records.values.size(); ++i) {
            uint32_t& link = links.values.at(records.values[i].vertexIndex);
            if (link == i) link = records.values[i].visitStampWord;
        }
        links.Store();
        state.erase(open);
    }

    void Settle(const nlohmann::json& out) {
        ArrayIn<Point> positions(state.at(Level() + "/positions.npy"));
        const auto vertices = out.at("vertices").get<std::vector<uint32_t>>();
        ASSERT_EQ(out.at("positions").size(), vertices.size());
        for (std::size_t i = 0; i < vertices.size(); ++i)
            positions.values.at(vertices[i]) = out.at("positions")[i].get<Point>();
        positions.Store();
        ArrayIn<Packed> normals(state.at("normals.npy"));
        for (const uint32_t vertex : vertices)
            SetNormal(normals.values.at(vertex), NormalSum(vertex, positions.values));
        normals.Store();
    }

private:
    nlohmann::json Meta() const { return nlohmann::json::parse(state.at("meta.json")); }
    std::string Level() const {
        return "level-" + std::to_string(Meta().at("level").get<uint32_t>());
    }

    Point NormalSum(uint32_t vertex, const std::vector<Point>& positions) {
        const ArrayIn<uint32_t> faces(state.at(Level() + "/face_vertex_indices.npy"));
        const std::size_t corners = Meta().at("meshType") == 1 ? 4 : 3;
        Point sum = {0.0f, 0.0f, 0.0f};
        for (std::size_t at = 0; at < faces.values.size(); at += corners) {
            const uint32_t* face = &faces.values[at];
            if (std::find(face, face + corners, vertex) == face + corners) continue;
            const Point& first = positions[face[0]];
            const Point normal = corners == 4 ? Cross(Minus(positions[face[2]], first),
                                                      Minus(positions[face[3]], positions[face[1]]))
                                              : Cross(Minus(positions[face[1]], first),
                                                      Minus(positions[face[2]], first));
            for (std::size_t k = 0; k < 3; ++k) sum[k] += normal[k];
        }
        return sum;
    }
    static void SetNormal(Packed& packed, const Point& sum) {
        const float dot = (sum[0] * sum[0] + sum[1] * sum[1]) + (sum[2] * sum[2] + 0.0f);
        const float factor = dot == 0.0f ? 1.0f : 1.0f / std::sqrt(dot);
        for (std::size_t k = 0; k < 3; ++k)
            packed[k] = static_cast<int16_t>(std::lrintf(sum[k] * factor * 32767.0f));
    }

    State state;
};

/// Forwards everything to a recorder, and stores the true state of the mesh before and after every
/// call.
class Witness final : public StrokeObserver {
public:
    Witness(TraceRecorder& traceRecorder, Document& edited, std::string stateFolder)
        : recorder(traceRecorder), document(edited), folder(std::move(stateFolder)) {}

    void BeforeCall(const BrushCall& call) override {
        before.push_back(Present());
        recorder.BeforeCall(call);
        recorder.ThrowIfFailed();
    }
    void AfterCall(const BrushCall& call, const std::string* error) override {
        recorder.AfterCall(call, error);
        recorder.ThrowIfFailed();
        after.push_back(Present());
    }
    void BeforeCommand(BrushOperation& brush, const std::string& name) override {
        recorder.BeforeCommand(brush, name);
    }
    void AfterSettling(BrushOperation& brush,
                       const LevelMesh& mesh,
                       const std::vector<uint32_t>& vertices) override {
        recorder.AfterSettling(brush, mesh, vertices);
    }

    State Present() {
        std::filesystem::remove_all(folder);
        WriteMeshState(
            folder,
            document.Geometry(),
            dynamic_cast<const MeshUnlocker*>(&document.SculptBrush()),
            document.SculptBrush().MirrorConfig().MirrorMode() == MirrorConfiguration::Topological);
        return ReadState(folder);
    }

    std::vector<State> before, after;

private:
    TraceRecorder& recorder;
    Document& document;
    std::string folder;
};

/// The brush queries the mirror in only one mode; in the others, the reader may still have the
/// mirror of an earlier state.
void ExpectSame(State reader, const State& truth, const std::string& what) {
    if (truth.count(mirrorCornersFile) == 0) reader.erase(mirrorCornersFile);
    for (const auto& [name, content] : truth)
        EXPECT_TRUE(reader.count(name) != 0 && reader.at(name) == content) << what << ": " << name;
    EXPECT_EQ(reader.size(), truth.size()) << what;
}

class HostChange : public TraceFixture {
protected:
    /// Runs steps one by one, skipping those that the mesh does not allow, and then replays the
    /// trace.
    void Follow(const std::vector<nlohmann::json>& steps,
                const nlohmann::json& setUp,
                const std::function<void(Document&)>& byHand = {}) {
        nlohmann::json script = {{"mesh", "cube.obj"}, {"steps", nlohmann::json::array()}};
        script.update(setUp);
        ScriptRunner runner(folder.Path("s.json"), folder.Path("."), {});
        runner.Open(script);
        Document& document = runner.GetDocument();
        TraceOptions options;
        options.folder = folder.Path("trace");
        TraceRecorder recorder(options);
        Witness witness(recorder, document, folder.Path("present"));
        document.SetObserver(&witness);
        for (std::size_t i = 0; i < steps.size(); ++i) {
            try {
                runner.Do(steps[i], i);
            } catch (const HostError& error) {
                EXPECT_EQ(std::string(error.what()).find("trace"), std::string::npos)
                    << error.what();
            }
        }
        if (byHand) byHand(document);
        document.SetObserver(nullptr);
        recorder.WriteAfter(document.SculptBrush());
        trace = ReadTrace(options.folder);
        Check(witness);
    }

    void Check(const Witness& witness) {
        Reader reader;
        std::size_t call = 0;
        bool hasState = false;
        for (std::size_t i = 0; i < trace.size(); ++i) {
            const nlohmann::json& line = trace[i];
            const std::string name = line.at("call");
            const std::string what = "line " + std::to_string(i + 1) + ", " + name;
            if (name == "HostChange") {
                ASSERT_TRUE(hasState);
                reader.Replace(ReadState(At(line["in"]["state"].get<std::string>() + "/m0")));
            } else if (name == "SettleSymmetry") {
                ASSERT_EQ(trace[i - 1].at("call"), "EndStroke");
                reader.Settle(line.at("out"));
            } else {
                ASSERT_LT(call, witness.after.size());
                if (!hasState && name == "BeginStroke") {
                    reader.Replace(ReadState(At("before/m0")));
                    hasState = true;
                }
                // The symmetry is settled immediately before the call, but the trace reports it
                // immediately after the call.
                const bool settles =
                    i + 1 < trace.size() && trace[i + 1]["call"] == "SettleSymmetry";
                if (hasState && !settles) ExpectSame(reader.Present(), witness.before[call], what);
                if (name == "EndStroke")
                    reader.EndStroke();
                else if (hasState)
                    reader.AfterCall(witness.after[call]);
                ++call;
            }
        }
        EXPECT_EQ(call, witness.after.size());
        if (hasState) ExpectSame(reader.Present(), ReadState(At("after/m0")), "after");
    }

    std::vector<std::string> Reasons() const {
        std::vector<std::string> reasons;
        for (const nlohmann::json& line : LinesOf(trace, "HostChange"))
            reasons.push_back(line["in"]["reason"]);
        return reasons;
    }
};

const nlohmann::json stroke = R"({"stroke": {"surface": [[0.3, 0.1, 1], [0.5, 0.2, 1]]}})"_json;

TEST_F(HostChange, HiddenVerticesAreRestoredBeforeTheEndOfAStroke) {
    std::string grid;
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 9; ++x)
            grid += "v " + std::to_string(x) + " " + std::to_string(y) + " -0.0\n";
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) {
            const int first = y * 9 + x + 1;
            grid += "f";
            for (const int corner : {first, first + 1, first + 10, first + 9})
                grid += " " + std::to_string(corner);
            grid += "\n";
        }
    }
    folder.Fill("grid.obj", grid);
    const nlohmann::json middle = R"({"stroke": {"surface": [[4, 6, 0], [5, 6, 0]]}})"_json;
    Follow({R"({"set": {"radius": 3}})"_json,
            middle,
            R"({"undo": 1})"_json,
            R"({"hide": {"faces": [[0, 32]]}})"_json,
            middle},
           {{"mesh", "grid.obj"}});
    EXPECT_EQ(Reasons(), (std::vector<std::string>{"undo, hide", "restoreHidden"}));
}

// Normals after a filter differ from those that a brush computes for the same positions.
TEST_F(HostChange, NormalsAreRestoredBeforeTheEndOfAStrokeUnderALockedLayer) {
    Follow({stroke,
            R"({"filter": {"kind": "relax"}})"_json,
            R"({"layer": {"add": "locked", "writable": false}})"_json,
            stroke},
           {{"levels", 2}});
    EXPECT_EQ(Reasons(), (std::vector<std::string>{"filter, layer", "restoreNormals"}));
}

TEST_F(HostChange, EveryKindOfStepBetweenStrokesIsFollowed) {
    const struct {
        const char* step;
        const char* reason;
    } steps[] = {{R"({"undo": 1})", "undo"},
                 {R"({"redo": 1})", "redo"},
                 {R"({"mask": {"center": [0, 0, 1], "radius": 0.5}})", "freeze"},
                 {R"({"hide": {"box": [0, 0, 300, 300], "reach": "through"}})", "hide"},
                 {R"({"invertVisibility": true})", "invertVisibility"},
                 {R"({"show": "all"})", "show"},
                 {R"({"layer": {"add": "a"}})", "layer"},
                 {R"({"layer": {"strength": 0.5}})", "layer"},
                 {R"({"layer": {"select": null}})", "layer"},
                 {R"({"transform": {"scale": [1, 2, 1], "rotate": [0, 30, 0]}})", "transform"},
                 {R"({"symmetrize": {"axis": "x"}})", "symmetrize"},
                 {R"({"level": 1})", "level"},
                 {R"({"applyToBase": true})", "applyToBase"},
                 {R"({"subdivide": 1})", "subdivide"},
                 {R"({"level": 0})", "level"},
                 {R"({"deleteLevels": "higher"})", "deleteLevels"},
                 {R"({"subdivide": 2})", "subdivide"},
                 {R"({"deleteLevels": "lower"})", "deleteLevels"},
                 {R"({"unsubdivide": 1})", "unsubdivide"},
                 {R"({"mirror": "topological"})", "mirror"},
                 {R"({"reset": true})", "reset"}};
    std::vector<nlohmann::json> script = {R"({"set": {"radius": 0.6}})"_json, stroke};
    std::vector<std::string> reasons;
    for (const auto& [step, reason] : steps) {
        script.push_back(nlohmann::json::parse(step));
        script.push_back(stroke);
        reasons.emplace_back(reason);
    }
    Follow(script, {{"levels", 2}});
    // After the stroke that followed the undo, there was nothing to redo.
    reasons.erase(reasons.begin() + 1);
    EXPECT_EQ(Reasons(), reasons);
    unsigned number = 0;
    for (const nlohmann::json& line : LinesOf(trace, "HostChange")) {
        EXPECT_EQ(KeysOf(line), (std::vector<std::string>{"call", "in", "out"}));
        EXPECT_EQ(KeysOf(line["in"]), (std::vector<std::string>{"mesh", "reason", "state"}));
        EXPECT_EQ(line["in"]["mesh"], "m0");
        char state[32];
        std::snprintf(state, sizeof state, "change-%06u", ++number);
        EXPECT_EQ(line["in"]["state"], state);
        EXPECT_EQ(line["out"], nlohmann::json::object());
    }
}

TEST_F(HostChange, CommandsBeforeOneCallAreOneChangeWithTheirNames) {
    Follow({stroke,
            R"({"undo": 1})"_json,
            R"({"camera": {"eye": [0, 0, 9]}})"_json,
            R"({"mask": "all"})"_json,
            R"({"mask": "invert"})"_json,
            R"({"redo": 1})"_json,
            R"({"level": 1})"_json,
            R"({"level": 1})"_json,
            stroke},
           {{"levels", 2}});
    EXPECT_EQ(Reasons(), std::vector<std::string>{"undo, freeze, level"});
}

TEST_F(HostChange, WorkThatChangesNothingHasNoLine) {
    Follow({stroke,
            R"({"camera": {"eye": [0, 0, 9]}})"_json,
            R"({"set": {"radius": 0.3}})"_json,
            R"({"export": {"file": "x.ply"}})"_json,
            R"({"mirror": ["x"]})"_json,
            R"({"level": 2})"_json,
            R"({"undo": 1})"_json,
            R"({"redo": 1})"_json,
            R"({"mask": "clear"})"_json,
            R"({"mirror": []})"_json,
            stroke},
           {{"levels", 2}});
    EXPECT_EQ(Reasons(), std::vector<std::string>{});
}

TEST_F(HostChange, ChangePrecedesTheNextCallOfAnyKind) {
    Follow({stroke, R"({"undo": 1})"_json, R"({"tool": "Wax"})"_json, stroke}, {{"levels", 2}});
    const std::vector<std::string> calls = Calls();
    const auto change = std::find(calls.begin(), calls.end(), "HostChange");
    ASSERT_NE(change, calls.end());
    EXPECT_EQ(*(change - 1), "EndStroke");
    EXPECT_EQ(*(change + 1), "SetActiveConfiguration");
}

TEST_F(HostChange, FreezeBrushStrokesAreHostChanges) {
    Follow({stroke, R"({"tool": "Freeze"})"_json, stroke, R"({"tool": "Sculpt"})"_json, stroke},
           {{"levels", 3}});
    EXPECT_EQ(Reasons(), std::vector<std::string>{"stroke"});
    EXPECT_EQ(LinesOf(trace, "BeginStroke").size(), 2u);
    // A trace also ends with such a line, so that its lines determine the final state.
    Follow({stroke, R"({"tool": "Freeze"})"_json, stroke}, {{"levels", 3}});
    EXPECT_EQ(Calls().back(), "HostChange");
}

TEST_F(HostChange, GrabBrushStrokesAreHostChanges) {
    for (const char* tool : {"Grab", "ElasticGrab", "SnakeHook"}) {
        const nlohmann::json grab = {{"stroke", {{"points", {{0.3, 0.1, 1.0}, {0.4, 0.3, 1.2}}}}}};
        // The default radius contains no vertex of this mesh.
        Follow({stroke,
                {{"tool", tool}},
                R"({"set": {"radius": 0.3}})"_json,
                grab,
                R"({"tool": "Sculpt"})"_json,
                stroke},
               {{"levels", 3}, {"mirror", {"x"}}});
        EXPECT_EQ(Reasons(), std::vector<std::string>{"stroke"}) << tool;
    }
}

TEST_F(HostChange, MaskingDuringAStrokeIsFollowed) {
    Follow({R"({"stroke": {"surface": [[0.3, 0.1, 1]], "open": true}})"_json,
            R"({"mask": {"center": [0, 0, 1], "radius": 0.5}})"_json,
            R"({"stroke": {"surface": [[0.4, 0.1, 1]], "continue": true, "open": true}})"_json,
            R"({"mask": "all"})"_json,
            R"({"stroke": {"continue": true}})"_json},
           {{"levels", 3}, {"mirror", {"x"}}});
    EXPECT_EQ(Reasons(), (std::vector<std::string>{"freeze", "freeze"}));
    EXPECT_TRUE(Has("change-000001/m0/records.npy"));
}

TEST_F(HostChange, DraggedCopyIsRevertedBeforeEachDab) {
    FloatImage image;
    image.width = 2;
    image.height = 2;
    image.channels = 1;
    image.pixels = {1.0f, 1.0f, 1.0f, 1.0f};
    WriteFloatImageFile(folder.Path("white.tif"), image);
    Follow({R"({"tool": "Imprint", "set": {"radius": 0.5, "stamp": "white.tif"}})"_json},
           {{"levels", 3}},
           [](Document& document) {
               PenStrokeOptions options;
               options.isFiltered = false;
               DocumentStroke drag(document, options);
               for (const float x : {480.0f, 500.0f, 520.0f, 540.0f}) {
                   PathSample sample;
                   sample.position = {x, 360.0f, 0.0f};
                   drag.Add(sample);
               }
               drag.Release();
           });
    const std::size_t dabs = LinesOf(trace, "ApplyDab").size();
    EXPECT_GE(dabs, 4u);
    EXPECT_EQ(Reasons(), std::vector<std::string>(dabs - 1, "putBack"));
}

TEST_F(HostChange, SettledSidesAreListedAfterTheStroke) {
    Follow({R"({"set": {"radius": 0.6}})"_json,
            R"({"stroke": {"surface": [[0.1, 0.1, 1], [0.3, 0.4, 1]]}})"_json,
            stroke},
           {{"levels", 3}, {"mirror", {"x"}}});
    const std::vector<nlohmann::json> lines = LinesOf(trace, "SettleSymmetry");
    ASSERT_GE(lines.size(), 1u);
    EXPECT_EQ(lines[0]["in"], R"({"mesh": "m0"})"_json);
    EXPECT_EQ(KeysOf(lines[0]["out"]), (std::vector<std::string>{"positions", "vertices"}));
    const auto vertices = lines[0]["out"]["vertices"].get<std::vector<uint32_t>>();
    EXPECT_FALSE(vertices.empty());
    EXPECT_TRUE(std::is_sorted(vertices.begin(), vertices.end()));
    EXPECT_TRUE(Reasons().empty()) << "the line contains the whole change";
}

TEST_F(HostChange, SettledSidesOfALayerIncludeItsOffsets) {
    Follow({R"({"set": {"radius": 0.6}})"_json,
            R"({"layer": {"add": "skin"}})"_json,
            R"({"layer": {"strength": 0.75}})"_json,
            R"({"stroke": {"surface": [[0.1, 0.1, 1], [0.3, 0.4, 1]]}})"_json,
            stroke},
           {{"levels", 3}, {"mirror", {"x"}}});
    ASSERT_GE(LinesOf(trace, "SettleSymmetry").size(), 1u);
    ASSERT_FALSE(Reasons().empty());
    EXPECT_EQ(Reasons()[0], "SettleSymmetry");
    EXPECT_TRUE(Has("change-000001/m0/layer.npy"));
}

TEST_F(HostChange, TopologicalMirrorPrecedesTheFirstStrokeThatUsesIt) {
    Follow({stroke,
            R"({"mirror": "topological"})"_json,
            stroke,
            stroke,
            R"({"mirror": []})"_json,
            stroke,
            R"({"mirror": "topological"})"_json,
            stroke},
           {{"levels", 2}});
    EXPECT_EQ(Reasons(), std::vector<std::string>{"mirror"})
        << "a mirror that was reported is not repeated";
    EXPECT_FALSE(Has("before/m0/mirror_corners.npy"));
    const auto corners = NpyArray(At("change-000001/m0/mirror_corners.npy")).Values<int32_t>();
    EXPECT_EQ(corners.size(), 96u * 4 * 3);
    EXPECT_EQ(std::count(corners.begin(), corners.end(), -1), 0);
    const std::vector<std::string> calls = Calls();
    const auto change = std::find(calls.begin(), calls.end(), "HostChange");
    EXPECT_EQ(*(change + 1), "BeginStroke");
}

TEST_F(HostChange, MirrorEnabledFromTheStartIsInTheFirstState) {
    Follow({stroke, R"({"undo": 1})"_json, stroke}, {{"levels", 2}, {"mirror", "topological"}});
    EXPECT_TRUE(Has("before/m0/mirror_corners.npy"));
    EXPECT_TRUE(Has("change-000001/m0/mirror_corners.npy"));
    EXPECT_EQ(Reasons(), std::vector<std::string>{"undo"});
}

TEST_F(HostChange, DisplacementByAMapIsFollowed) {
    folder.Fill("cube.obj",
                "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                "f 1/1 2/2 3/3 4/4\n");
    const nlohmann::json dab = R"({"stroke": {"dabs": [{"face": 5, "radius": 0.4}]}})"_json;
    Follow({dab,
            R"({"bake": {"file": "map.exr", "size": 16}})"_json,
            R"({"displace": {"file": "map.exr"}})"_json,
            dab},
           {{"levels", 3}});
    EXPECT_EQ(Reasons(), std::vector<std::string>{"displace"});
}

nlohmann::json RandomStroke(RandomNumbers& random) {
    nlohmann::json given;
    const auto place = [&] {
        nlohmann::json point;
        for (int k = 0; k < 3; ++k) point.push_back(random.Between(-1.2f, 1.2f));
        return point;
    };
    switch (random.Below(5)) {
        case 0:
            given["dabs"] = {{{"face", random.Below(20)}}};
            break;
        case 1:
            given["wholeMesh"] = {{"strength", 0.01}};
            break;
        default:
            given["surface"] = {place(), place()};
            break;
    }
    if (random.Below(4) == 0) given["modifier"] = random.Below(2) == 0 ? "smooth" : "invert";
    if (random.Below(6) == 0) given["open"] = true;
    return {{"stroke", given}};
}

nlohmann::json RandomStep(RandomNumbers& random) {
    static const char* const tools[] = {"Sculpt", "Smooth", "Wax", "Flatten", "Pinch", "Freeze"};
    static const char* const others[] = {R"({"undo": 1})",
                                         R"({"undo": 2})",
                                         R"({"redo": 1})",
                                         R"({"stroke": {"continue": true}})",
                                         R"({"stroke": {"continue": true}})",
                                         R"({"mask": {"center": [0, 1, 0], "radius": 0.8}})",
                                         R"({"mask": "invert"})",
                                         R"({"mask": "clear"})",
                                         R"({"mask": {"blur": 1}})",
                                         R"({"layer": {"add": "one"}})",
                                         R"({"layer": {"add": "two"}})",
                                         R"({"layer": {"select": "one"}})",
                                         R"({"layer": {"select": null}})",
                                         R"({"layer": {"strength": 0.5}})",
                                         R"({"layer": {"mergeDown": true}})",
                                         R"({"layer": {"remove": true}})",
                                         R"({"transform": {"scale": [1, 1.5, 1]}})",
                                         R"({"transform": {"rotate": [0, 20, 5]}})",
                                         R"({"level": 1})",
                                         R"({"level": 2})",
                                         R"({"level": 0})",
                                         R"({"subdivide": 1})",
                                         R"({"deleteLevels": "higher"})",
                                         R"({"deleteLevels": "lower"})",
                                         R"({"unsubdivide": 1})",
                                         R"({"applyToBase": true})",
                                         R"({"mirror": ["x"]})",
                                         R"({"mirror": ["x", "y"]})",
                                         R"({"mirror": "topological"})",
                                         R"({"mirror": []})",
                                         R"({"symmetrize": {"axis": "x"}})",
                                         R"({"reset": true})",
                                         R"({"set": {"radius": 0.4, "strength": 70}})",
                                         R"({"set": {"radius": 0.8}})"};
    switch (random.Below(5)) {
        case 0:
            return {{"tool", tools[random.Below(std::size(tools))]}};
        case 1:
        case 2:
            return RandomStroke(random);
        default:
            return nlohmann::json::parse(others[random.Below(std::size(others))]);
    }
}

TEST_F(HostChange, RandomScriptsAreFollowed) {
    std::set<std::string> reasons;
    std::size_t settled = 0;
    // After a change to the traced data, increase TROVIK_RANDOM_TRACES to run more scripts.
    const uint32_t scripts = CountFromEnvironment("TROVIK_RANDOM_TRACES", 12);
    for (uint32_t seed = 1; seed <= scripts; ++seed) {
        SCOPED_TRACE("script " + std::to_string(seed));
        RandomNumbers random(seed);
        std::vector<nlohmann::json> steps = {R"({"set": {"radius": 0.6}})"_json};
        for (int i = 0; i < 30; ++i) steps.push_back(RandomStep(random));
        Follow(steps, {{"levels", 2}, {"subdivideBudget", 300000}});
        for (const std::string& reason : Reasons()) {
            std::string names = reason + ", ";
            for (std::size_t end; (end = names.find(", ")) != std::string::npos;) {
                reasons.insert(names.substr(0, end));
                names.erase(0, end + 2);
            }
        }
        settled += LinesOf(trace, "SettleSymmetry").size();
        if (HasFailure()) break;
    }
    for (const char* name : {"undo", "freeze", "level", "reset", "stroke"})
        EXPECT_EQ(reasons.count(name), 1u) << name;
    EXPECT_GT(settled, 0u);
}

}  // namespace
}  // namespace trovik::test
