// SPDX-License-Identifier: Apache-2.0
#include "framework/display/PatchPacker.h"
#include "framework/document/Document.h"
#include "framework/io/ContentHash.h"
#include "tests/studio/SurfaceCopy.h"
#include "tests/studio/engine/StudioEngine.h"

#include <QEventLoop>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace trovik::studio {

namespace {

TEST_F(StudioEngine, OpensAMeshAndSendsItsWholeSurface) {
    OpenBust();
    EXPECT_EQ(engine->Document().title, "bust.obj");
    EXPECT_FALSE(engine->Document().bounds.IsEmpty());
    ASSERT_NE(engine->State(), nullptr);
    EXPECT_EQ(engine->State()->levels.size(), 3u);
    ASSERT_NE(engine->Setting("strength"), nullptr);

    std::set<uint32_t> patches;
    std::shared_ptr<const PatchLayout> layout;
    ASSERT_TRUE(WaitFor([&] {
        for (const auto& update : engine->TakeUpdates()) {
            layout = update->layout;
            patches.insert(update->patches.begin(), update->patches.end());
            EXPECT_EQ(update->boxes.size(), update->patches.size());
        }
        return layout != nullptr && patches.size() == layout->PatchCount();
    }));
}

TEST_F(StudioEngine, RefusesAFileThatIsMissingAndKeepsTheDocument) {
    OpenBust();
    OpenRequest request;
    request.meshPath = Path("missing.obj");
    engine->Open(request);
    ASSERT_TRUE(WaitFor([this] { return !failures.empty(); }));
    EXPECT_THAT(failures.first().toStdString(), testing::HasSubstr("missing.obj"));
    EXPECT_EQ(engine->Document().title, "bust.obj");
    Finish();
    EXPECT_EQ(failures.size(), 1);
}

TEST_F(StudioEngine, ReportsAStepThatFailsInPlainWords) {
    OpenBust();
    QString error;
    engine->Run({{"level", 17}}, {}, [&](const QString& reason) { error = reason; });
    ASSERT_TRUE(WaitFor([&] { return !error.isEmpty(); }));
    EXPECT_FALSE(error.contains(QLatin1String("studio:"))) << error.toStdString();
    EXPECT_FALSE(error.contains(QLatin1String("/steps"))) << error.toStdString();
}

TEST_F(StudioEngine, ACopyThatFollowsTheUpdatesEqualsTheSurfaceAfterAllOfThem) {
    OpenBust();
    std::vector<DisplayVertex> copy;
    const auto follow = [&] { FollowUpdates(*engine, copy); };
    Draw({}, 0.4f);
    follow();
    engine->EndStroke();
    engine->Run({{"mirror", {"x"}}});
    Draw({}, 0.5f);
    engine->EndStroke();
    engine->Run({{"undo", 1}});
    engine->Run({{"mask", {{"center", {0, 0, 0}}, {"radius", 0.5}}}});
    Finish();
    engine->Save(Path("work.trovik"));
    Finish();
    // The last change may not have arrived yet.
    QEventLoop loop;
    QTimer::singleShot(100, &loop, &QEventLoop::quit);
    loop.exec();
    follow();
    ASSERT_TRUE(failures.empty()) << failures.first().toStdString();

    const auto saved = trovik::Document::OpenScene(Path("work.trovik"));
    const LevelMesh& level = *saved->Geometry().Bound();
    const PatchLayout layout(level);
    std::vector<DisplayVertex> expected(layout.TotalVertexCount());
    PatchPacker(level, layout).PackAll(expected, 1);
    EXPECT_EQ(copy, expected);
}

TEST_F(StudioEngine, AnAbandonedStrokeLeavesTheSceneAsItWas) {
    OpenBust();
    engine->Run({{"export", {{"file", Path("before.ply")}}}});
    Draw({}, 0.4f);
    engine->AbandonStroke();
    engine->Run({{"export", {{"file", Path("after.ply")}}}});
    Draw({}, 0.4f);
    engine->EndStroke();
    engine->Run({{"export", {{"file", Path("drawn.ply")}}}});
    Finish();
    EXPECT_EQ(HashFile(Path("before.ply")), HashFile(Path("after.ply")));
    EXPECT_NE(HashFile(Path("before.ply")), HashFile(Path("drawn.ply")));
    EXPECT_EQ(engine->State()->history.size(), 1u);
    engine->Run({{"undo", 1}});
    Finish();
    EXPECT_EQ(engine->State()->historyPosition, 0u);
}

TEST_F(StudioEngine, BecomesIdleWhileNobodyTakesTheSurface) {
    OpenBust();
    engine->Run({{"subdivide", 2}});
    ASSERT_TRUE(WaitFor([this] { return engine->IsIdle(); }));
    // Together, the two level changes send more than may wait for the UI thread.
    engine->Run({{"level", 2}});
    engine->Run({{"level", 4}});
    EXPECT_TRUE(WaitFor([this] { return engine->IsIdle(); }));
    std::size_t bytes = 0;
    for (const auto& update : engine->TakeUpdates())
        bytes += update->vertices.size() * sizeof(DisplayVertex);
    EXPECT_GE(bytes, std::size_t{32} << 20);
}

TEST_F(StudioEngine, SendsSettingsOnlyWhenTheyDiffer) {
    OpenBust();
    Finish();
    int settings = 0, states = 0;
    QObject::connect(engine.get(), &Engine::SettingsChanged, [&] { ++settings; });
    QObject::connect(engine.get(), &Engine::StateChanged, [&] { ++states; });
    Draw({}, 0.4f);
    engine->EndStroke();
    engine->Run({{"undo", 1}});
    engine->Run({{"set", {{"radius", engine->State()->tool.radius}}}});
    Finish();
    EXPECT_GE(states, 2);
    EXPECT_EQ(settings, 0);
    engine->Run({{"set", {{"strength", 61}}}});
    Finish();
    EXPECT_EQ(settings, 1);
    EXPECT_EQ(engine->Setting("strength")->value, 61);
}

TEST_F(StudioEngine, WritesACopyThatIsNotTheFileOfTheDocument) {
    OpenBust();
    Draw({}, 0.4f);
    engine->EndStroke();
    bool isDone = false;
    engine->SaveCopy(Path("copy.trovik"), [&](const QString&) { isDone = true; });
    ASSERT_TRUE(WaitFor([&] { return isDone; }));
    Finish();
    EXPECT_TRUE(engine->State()->isModified);
    EXPECT_TRUE(engine->State()->scenePath.empty());
    engine->Save(Path("work.trovik"));
    Finish();
    EXPECT_EQ(HashFile(Path("copy.trovik")), HashFile(Path("work.trovik")));
}

TEST_F(StudioEngine, PicksTheSurfaceUnderThePointer) {
    OpenBust();
    HoverHit hit;
    int count = 0;
    QObject::connect(engine.get(), &Engine::HoverPicked, [&](const HoverHit& picked) {
        hit = picked;
        ++count;
    });
    const StrokeView& view = engine->Document().view;
    engine->Pick(static_cast<float>(view.width) * 0.5f, static_cast<float>(view.height) * 0.5f);
    ASSERT_TRUE(WaitFor([&] { return count == 1; }));
    EXPECT_TRUE(hit.isHit);
    EXPECT_NEAR(hit.normal.Length(), 1.0f, 1e-4f);
    EXPECT_GT(hit.radius, 0.0f);
    engine->Pick(1.0f, 1.0f);
    ASSERT_TRUE(WaitFor([&] { return count == 2; }));
    EXPECT_FALSE(hit.isHit);
}

TEST_F(StudioEngine, CancelsALongStepAndKeepsTheDocument) {
    OpenBust();
    bool isLong = false;
    QObject::connect(engine.get(), &Engine::JobProgressed, [&] {
        isLong = true;
        engine->CancelJob();
    });
    QString error;
    engine->Run({{"subdivide", 4}}, "Subdividing", [&](const QString& reason) { error = reason; });
    ASSERT_TRUE(WaitFor([&] { return !error.isEmpty() || engine->State()->levels.size() == 7; }));
    EXPECT_TRUE(isLong);
    EXPECT_EQ(error, "Cancelled");
    Finish();
}

}  // namespace

}  // namespace trovik::studio
