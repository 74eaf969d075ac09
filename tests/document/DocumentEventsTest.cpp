// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/MapDisplacement.h"
#include "framework/errors/HostError.h"
#include "tests/document/SculptedDocument.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace trovik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Records the names of events.
class EventLog final : public DocumentObserver {
public:
    void SurfaceChanged(const SurfaceChange& change) override {
        names.push_back(change.all ? "surface all" : "surface");
    }
    void LevelsChanged() override { names.push_back("levels"); }
    void LayersChanged() override { names.push_back("layers"); }
    void HistoryChanged() override { names.push_back("history"); }
    void ToolChanged() override { names.push_back("tool"); }
    void CameraChanged() override { names.push_back("camera"); }
    void ModifiedChanged(bool modified) override {
        names.push_back(modified ? "modified" : "unmodified");
    }
    void Problem(const std::string& message) override { names.push_back(message); }

    /// The events since the last call, except for those of the surface.
    std::vector<std::string> Take() {
        std::vector<std::string> taken;
        for (const std::string& name : names)
            if (name.rfind("surface", 0) != 0) taken.push_back(name);
        names.clear();
        return taken;
    }

    std::vector<std::string> names;
};

class DocumentEvents : public testing::Test {
protected:
    DocumentEvents() : document(SphereDocument()) { document->AddObserver(log); }
    ~DocumentEvents() override { document->RemoveObserver(log); }

    std::unique_ptr<Document> document;
    EventLog log;
};

TEST_F(DocumentEvents, StrokeChangesTheHistoryAtItsEnd) {
    BeginStroke(*document, BrushOperation::ModifierNone, std::nullopt);
    Dab(*document, {0, 0, 1});
    EXPECT_THAT(log.Take(), IsEmpty());
    document->Loop().End();
    EXPECT_THAT(log.Take(), ElementsAre("history", "modified"));
    Stroke(*document, {1, 0, 0});
    EXPECT_THAT(log.Take(), ElementsAre("history"));
}

