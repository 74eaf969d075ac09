// SPDX-License-Identifier: Apache-2.0

/// \file Tests the recorder with a fake brush on two meshes, for cases that no script produces.
#include "framework/brushes/BrushSettings.h"
#include "framework/errors/HostError.h"
#include "framework/mesh/NotificationRecorder.h"
#include "framework/multires/LevelChange.h"
#include "framework/nodes/HostKernel.h"
#include "framework/trace/TraceRecorder.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/trace/NpyArray.h"
#include "tests/trace/TraceFixture.h"

#include <functional>

namespace trovik::test {
namespace {

/// The fields that a dab's line contains even if nothing has changed.
const std::vector<std::string> alwaysTold = {"box",
                                             "camera",
                                             "direction",
                                             "hit",
                                             "position",
                                             "pressure",
                                             "previousPatchPosition",
                                             "size",
                                             "stampFactor",
                                             "strength"};

/// Returns true for faces below the limit.
class Faces final : public FaceEnumerator {
public:
    explicit Faces(uint32_t faceLimit) : limit(faceLimit) {}
    void Operator(Mesh*, uint32_t) override {}
    bool Tester(Mesh*, uint32_t face) override {
        if (face == throwAt) throw new Error(QStringLiteral("walk"), Error::InvalidUse, "", "", 0);
        return face < limit;
    }
    uint32_t limit;
    uint32_t throwAt = 0xffffffffu;
};

class TwoVertices final : public VertexEnumerator {
public:
    void Operator(Mesh*, uint32_t, uint32_t) override {}
    bool Tester(Mesh*, uint32_t, uint32_t) override { return ++tested < 2; }
    int tested = 0;
};

class ObedientBrush final : public BrushOperation, public MeshUnlocker {
public:
    void ApplyDab(const SurfacePoint& hit,
                  const Vector&,
                  float,
                  float,
                  float,
                  AxisAlignedBoundingBox& box) override {
        work(hit, box);
    }
    bool IsStrokeFree() override { return false; }
    Image* MaskImage(int mask) const override {
        return image != nullptr ? image : BrushOperation::MaskImage(mask);
    }
    std::function<void(const SurfacePoint&, AxisAlignedBoundingBox&)> work =
        [](const SurfacePoint&, AxisAlignedBoundingBox&) {};
    Image* image = nullptr;
};

/// 2 x 3 pixels; channel c of pixel (x, y) is 100 y + 10 x + c.
class SmallImage : public Image {
public:
    uint32_t Width() const override { return 2; }
    uint32_t Height() const override { return 3; }
    int ImageKind() const override { return 0; }
    void getTile(int, int, int w, int h, void* out, const PixelDescriptor* as) override {
        ++reads;
        auto* pixel = static_cast<float*>(out);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < as->channels; ++c)
                    *pixel++ = static_cast<float>(100 * y + 10 * x + c);
    }
    int reads = 0;
};

class TraceRecorderTest : public ::testing::Test {
protected:
    TraceRecorderTest() : first(GridMesh(3, 3)), second(TriangleStrip(3)) {
        HostKernel::Instance().Scene()->AddGeometry(&first);
        HostKernel::Instance().Scene()->AddGeometry(&second);
        options.folder = folder.Path("t");
    }
    ~TraceRecorderTest() override {
        HostKernel::Instance().Scene()->RemoveGeometry(&first);
        HostKernel::Instance().Scene()->RemoveGeometry(&second);
        HostKernel::Instance().SetTestMode(false);
        CheckableFloatArray::s_bActive = false;
    }

    TraceRecorder& Recorder() {
        if (recorder == nullptr) recorder = std::make_unique<TraceRecorder>(options);
        return *recorder;
    }
    void Begin(Mesh* mesh, BrushOperation::Modifier modifier = BrushOperation::ModifierNone) {
        BrushCall call(BrushCall::BeginStroke, brush);
        call.mesh = mesh;
        call.modifier = modifier;
        Observed(&Recorder(), call, [&] { brush.BeginStroke(mesh, modifier, call.trigger); });
    }
    void End() {
        Observed(&Recorder(), BrushCall(BrushCall::EndStroke, brush), [&] { brush.EndStroke(); });
    }
    nlohmann::json Dab(LevelGeometry& on, uint32_t face = 0, bool mirror = false) {
        SurfacePoint hit(on.Bound(), 0, face);
        hit.mirror = mirror;
        AxisAlignedBoundingBox box;
        BrushCall call(BrushCall::ApplyDab, brush);
        call.hit = &hit;
        call.box = &box;
        call.position = {1.0f, 2.0f, -0.0f};
        call.size = 0.1f;
        call.pressure = 0.5f;
        call.strength = 3.0f;
        try {
            Observed(&Recorder(), call, [&] {
                brush.ApplyDab(hit, call.position, call.size, call.pressure, call.strength, box);
            });
        } catch (Error* error) {
            Error::Dispose(error);
        }
        Recorder().ThrowIfFailed();
        return ReadTrace(options.folder).back();
    }

