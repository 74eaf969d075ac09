// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests the whole studio with random input. TROVIK_MONKEY_EVENTS is the number of events, and
/// TROVIK_MONKEY_SEED is the seed of the sequence.
#include "commands/Primitives.h"
#include "input/ViewportInput.h"
#include "tests/studio/WaitFor.h"
#include "tests/studio/monkey/Monkey.h"
#include "viewport/ViewportWidget.h"
#include "window/MainWindow.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace trovik::studio::test {

namespace {

constexpr int defaultEvents = 150;
constexpr int defaultSeed = 2;
/// The state is checked after this many events.
constexpr int eventsPerCheck = 250;
constexpr int idleMilliseconds = 300'000;

int NumberOf(const char* variable, int otherwise) {
    bool isNumber = false;
    const int number = qEnvironmentVariableIntValue(variable, &isNumber);
    return isNumber ? number : otherwise;
}

std::string ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Describes the difference between two exported surfaces.
std::string DifferenceOf(const std::string& a, const std::string& b) {
    const std::string end = "end_header\n";
    const std::size_t header = std::min(a.find(end), a.size()) + end.size();
    if (a.size() != b.size() || a.compare(0, header, b, 0, header) != 0)
        return "the levels have different sizes";
    // A vertex consists of a position and a normal, each with three floats. The faces follow.
    constexpr std::size_t vectorBytes = 12;
    const std::string element = "element vertex ";
    const std::size_t count = std::stoul(a.substr(a.find(element) + element.size()));
    std::size_t differences[2] = {0, 0};
    for (std::size_t i = 0; i < 2 * count; ++i) {
        const std::size_t at = header + i * vectorBytes;
        if (a.compare(at, vectorBytes, b, at, vectorBytes) != 0) ++differences[i % 2];
    }
    return std::to_string(differences[0]) + " positions and " + std::to_string(differences[1]) +
           " normals of " + std::to_string(count) + " vertices differ";
}

void ExpectSame(const std::string& surface, const std::string& expected, const std::string& when) {
    EXPECT_TRUE(surface == expected) << when << ": " << DifferenceOf(surface, expected);
}

class MonkeyTest : public testing::Test {
protected:
    MonkeyTest() {
        // Files that the monkey saves or records are written to this folder.
        QDir::setCurrent(folder.path());
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        CommandLine line;
        line.hasNoPreferences = true;
        line.viewportWidth = 420;
        line.viewportHeight = 340;
        studio = std::make_unique<StudioApplication>(line);
        studio->Window().resize(900, 600);
        studio->Start();
        QObject::connect(&studio->GetEngine(), &Engine::Opened, &studio->Window(), [this] {
            isBaseKnown = false;
        });
    }
    ~MonkeyTest() override {
        studio.reset();
        QDir::setCurrent(QDir::rootPath());
    }

    const DocumentState& State() const { return *studio->GetEngine().State(); }

    /// A sphere of 1536 faces, for speed.
    void OpenSmallSphere() {
        OpenRequest request;
        request.meshPath =
            WritePrimitive(Primitive::Sphere, 8, folder.filePath("shapes").toStdString());
        request.levels = 1;
        bool isOpen = false;
        const auto opened = QObject::connect(
            &studio->GetEngine(), &Engine::Opened, &studio->Window(), [&] { isOpen = true; });
        studio->GetEngine().Open(request);
        ASSERT_TRUE(WaitFor([&] { return isOpen; }, idleMilliseconds));
        QObject::disconnect(opened);
    }

    void WaitUntilIdle() {
        // Some dialogs open only after the engine has carried out a request.
        QTimer closing;
        QObject::connect(&closing, &QTimer::timeout, [] {
            if (QWidget* open = QApplication::activeModalWidget()) open->close();
        });
        closing.start(10);
        ASSERT_TRUE(WaitFor(
            [this] {
                return studio->GetEngine().HasDocument() && studio->GetEngine().IsIdle() &&
                       !studio->GetEngine().IsBusy();
            },
            idleMilliseconds));
    }

    void Run(const nlohmann::json& step) {
        QString failure;
        bool isDone = false;
        studio->GetEngine().Run(step, {}, [&](const QString& error) {
            failure = error;
            isDone = true;
        });
        ASSERT_TRUE(WaitFor([&] { return isDone; }, idleMilliseconds));
        ASSERT_TRUE(failure.isEmpty()) << step << ": " << failure.toStdString();
    }

    /// A file with the positions and normals of the current level, bit for bit.
    std::string Surface() {
        const std::string path = folder.filePath("surface.ply").toStdString();
        Run({{"export", {{"file", path}}}});
        return ContentOf(path);
    }

