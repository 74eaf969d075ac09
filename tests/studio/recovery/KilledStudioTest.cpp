// SPDX-License-Identifier: Apache-2.0

/// \file Tests that the program, when it is started again after SIGKILL has killed it during work,
/// offers to recover the work, and restores the surface bit for bit as it was after the last
/// finished dab.
#include "StudioApplication.h"
#include "commands/Preferences.h"
#include "framework/document/Document.h"
#include "framework/journal/JournalContent.h"
#include "framework/script/ScriptDocument.h"
#include "framework/script/ScriptRunner.h"
#include "tests/SourceFolder.h"
#include "tests/studio/sessions/StudioSession.h"
#include "window/RecoveryDialog.h"

#include <QApplication>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <gtest/gtest.h>

#include <exception>
#include <filesystem>
#include <optional>

namespace trovik::studio::test {

namespace {

namespace fs = std::filesystem;

/// Places a dab every hundredth of the radius, so that the stroke has several hundred dabs.
const char* const brush =
    R"({"tool": "Wax", "set": {"radius": 0.3, "strength": 10, "spacing": 1}})";

/// Positions of the current level, bit for bit.
std::string BitsOf(trovik::Document& document) {
    const LevelMesh& level = *document.Geometry().Bound();
    std::string bits;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector position = level.Position(v);
        bits.append(reinterpret_cast<const char*>(&position), sizeof position);
    }
    return bits;
}

struct EndOfWork : std::exception {};

/// Ends a replay by throwing after a given number of dabs.
class DabLimit final : public StrokeInputListener {
public:
    explicit DabLimit(uint32_t dabs) : left(dabs) {}
    void OnStrokeBegun(BrushOperation::Modifier, uint64_t) override {}
    void OnDab(const StrokeDab&, bool) override {
        if (--left == 0) throw EndOfWork();
    }
    void OnWholeMesh(float, bool) override {}
    void OnReverted() override {}
    void OnStrokeEnded(bool) override {}

private:
    uint32_t left;
};

class KilledStudio : public testing::Test {
protected:
    void SetUp() override {
        qputenv("XDG_STATE_HOME", folder.filePath("state").toUtf8());
        qputenv("XDG_DATA_HOME", folder.filePath("data").toUtf8());
        mesh = trovik::test::SourceFolder() + "/examples/meshes/bust.obj";
    }
    void TearDown() override {
        child.kill();
        child.waitForFinished();
    }

    std::string Path(const char* name) const { return folder.filePath(name).toStdString(); }
    static fs::path Journals() { return StudioFolders::Journals().toStdString(); }

    /// Starts the program, which plays the events on the bust.
    void Start(int levels, const std::vector<TimedInput>& events) {
        EventFile file;
        file.viewport = viewportSize;
        file.events = {{0, OpenInput{mesh, {}, levels}}, {0, WaitInput{}}, {0, BustCamera()}};
        file.events.insert(file.events.end(), events.begin(), events.end());
        WriteEventFile(file, Path("work.events.json"));
        child.setProcessChannelMode(QProcess::ForwardedChannels);
        child.start(QStringLiteral(TROVIK_STUDIO_PATH),
                    {"--no-preferences", "--play", folder.filePath("work.events.json")});
        ASSERT_TRUE(child.waitForStarted());
    }

    template <typename Condition>
    void KillWhen(Condition condition) {
        ASSERT_TRUE(StudioSession::WaitFor([&] {
            return child.state() == QProcess::NotRunning || condition();
        })) << "the program did not get to this point";
        ASSERT_EQ(child.state(), QProcess::Running);
        child.kill();
        child.waitForFinished();
        ASSERT_EQ(child.exitStatus(), QProcess::CrashExit);
    }

    /// The part of the bust's journal written so far; empty if there is none.
    static std::optional<JournalContent> Journal() {
        std::error_code none;
        for (const auto& file : fs::directory_iterator(Journals(), none)) {
            if (file.path().extension() != ".journal") continue;
            try {
                JournalContent content = ReadJournal(file.path().string(), true);
                if (content.base.source.ends_with("bust.obj")) return content;
            } catch (const std::exception&) {
                // It is being created.
            }
        }
        return std::nullopt;
    }

    static uint32_t DabsIn(const JournalContent& content) {
        uint32_t dabs = 0;
        for (const JournalStep& step : content.steps)
            if (step.step.is_null()) dabs += step.dabs;
        return dabs;
    }