    TemporaryFolder folder;
    TraceOptions options;
    LevelGeometry first, second;
    ObedientBrush brush;
    std::unique_ptr<TraceRecorder> recorder;
};

TEST_F(TraceRecorderTest, StrokeWithoutAMeshHasNoBinding) {
    Begin(nullptr);
    const nlohmann::json begin = ReadTrace(options.folder).back();
    EXPECT_TRUE(begin["in"]["mesh"].is_null());
    EXPECT_TRUE(begin["in"]["tool"].is_null());
    EXPECT_FALSE(begin["in"].contains("freezeQuery"));
    EXPECT_EQ(begin["in"]["renderers"], R"({"m0": [], "m1": []})"_json);
    EXPECT_EQ(begin["out"], R"({"messages": [], "error": null, "bound": null})"_json);
}

TEST_F(TraceRecorderTest, DabReportsItsArguments) {
    Begin(first.Bound());
    const nlohmann::json in = Dab(first, 4)["in"];
    EXPECT_EQ(in["hit"],
              R"({"mesh": "m0", "face": 4, "position": [1.0, 1.0, 0.0], "normal": [0.0, 0.0, 1.0],
                  "mirror": false})"_json);
    EXPECT_EQ(in["position"].dump(), "[1.0,2.0,-0.0]");
    EXPECT_EQ(static_cast<float>(in["size"].get<double>()), 0.1f);
    EXPECT_EQ(in["pressure"], 0.5);
    EXPECT_EQ(in["strength"], 3.0);
    EXPECT_EQ(in["box"], R"([1.0, 1.0, 1.0, -1.0, -1.0, -1.0])"_json);
    EXPECT_EQ(KeysOf(in), alwaysTold);
}

TEST_F(TraceRecorderTest, DabWithoutEffectReportsIt) {
    Begin(first.Bound());
    EXPECT_EQ(Dab(first)["out"],
              R"({"box": [1.0, 1.0, 1.0, -1.0, -1.0, -1.0], "messages": [], "error": null,
                  "bound": null, "directionVector": null, "visitStamp": null, "recordCount": 0,
                  "facesTested": [], "notices": []})"_json);
}

TEST_F(TraceRecorderTest, OnlyTheLastWalkOfADabIsReported) {
    brush.work = [this](const SurfacePoint& hit, AxisAlignedBoundingBox&) {
        Faces all(9), one(1);
        hit.mesh->EnumerateFaces(8, &all, 0);
        hit.mesh->EnumerateFaces(0, &one, 0);
    };
    Begin(first.Bound());
    EXPECT_EQ(Dab(first)["out"]["facesTested"], R"([[0, 1], [1, 0], [3, 0]])"_json);

    brush.work = [](const SurfacePoint& hit, AxisAlignedBoundingBox&) {
        TwoVertices visitor;
        hit.mesh->EnumerateVertices(0, &visitor);
    };
    const nlohmann::json tested = Dab(second)["out"]["facesTested"];
    EXPECT_EQ(tested[0], nlohmann::json({second.Bound()->faceVertexIndices[0], 1}));
    EXPECT_EQ(tested[1], nlohmann::json({second.Bound()->faceVertexIndices[1], 0}));
}

TEST_F(TraceRecorderTest, WalkEndedByAnErrorReportsItsResultsSoFar) {
    brush.work = [](const SurfacePoint& hit, AxisAlignedBoundingBox&) {
        Faces faces(9);
        faces.throwAt = 3;
        hit.mesh->EnumerateFaces(0, &faces, 0);
    };
    Begin(first.Bound());
    const nlohmann::json out = Dab(first)["out"];
    EXPECT_EQ(out["error"], "walk");
    EXPECT_EQ(out["facesTested"], R"([[0, 1], [1, 1]])"_json);
    // The next traversal on the level is not affected.
    brush.work = [](const SurfacePoint& hit, AxisAlignedBoundingBox&) {
        Faces faces(9);
        hit.mesh->EnumerateFaces(0, &faces, 0);
    };
    EXPECT_EQ(Dab(first)["out"]["facesTested"].size(), 9u);
}