TEST_F(DocumentEvents, StrokeThatMovesNothingSendsNone) {
    BeginStroke(*document, BrushOperation::ModifierNone, std::nullopt);
    document->Loop().End();
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(DocumentEvents, LevelChangeReportsTheLayersOfTheLevel) {
    document->Subdivide();
    EXPECT_THAT(log.Take(), ElementsAre("levels", "layers", "history", "modified"));
    document->BindLevel(0);
    EXPECT_THAT(log.Take(), ElementsAre("levels", "layers", "history"));
    document->BindLevel(0);
    EXPECT_THAT(log.Take(), IsEmpty());
    document->DeleteLevels(false);
    EXPECT_THAT(log.Take(), ElementsAre("levels", "layers", "history"));
}

TEST_F(DocumentEvents, ReportLayersAndTheirProperties) {
    document->AddLayer("wrinkles");
    EXPECT_THAT(log.Take(), ElementsAre("layers", "history", "modified"));
    document->SetLayerStrength(0.5f);
    EXPECT_THAT(log.Take(), ElementsAre("layers", "history"));
    document->SelectLayer("");
    EXPECT_THAT(log.Take(), ElementsAre("layers", "history"));
    document->Undo();
    EXPECT_THAT(log.Take(), ElementsAre("layers", "history"));
}

TEST_F(DocumentEvents, UndoToTheSavedStateIsUnmodified) {
    const TemporaryFolder folder;
    Stroke(*document, {0, 0, 1});
    document->Save(folder.Path("a.trovik"));
    EXPECT_THAT(log.Take(), ElementsAre("history", "modified", "unmodified"));
    Stroke(*document, {1, 0, 0});
    EXPECT_TRUE(document->IsModified());
    document->Undo();
    EXPECT_FALSE(document->IsModified());
    document->Undo();
    EXPECT_TRUE(document->IsModified());
    document->Redo();
    EXPECT_THAT(log.Take(),
                ElementsAre("history",
                            "modified",
                            "history",
                            "unmodified",
                            "history",
                            "modified",
                            "history",
                            "unmodified"));
    document->Undo();
    Stroke(*document, {0, 1, 0});
    EXPECT_TRUE(document->IsModified()) << "another state with the same number of steps";
    document->Reset();
    EXPECT_TRUE(document->IsModified());
    EXPECT_FALSE(Document::OpenScene(folder.Path("a.trovik"))->IsModified());
}

TEST_F(DocumentEvents, ReportToolSymmetryAndCamera) {
    document->SelectTool("Wax");
    document->SetMirrors({{0}});
    document->UpdateCamera();
    EXPECT_THAT(log.Take(), ElementsAre("tool", "tool", "camera"));
    EXPECT_FALSE(document->SelectTool("Nothing"));
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(DocumentEvents, ResetReplacesTheSurface) {
    document->Subdivide();
    log.Take();
    document->Reset();
    EXPECT_EQ(log.names.front(), "surface all");
    EXPECT_THAT(log.Take(), ElementsAre("levels", "layers", "history"));
}

TEST_F(DocumentEvents, RefusedOperationsDuringAStrokeSendNone) {
    document->Subdivide();
    BeginStroke(*document, BrushOperation::ModifierNone, std::nullopt);
    Dab(*document, {0, 0, 1});
    log.Take();
    const std::string before = BitsOf(*document);
    const std::function<void()> refused[] = {[&] { document->Undo(); },
                                             [&] { document->JumpTo(0); },
                                             [&] { document->BindLevel(0); },
                                             [&] { document->AddLayer("a"); },
                                             [&] { document->SelectTool("Wax"); },
                                             [&] { document->Reset(); },
                                             [&] { document->ClearHistory(); },
                                             [&] { document->SetTransform(MatrixTransform()); },
                                             [&] { document->Displace(DisplacementOptions{}); },
                                             [&] { document->WriteScene("refused.trovik"); },
                                             [&] { document->Save("refused.trovik"); }};
    for (const auto& work : refused) EXPECT_THROW(work(), HostError);
    EXPECT_THAT(log.Take(), IsEmpty());
    EXPECT_EQ(BitsOf(*document), before);
    EXPECT_TRUE(document->IsStrokeOpen());
    document->Loop().End();
}

TEST_F(DocumentEvents, ObserverMayRemoveObservers) {
    EventLog second;
    struct Remover final : DocumentObserver {
        Document* document;
        DocumentObserver* other;
        void CameraChanged() override {
            document->RemoveObserver(*this);
            document->RemoveObserver(*other);
        }
    } remover;
    remover.document = document.get();
    remover.other = &second;
    document->AddObserver(remover);
    document->AddObserver(second);
    document->UpdateCamera();
    document->UpdateCamera();
    EXPECT_THAT(log.Take(), ElementsAre("camera", "camera"));
    EXPECT_THAT(second.names, IsEmpty());
}

TEST_F(DocumentEvents, ProblemsReachEveryObserver) {
    EventLog second;
    document->AddObserver(second);
    document->ReportProblem("the disk is full");
    document->RemoveObserver(second);
    EXPECT_THAT(log.Take(), ElementsAre("the disk is full"));
    EXPECT_THAT(second.names, ElementsAre("the disk is full"));
}

/// A journal that only counts the notifications of the document.
class CountingJournal final : public DocumentJournal {
public:
    void OnStrokeBegun(BrushOperation::Modifier, uint64_t) override { ++begun; }
    void OnDab(const StrokeDab&, bool) override { ++dabs; }
    void OnWholeMesh(float, bool) override {}
    void OnReverted() override {}
    void OnStrokeEnded(bool) override { ++ended; }
    void OnSceneWritten(const std::string& scene,
                        const std::string& temporary,
                        JobControl*) override {
        if (refuses) throw HostError("no journal");
        written = scene;
        existed = !TemporaryFolder::Content(temporary).empty();
    }
    void OnSaved(const std::string& scene) override { saved = scene; }

    int begun = 0, dabs = 0, ended = 0;
    bool refuses = false;
    bool existed = false;
    std::string written, saved;
};

TEST_F(DocumentEvents, JournalReceivesStrokesAndSaves) {
    const TemporaryFolder folder;
    CountingJournal journal;
    document->SetJournal(&journal);
    Stroke(*document, {0, 0, 1});
    EXPECT_EQ(journal.begun * 100 + journal.dabs * 10 + journal.ended, 111);
    document->WriteScene(folder.Path("copy.trovik"));
    EXPECT_EQ(journal.written, "");
    document->Save(folder.Path("a.trovik"));
    EXPECT_EQ(journal.written, folder.Path("a.trovik"));
    EXPECT_EQ(journal.saved, folder.Path("a.trovik"));
    EXPECT_TRUE(journal.existed);
    journal.refuses = true;
    EXPECT_THROW(document->Save(folder.Path("b.trovik")), HostError);
    EXPECT_EQ(journal.saved, folder.Path("a.trovik"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("b.trovik")));
    document->SetJournal(nullptr);
    Stroke(*document, {0, 0, 1});
    EXPECT_EQ(journal.begun, 1);
}

}  // namespace
}  // namespace trovik::test