    /// The surface after the first `dabs` dabs of a session that plays all of `events`.
    std::string Expected(int levels, const std::vector<TimedInput>& events, uint32_t dabs) {
        {
            StudioSession session;
            OpenRequest request;
            request.meshPath = mesh;
            request.levels = levels;
            session.engine.Open(request);
            EXPECT_TRUE(session.WaitUntilIdle());
            EXPECT_EQ(session.Play(events), "");
            session.engine.SaveActions(Path("expected.json"));
            EXPECT_TRUE(session.WaitUntilIdle());
        }
        const nlohmann::json script = ReadStrokeScript(Path("expected.json"));
        ScriptRunner runner(Path("expected.json"), folder.path().toStdString(), {});
        runner.Open(script);
        DabLimit limit(dabs);
        runner.GetDocument().SetInputListener(&limit);
        try {
            for (std::size_t i = 0; i < script.at("steps").size(); ++i)
                runner.Do(script.at("steps").at(i), i);
        } catch (const EndOfWork&) {
        }
        runner.GetDocument().SetInputListener(nullptr);
        return BitsOf(runner.GetDocument());
    }

    /// Starts the program again, recovers the work that it offers, and saves it.
    std::string Recovered() {
        CommandLine line;
        line.hasNoPreferences = true;
        StudioApplication studio(line);
        bool isOffered = false;
        QTimer answer;
        QObject::connect(&answer, &QTimer::timeout, [&] {
            auto* dialog = qobject_cast<RecoveryDialog*>(QApplication::activeModalWidget());
            if (dialog == nullptr) return;
            answer.stop();
            isOffered = true;
            // The dialog lists one recoverable work and its steps.
            const auto lists = dialog->findChildren<QListWidget*>();
            EXPECT_EQ(lists.at(0)->count(), 1);
            EXPECT_GE(lists.at(1)->count(), 1);
            for (auto* button : dialog->findChildren<QPushButton*>())
                if (button->isDefault()) button->click();
        });
        answer.start(20);
        studio.Start();
        EXPECT_TRUE(StudioSession::WaitFor([&] { return studio.GetEngine().HasDocument(); }));
        EXPECT_TRUE(isOffered);
        EXPECT_TRUE(studio.GetEngine().Document().isRecovered);
        studio.GetEngine().Save(Path("recovered.trovik"));
        EXPECT_TRUE(StudioSession::WaitFor([&] { return studio.GetEngine().IsIdle(); }));
        return BitsOf(*trovik::Document::OpenScene(Path("recovered.trovik")));
    }

    QTemporaryDir folder;
    std::string mesh;
    QProcess child;
};

TEST_F(KilledStudio, LosesNoFinishedDabOfAStroke) {
    const auto stroke = PenStroke(260.0, 100, 100);
    const auto events = Joined({{Step(brush)}, stroke});
    Start(1, events);
    KillWhen([] {
        const auto journal = Journal();
        return journal && DabsIn(*journal) >= 8;
    });
    const auto journal = Journal();
    ASSERT_TRUE(journal.has_value());
    ASSERT_FALSE(journal->steps.back().endsStroke);
    const uint32_t dabs = DabsIn(*journal);
    const std::string expected = Expected(1, events, dabs);
    EXPECT_TRUE(Recovered() == expected);
    EXPECT_TRUE(Expected(1, events, dabs + 1) != expected);
    // The work was saved and the program ended normally.
    EXPECT_TRUE(fs::is_empty(Journals()));
}

TEST_F(KilledStudio, LosesNothingDuringASave) {
    // Large, so that the save takes a while.
    const auto stroke =
        Joined({{Step(brush)}, PenStroke(260.0, 100, 12), {Step(R"({"subdivide": 3})")}});
    const std::string save = R"({"save": ")" + Path("saved.trovik") + "\"}";
    Start(1, Joined({stroke, {Step(save.c_str())}}));
    const auto isSaving = [&] {
        for (const auto& file : fs::directory_iterator(folder.path().toStdString()))
            if (file.path().filename().string().find(".part.") != std::string::npos &&
                file.path().filename().string().starts_with("saved"))
                return true;
        return false;
    };
    KillWhen(isSaving);
    ASSERT_TRUE(isSaving()) << "the save was complete before the program was killed";
    EXPECT_FALSE(fs::exists(Path("saved.trovik")));
    const auto journal = Journal();
    ASSERT_TRUE(journal.has_value());
    EXPECT_TRUE(Recovered() == Expected(1, stroke, DabsIn(*journal) + 1));
}

TEST_F(KilledStudio, LosesNothingDuringASubdivision) {
    const auto stroke = Joined({{Step(brush)}, PenStroke(260.0, 100, 12)});
    Start(1, Joined({stroke, {Step(R"({"subdivide": 3})")}}));
    KillWhen([] {
        const auto journal = Journal();
        return journal && !journal->steps.empty() && journal->steps.back().step.is_object() &&
               journal->steps.back().step.contains("subdivide");
    });
    const auto journal = Journal();
    ASSERT_TRUE(journal.has_value());
    ASSERT_FALSE(journal->steps.back().isOver)
        << "the subdivision was complete before the program was killed";
    EXPECT_TRUE(Recovered() == Expected(1, stroke, DabsIn(*journal) + 1));
}

}  // namespace

}  // namespace trovik::studio::test