    /// Stores the surface at the start of the history.
    void RememberBase() {
        WaitUntilIdle();
        const auto done = AppliedGroups();
        if (done > 0) Run({{"undo", done}});
        base = Surface();
        baseLevels = State().levels;
        if (done > 0) Run({{"redo", done}});
        isBaseKnown = true;
    }

    /// Number of applied undo steps; steps that are undone together count as one.
    std::ptrdiff_t AppliedGroups() const {
        const auto first = State().history.begin();
        const auto end = first + static_cast<std::ptrdiff_t>(State().historyPosition);
        return std::count_if(
            first, end, [](const HistoryEntry& entry) { return !entry.joinsPrevious; });
    }

    /// Returns the labels of the applied steps.
    std::string History() const {
        std::string labels;
        for (std::size_t i = 0; i < State().historyPosition; ++i)
            labels += (i == 0 ? "" : ", ") + State().history[i].label;
        return labels;
    }

    void CheckThatUndoRestoresTheStart() {
        // Exports the surface first, so that requests that are still queued are counted below.
        const std::string now = Surface();
        WaitUntilIdle();
        const auto done = AppliedGroups();
        const std::string steps = History();
        if (done > 0) Run({{"undo", done}});
        WaitUntilIdle();
        EXPECT_EQ(State().historyPosition, 0u);
        EXPECT_EQ(State().levels, baseLevels);
        ExpectSame(Surface(), base, "after undoing " + steps);
        if (done > 0) Run({{"redo", done}});
        ExpectSame(Surface(), now, "after redoing " + steps);
    }

    void CheckThatTheSceneCanBeRead() {
        const std::string path = folder.filePath("saved.trovik").toStdString();
        Run({{"save", path}});
        Engine second{std::string()};
        QString failure;
        QObject::connect(
            &second, &Engine::Failed, &studio->Window(), [&](const QString& e) { failure = e; });
        OpenRequest request;
        request.scenePath = path;
        second.Open(request);
        ASSERT_TRUE(
            WaitFor([&] { return (second.HasDocument() && second.IsIdle()) || !failure.isEmpty(); },
                    idleMilliseconds));
        ASSERT_TRUE(failure.isEmpty()) << failure.toStdString();
        EXPECT_EQ(second.State()->levels, State().levels);
        EXPECT_EQ(second.State()->currentLevel, State().currentLevel);
        EXPECT_EQ(second.State()->layers, State().layers);
        const std::string copy = folder.filePath("copy.ply").toStdString();
        second.Run({{"export", {{"file", copy}}}});
        ASSERT_TRUE(WaitFor([&] { return second.IsIdle(); }, idleMilliseconds));
        ExpectSame(ContentOf(copy), Surface(), "in the saved scene");
    }

    QTemporaryDir folder;
    std::unique_ptr<StudioApplication> studio;
    bool isBaseKnown = false;
    std::string base;
    std::vector<DocumentState::Level> baseLevels;
};

TEST_F(MonkeyTest, LeavesAValidDocument) {
    const int events = NumberOf("TROVIK_MONKEY_EVENTS", defaultEvents);
    const int seed = NumberOf("TROVIK_MONKEY_SEED", defaultSeed);
    std::printf("TROVIK_MONKEY_SEED=%d TROVIK_MONKEY_EVENTS=%d\n", seed, events);
    Monkey monkey(*studio, static_cast<unsigned>(seed));
    OpenSmallSphere();
    RememberBase();
    for (int sent = 0; sent < events && !HasFatalFailure();) {
        const int count = std::min(eventsPerCheck, events - sent);
        monkey.Send(count);
        sent += count;
        studio->Input().FinishGesture();
        // The viewport menu opens only after the engine has picked the surface.
        WaitUntilIdle();
        ASSERT_TRUE(monkey.CloseAll()) << "a dialog or menu cannot be closed";
        WaitUntilIdle();
        EXPECT_FALSE(State().isStrokeOpen) << "after " << sent << " events";
        EXPECT_FALSE(studio->Input().HasGesture());
        EXPECT_EQ(studio->Input().Keys().Modifiers(), Qt::NoModifier);
        EXPECT_TRUE(studio->Viewport().Problem().isEmpty());
        if (!isBaseKnown) RememberBase();
        CheckThatUndoRestoresTheStart();
        CheckThatTheSceneCanBeRead();
        if (HasFailure()) FAIL() << "after " << sent << " events";
    }
    for (const auto& [kind, count] : monkey.Counts())
        std::printf("%s %d\n", qPrintable(kind), count);
    EXPECT_GT(monkey.Counts().at("pen"), events / 10);
}

}  // namespace

}  // namespace trovik::studio::test