TEST_F(TraceRecorderTest, MessagesDirectionAndBoxAreReported) {
    HostKernel::Instance().Interface()->HUDMessageShow(QStringLiteral("earlier"),
                                                       HUDMessageWarning);
    brush.work = [this](const SurfacePoint&, AxisAlignedBoundingBox& box) {
        HostKernel::Instance().Interface()->HUDMessageShow(QStringLiteral("a<br>"),
                                                           HUDMessageWarning);
        HostKernel::Instance().Interface()->HUDMessageShow(QStringLiteral("b"), HUDMessageInfo);
        brush.SetDirectionVector({0.0f, 0.5f, -1.0f});
        box.Extend({1.0f, 2.0f, 3.0f});
    };
    Begin(first.Bound());
    nlohmann::json out = Dab(first)["out"];
    EXPECT_EQ(out["messages"], R"(["a<br>", "b"])"_json);
    EXPECT_EQ(out["directionVector"], R"([0.0, 0.5, -1.0])"_json);
    EXPECT_EQ(out["box"], R"([1.0, 2.0, 3.0, 1.0, 2.0, 3.0])"_json);
    // The direction stays in the settings for the host's cursor, but is not reported for the next
    // dab, which did not set it.
    brush.work = [](const SurfacePoint&, AxisAlignedBoundingBox&) {};
    out = Dab(first)["out"];
    EXPECT_TRUE(out["directionVector"].is_null());
    EXPECT_EQ(out["messages"], nlohmann::json::array());
    EXPECT_TRUE(brush.Settings().directionVectorSet);
}

TEST_F(TraceRecorderTest, BoundMeshIsTheOneThatTheBrushHasLocked) {
    Begin(first.Bound());
    brush.work = [this](const SurfacePoint&, AxisAlignedBoundingBox&) {
        second.Bound()->Lock(&brush);
        second.Bound()->visitStamp = 17;
        std::unique_ptr<MeshChange> change(second.Bound()->StartChange());
        change->Add_uncached(2, 0, second.Bound()->vertices[2], false);
        static_cast<void>(change.release());
    };
    const nlohmann::json out = Dab(second)["out"];
    EXPECT_EQ(out["bound"], "m1");
    EXPECT_EQ(out["visitStamp"], 17);
    EXPECT_EQ(out["recordCount"], 1);
    delete second.Bound()->OpenChange();
    second.Bound()->Unlock();
}

TEST_F(TraceRecorderTest, NoticesAreThoseOfTheBoundMeshByRenderer) {
    auto* every = new NotificationRecorder(0.0f);
    auto* some = new NotificationRecorder(2.5f);
    first.Bound()->AddChild(every);
    first.Bound()->AddChild(some);
    brush.work = [&](const SurfacePoint& hit, AxisAlignedBoundingBox&) {
        first.Bound()->Lock(&brush);
        Faces none(0);
        hit.mesh->EnumerateFaces(0, &none, 0);
        every->rendererVertexChanged(5, 2);
        some->rendererVertexChanged(1, 0);
        every->rendererVertexChanged(4, 2);
    };
    Begin(first.Bound());
    EXPECT_EQ(ReadTrace(options.folder).back()["in"]["renderers"],
              R"({"m0": [0.0, 2.5], "m1": []})"_json);
    EXPECT_EQ(Dab(first)["out"]["notices"], R"([[[5, 2], [4, 2]], [[1, 0]]])"_json);
    brush.work = [](const SurfacePoint&, AxisAlignedBoundingBox&) {};
    EXPECT_EQ(Dab(first)["out"]["notices"], nlohmann::json::array()) << "no walk ran";
    every->rendererVertexChanged(1, 1);
    EXPECT_TRUE(every->Notices().empty()) << "outside a call there is no observer";
    first.Bound()->Unlock();
}

TEST_F(TraceRecorderTest, DabRepeatsOnlyWhatTheHostChangedSinceTheLastLine) {
    const auto changed = [this] {
        nlohmann::json in = Dab(first)["in"];
        for (const std::string& always : alwaysTold) EXPECT_EQ(in.erase(always), 1u) << always;
        return in.dump();
    };
    Begin(first.Bound());
    EXPECT_EQ(changed(), "{}");
    brush.Settings().strengthBias = 30.0f;
    HostKernel::Instance().SetTestMode(true);
    EXPECT_EQ(changed(), R"({"strengthBias":30.0,"testMode":true})");
    EXPECT_EQ(changed(), "{}");
    first.Bound()->SetFreeze(3, 10);
    EXPECT_EQ(changed(), R"({"freezeQuery":1})");
    EXPECT_EQ(changed(), "{}");
    brush.SetFalloffBasedOnFacingAngle(true, 10.0f, 20.0f);
    EXPECT_EQ(changed(), R"({"facing":{"active":true,"range":20.0,"start":10.0}})");
    brush.MirrorConfig().SetMirrorMode(7);
    brush.strokeMeshLocked = 2;
    EXPECT_EQ(changed(), R"({"mirrorMode":7,"strokeMeshLocked":true})");
    brush.SetFalloffIndex(0);
    EXPECT_EQ(changed(), R"({"falloff":"falloff-0002.npy"})");
    brush.SetFalloffIndex(2);
    EXPECT_EQ(changed(), R"({"falloff":"falloff-0001.npy"})") << "equal content is written once";
    EXPECT_EQ(changed(), "{}");
}

