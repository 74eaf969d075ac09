// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/ActionLog.h"
#include "engine/ActionStart.h"
#include "engine/EngineRequests.h"
#include "engine/SurfaceFeed.h"
#include "framework/document/DocumentObserver.h"
#include "framework/document/DocumentStroke.h"
#include "framework/script/ScriptRunner.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace trovik::studio {

/// An open document with its journal, its action log and its live stroke. Used on the engine thread
/// only.
class LiveSession {
public:
    /// Opens a document. \param journalPath  path of the journal to write; if empty, no journal is
    /// written. \throw HostError; Cancelled.
    LiveSession(const OpenRequest& request,
                const std::string& journalPath,
                const ScriptProgress& progress);
    /// Ends an open stroke. Unless Close was called, the journal remains as after a crash.
    ~LiveSession();
    LiveSession(const LiveSession&) = delete;
    LiveSession& operator=(const LiveSession&) = delete;

    trovik::Document& GetDocument() { return runner.GetDocument(); }
    SurfaceFeed& Feed() { return *feed; }
    const OpenedDocument& Opened() const { return opened; }

    /// Runs a step. No stroke may be open.
    /// \param view  the view that the step uses; if empty, the view of the document.
    /// \throw HostError; Cancelled.
    void Run(const nlohmann::json& step, const std::optional<StrokeView>& view);
    /// Begins a stroke. No other stroke may be open.
    /// \param poll  called regularly while mirrored sides are applied after the release. If it
    /// throws Cancelled, the stroke is abandoned. \throw HostError
    void BeginStroke(const StrokeStart& start, std::function<void()> poll);
    /// Has no effect if no stroke is open. \throw HostError, after which the stroke has ended.
    void AddSamples(const std::vector<PenPoint>& points);
    void Tick(double milliseconds);
    /// Applies dabs that AddSamples or ReleaseStroke could not apply within its time budget.
    void Continue();
    /// Releases the stroke, which accepts no further samples, and applies dabs within the time
    /// budget of a turn. The stroke is open until Continue has applied all of them.
    void ReleaseStroke();
    /// Reverts the surface bit-exactly to its state before the stroke, which may already have been
    /// released.
    void AbandonStroke();
    bool HasStroke() const { return stroke.has_value(); }
    bool IsReleased() const { return isReleased; }
    bool HasBacklog() const { return hasBacklog; }
    const StrokeFigures& Figures() const { return figures; }

    /// The surface under a pixel of a view.
    HoverHit Pick(const StrokeView& view, float x, float y);

    /// Whether settings of the brush, its tools or symmetry may have changed since the last call.
    bool TakeToolChange() { return std::exchange(tools.hasChanged, false); }

    /// Writes the steps and strokes since the document was opened as a script; see ActionLog.
    /// \return the copy of the opened file that was written next to the script, because that file
    /// has been replaced or will be removed; empty if none was needed. \throw HostError
    std::string SaveActions(const std::string& path) const;
    /// Writes a scene file that does not become the file of the document.
    void SaveCopy(const std::string& path, JobControl* job);
    /// The reason why the journal is not being written; empty while it is being written and if no
    /// journal is kept.
    std::string JournalFailure();
    /// Whether there is room on the disk for the scene from which a failed journal continues.
    bool HasRoomForJournal();
    /// Continues a failed journal from a snapshot. \throw HostError; Cancelled.
    void ResumeJournal();

    /// Closes the session normally: applies the rest of an open stroke, closes the journal, and
    /// removes it with the files that belong to it.
    void Close();

private:
    struct ToolWatch final : DocumentObserver {
        bool hasChanged = true;
        void ToolChanged() override { hasChanged = true; }
    };

    /// Applies all dabs of an open stroke and ends it.
    void ApplyStroke();
    void FinishStroke();
    void RevertUnfinishedMirrors();
    const UndoStep* NewestUndoStep();
    void ShowView(const StrokeView& view);
    void Do(const nlohmann::json& step);
    /// Calls work() on the open stroke, if there is one. Any exception ends the stroke.
    template <typename Work>
    void Stroke(Work work);
    void NoteDabs(unsigned before, std::chrono::steady_clock::time_point begin);
    void EndAfterError();
    void SelectToolBefore();

    ScriptRunner runner;
    std::string journal;
    /// The journal whose recovered work was opened; empty if there is none.
    std::string recoveredJournal;
    OpenedDocument opened;
    ToolWatch tools;
    std::optional<SurfaceFeed> feed;
    std::optional<ActionLog> actions;
    std::optional<ActionStart> actionStart;

    std::optional<DocumentStroke> stroke;
    StrokeStart strokeStart;
    uint64_t strokeSeed = 0;
    std::vector<PenPoint> strokePoints;
    /// The tool to select again when the stroke ends; if empty, the tool does not change.
    std::string toolBefore;
    const UndoStep* newestBefore = nullptr;
    bool isReleased = false;
    bool hasBacklog = false;
    StrokeFigures figures;
};

}  // namespace trovik::studio
