// SPDX-License-Identifier: Apache-2.0
#include "framework/io/ContentHash.h"
#include "framework/script/ScriptRunner.h"
#include "tests/studio/engine/StudioEngine.h"

namespace trovik::studio {

namespace {

/// Strokes whose dabs take longer than their samples.
class HeavyStroke : public StudioEngine {
protected:
    void OpenHeavy() {
        OpenBust();
        engine->Run({{"subdivide", 1}});
        engine->Run({{"set", {{"radius", 1.5}, {"spacing", 2}, {"strength", 2}}}});
        engine->Run({{"export", {{"file", Path("before.ply")}}}});
        Finish();
        QObject::connect(engine.get(), &Engine::StrokeAdvanced, [this](const StrokeFigures& now) {
            dabs = now.dabs;
        });
    }

    void WaitForDabs() {
        dabs = 0;
        ASSERT_TRUE(WaitFor([this] { return dabs > 0; }));
    }

    void ExpectAsBefore() {
        engine->Run({{"export", {{"file", Path("after.ply")}}}});
        Finish();
        EXPECT_EQ(HashFile(Path("before.ply")), HashFile(Path("after.ply")));
        EXPECT_TRUE(engine->State()->history.size() == 1u);
        EXPECT_TRUE(failures.empty()) << failures.join('\n').toStdString();
    }

    unsigned dabs = 0;
};

TEST_F(HeavyStroke, IsAbandonedWhileItsDabsAreAppliedAfterTheRelease) {
    OpenHeavy();
    Draw({}, 0.4f);
    engine->EndStroke();
    WaitForDabs();
    engine->AbandonStroke();
    ExpectAsBefore();
    // A stroke that is abandoned before the engine has received it leaves no trace either.
    Draw({}, 0.4f);
    engine->EndStroke();
    engine->AbandonStroke();
    ExpectAsBefore();
}

TEST_F(HeavyStroke, IsShownAsBusyAfterTheReleaseAndCanBeCancelled) {
    OpenHeavy();
    bool wasBusy = false;
    QObject::connect(engine.get(), &Engine::BusyChanged, [&](bool isBusy) {
        if (!isBusy || wasBusy) return;
        wasBusy = true;
        EXPECT_TRUE(engine->AcceptsStrokes());
        engine->CancelJob();
    });
    Draw({}, 0.4f, 400);
    engine->EndStroke();
    ASSERT_TRUE(WaitFor([&] { return wasBusy; }));
    ExpectAsBefore();
}

TEST_F(HeavyStroke, LetsTheSurfaceArriveBetweenItsDabs) {
    OpenHeavy();
    engine->TakeUpdates();
    Draw({}, 0.4f);
    engine->EndStroke();
    unsigned updates = 0;
    ASSERT_TRUE(WaitFor([&] {
        updates += static_cast<unsigned>(engine->TakeUpdates().size());
        return engine->IsIdle();
    }));
    EXPECT_GT(updates, 5u);
}

TEST_F(HeavyStroke, KeepsTheOrderOfRequestsThatWaitForIt) {
    OpenHeavy();
    engine->Run({{"set", {{"spacing", 8}}}});
    Draw({}, 0.4f);
    engine->EndStroke();
    engine->Run({{"layer", {{"add", "Skin"}}}});
    Draw({}, 0.5f, 10);
    // Running a step ends the stroke, although the pen has not been released.
    engine->Run({{"mirror", {"x"}}});
    engine->EndStroke();
    Finish();
    ASSERT_EQ(engine->State()->history.size(), 4u);
    EXPECT_EQ(engine->State()->layers.size(), 1u);
    engine->Save(Path("work.trovik"));
    engine->SaveActions(Path("work.json"));
    Finish();
    ASSERT_TRUE(failures.empty()) << failures.first().toStdString();
    ScriptRunner runner(Path("work.json"), folder.path().toStdString(), {});
    runner.Run();
    runner.Save(Path("replayed.trovik"));
    EXPECT_EQ(HashFile(Path("work.trovik")), HashFile(Path("replayed.trovik")));
}

TEST_F(HeavyStroke, IsUndoneWhenItsMirroredSidesAreCancelled) {
    OpenBust();
    engine->Run(
        {{"tool", "Flatten"}, {"set", {{"radius", 1.0}, {"spacing", 4}, {"globalPlane", true}}}});
    engine->Run({{"mirror", {{"axis", "y"}, {"radial", 12}}}});
    engine->Run({{"export", {{"file", Path("before.ply")}}}});
    Finish();
    if (!failures.empty()) GTEST_FAIL() << failures.first().toStdString();
    bool isMirroring = false;
    QObject::connect(engine.get(),
                     &Engine::JobProgressed,
                     [&](const QString&, const QString& phase, quint64, quint64) {
                         if (phase != QLatin1String("Applying mirrored dabs")) return;
                         isMirroring = true;
                         engine->CancelJob();
                     });
    Draw({}, 0.4f, 100);
    engine->EndStroke();
    ASSERT_TRUE(WaitFor([&] { return isMirroring || engine->IsIdle(); }));
    EXPECT_TRUE(isMirroring);
    engine->Run({{"export", {{"file", Path("after.ply")}}}});
    Finish();
    EXPECT_EQ(HashFile(Path("before.ply")), HashFile(Path("after.ply")));
    EXPECT_TRUE(engine->State()->history.empty());
}

}  // namespace

}  // namespace trovik::studio