TEST_F(TraceRecorderTest, ChangesByTheBrushDuringACallAreNotHostChanges) {
    brush.work = [this](const SurfacePoint&, AxisAlignedBoundingBox&) {
        brush.brushStrengthScale = 0.25f;
    };
    Begin(first.Bound());
    Dab(first);
    EXPECT_FALSE(Dab(first)["in"].contains("strengthScale"));
}

TEST_F(TraceRecorderTest, MirroredHitHasItsPointMap) {
    Begin(first.Bound());
    Matrix map;
    map.m[0][0] = -1.0f;
    map.m[3][0] = 4.0f;
    brush.MirrorConfig().SetPointMap(map);
    EXPECT_FALSE(Dab(first)["in"].contains("mirrorTransform"));
    const nlohmann::json in = Dab(first, 0, true)["in"];
    EXPECT_EQ(in["hit"]["mirror"], true);
    EXPECT_EQ(in["mirrorTransform"],
              R"([-1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 4.0, 0.0, 0.0,
                  1.0])"_json);
}

TEST_F(TraceRecorderTest, StampHasItsPixelsAndMatrix) {
    SmallImage image;
    brush.image = &image;
    brush.SetStamp(true, QStringLiteral("knife.tif"));
    brush.Settings().stampTiled = true;
    brush.Settings().stampOffset = 0.5f;
    brush.Settings().stampMatrix.m[3][1] = 9.0f;
    Begin(first.Bound());
    nlohmann::json stamp = ReadTrace(options.folder).back()["in"]["stamp"];
    EXPECT_EQ(stamp, R"({"enabled": true, "tiled": true, "inverted": false, "factor": 1.0,
        "offset": 0.5, "buildUp": false, "name": "knife.tif", "imageKind": 0, "width": 2,
        "height": 3, "version": 0, "image": 0, "pixels": "stamp-0001.npy"})"_json);
    const NpyArray plain(options.folder + "/arrays/stamp-0001.npy");
    EXPECT_EQ(plain.Type(), "'<f4'");
    EXPECT_EQ(plain.Shape(), "(3, 2, 1)");
    EXPECT_EQ(plain.Values<float>(), (std::vector<float>{0, 10, 100, 110, 200, 210}));

    const nlohmann::json in = Dab(first)["in"];
    EXPECT_EQ(in["stampMatrix"][13], 9.0);
    EXPECT_FALSE(in.contains("stamp"));
    EXPECT_EQ(image.reads, 1) << "pixels are read again only for another image";
    Begin(first.Bound());
    EXPECT_EQ(image.reads, 2) << "or in another stroke";

    // The name makes it a vector stamp. The last dab uses another image object with the same
    // pixels.
    brush.SetStamp(true, QStringLiteral("horn_VDM.exr"));
    brush.Settings().stampFactor = 2.0f;
    stamp = Dab(first)["in"]["stamp"];
    EXPECT_EQ(stamp["pixels"], "stamp-0002.npy");
    EXPECT_EQ(stamp["factor"], 2.0);
    EXPECT_EQ(NpyArray(options.folder + "/arrays/stamp-0002.npy").Shape(), "(3, 2, 3)");
    SmallImage other;
    brush.image = &other;
    stamp = Dab(first)["in"]["stamp"];
    EXPECT_EQ(stamp["image"], 1);
    EXPECT_EQ(stamp["pixels"], "stamp-0002.npy");
}

TEST_F(TraceRecorderTest, FinishedChangesAreReportedInOrderWithTheirFlags) {
    Begin(first.Bound());
    std::unique_ptr<MeshChange> one(first.Bound()->StartChange());
    std::unique_ptr<MeshChange> two(second.Bound()->StartChange());
    Observed(&Recorder(), BrushCall(BrushCall::EndStroke, brush), [&] {
        two->Finish(true, false);
        one->Finish(false, true);
    });
    const nlohmann::json end = ReadTrace(options.folder).back();
    EXPECT_EQ(end["in"], nlohmann::json::object());
    EXPECT_EQ(end["out"],
              R"({"finished": [["m1", true, false], ["m0", false, true]], "tool": null})"_json);
}

TEST_F(TraceRecorderTest, EveryMeshOfTheSceneHasAState) {
    Begin(first.Bound());
    Recorder().WriteAfter(brush);
    for (const char* state : {"before/m0", "before/m1", "after/m0", "after/m1"})
        EXPECT_TRUE(std::filesystem::exists(options.folder + "/" + state + "/meta.json")) << state;
    EXPECT_EQ(NpyArray(options.folder + "/after/m1/level-0/face_vertex_indices.npy").Shape(),
              "(6, 3)");
}

TEST_F(TraceRecorderTest, UnreportedChangeIsFoundBetweenStrokes) {
    Begin(first.Bound());
    End();
    second.Subdivide();
    Begin(first.Bound());
    const nlohmann::json line = LinesOf(ReadTrace(options.folder), "HostChange").at(0);
    EXPECT_EQ(line["in"], R"({"mesh": "m1", "reason": "host", "state": "change-000001"})"_json);
    EXPECT_TRUE(std::filesystem::exists(options.folder + "/change-000001/m1/meta.json"));
    EXPECT_FALSE(std::filesystem::exists(options.folder + "/change-000001/m0"));
}

TEST_F(TraceRecorderTest, EachMeshThatChangedHasItsOwnState) {
    Begin(first.Bound());
    End();
    Recorder().BeforeCommand(brush, "one");
    first.Bound()->SetFreeze(1, 5);
    Recorder().BeforeCommand(brush, "two");
    second.Bound()->SetFreeze(1, 5);
    first.Bound()->SetFreeze(1, 6);
    Recorder().BeforeCommand(brush, "three");
    Begin(first.Bound());
    const std::vector<nlohmann::json> lines = LinesOf(ReadTrace(options.folder), "HostChange");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]["in"],
              R"({"mesh": "m0", "reason": "one, two", "state": "change-000001"})"_json);
    EXPECT_EQ(lines[1]["in"], R"({"mesh": "m1", "reason": "two", "state": "change-000002"})"_json);
    EXPECT_EQ(NpyArray(options.folder + "/change-000001/m0/freeze.npy").Values<uint8_t>().at(1), 6);
}

TEST_F(TraceRecorderTest, RevertedChangeIsNotReported) {
    Begin(first.Bound());
    End();
    Recorder().BeforeCommand(brush, "freeze");
    first.Bound()->SetFreeze(1, 5);
    Recorder().BeforeCommand(brush, "undo");
    first.Bound()->SetFreeze(1, 0);
    Begin(first.Bound());
    EXPECT_TRUE(LinesOf(ReadTrace(options.folder), "HostChange").empty());
}

TEST_F(TraceRecorderTest, FailureEndsTheTrace) {
    Begin(first.Bound());
    End();
    folder.Fill("t/change-000001", "in the way");
    first.Bound()->SetFreeze(1, 5);
    Begin(first.Bound());
    EXPECT_NE(MessageOf<HostError>([&] { Recorder().ThrowIfFailed(); }).find("change-000001"),
              std::string::npos);
    EXPECT_EQ(ReadTrace(options.folder).size(), 2u) << "nothing is written after a failure";
}

TEST_F(TraceRecorderTest, FolderWithOtherFilesIsRefusedAndAnEarlierTraceReplaced) {
    Begin(first.Bound());
    recorder.reset();
    std::filesystem::create_directories(options.folder + "/dab-000007/m0");
    std::filesystem::create_directories(options.folder + "/change-000007/m0");
    Recorder();
    EXPECT_EQ(TemporaryFolder::Content(options.folder + "/trace.jsonl"), "");
    EXPECT_FALSE(std::filesystem::exists(options.folder + "/dab-000007"));
    EXPECT_FALSE(std::filesystem::exists(options.folder + "/change-000007"));
    EXPECT_FALSE(std::filesystem::exists(options.folder + "/before"));
    recorder.reset();

    folder.Fill("t/work.txt", "mine");
    const std::string reason = MessageOf<HostError>([&] { TraceRecorder refused(options); });
    EXPECT_NE(reason.find("work.txt"), std::string::npos) << reason;
    EXPECT_TRUE(std::filesystem::exists(options.folder + "/trace.jsonl")) << "no file was removed";
}

}  // namespace
}  // namespace trovik::test
