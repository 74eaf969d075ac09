// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/ActionLog.h"
#include "engine/EngineRequests.h"
#include "engine/SurfaceFeed.h"
#include "framework/document/DocumentStroke.h"
#include "framework/script/ScriptRunner.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace trovik::studio {

/// An open document with its journal, its list of actions and its live stroke. Used on the engine
/// thread only.
class LiveSession {
public:
    /// Opens a document. \param journalPath  of the journal to keep; empty: none.
    /// \throw HostError; Cancelled.
    LiveSession(const OpenRequest& request,
                const std::string& journalPath,
                const ScriptProgress& progress);
    /// Ends an open stroke. Unless Close was called, the journal is left as after a crash.
    ~LiveSession();
    LiveSession(const LiveSession&) = delete;
    LiveSession& operator=(const LiveSession&) = delete;

    trovik::Document& GetDocument() { return runner.GetDocument(); }
    SurfaceFeed& Feed() { return *feed; }
    const ActionLog& Actions() const { return *actions; }
    const OpenedDocument& Opened() const { return opened; }

    /// Runs a step; an open stroke is released first.
    /// \param view  that the step sees; empty: the document's.
    /// \throw HostError; Cancelled.
    void Run(const nlohmann::json& step, const std::optional<StrokeView>& view);
    /// \throw HostError
    void BeginStroke(const StrokeStart& start);
    /// Has no effect if no stroke is open. \throw HostError; the stroke has then ended.
    void AddSamples(const std::vector<PenPoint>& points);
    void Tick(double milliseconds);
    /// Applies dabs that AddSamples could not apply within its time budget.
    void Continue();
    void EndStroke();
    void AbandonStroke();
    bool HasStroke() const { return stroke.has_value(); }
    bool HasBacklog() const { return hasBacklog; }
    const StrokeFigures& Figures() const { return figures; }

    /// The surface under a pixel of a view.
    HoverHit Pick(const StrokeView& view, float x, float y);

    /// Ends the work normally: closes and removes the journal.
    void Close();

private:
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
    OpenedDocument opened;
    std::optional<SurfaceFeed> feed;
    std::optional<ActionLog> actions;

    std::optional<DocumentStroke> stroke;
    StrokeStart strokeStart;
    uint64_t strokeSeed = 0;
    std::vector<PenPoint> strokePoints;
    /// The tool to select again when the stroke ends; if empty, the tool does not change.
    std::string toolBefore;
    bool hasBacklog = false;
    StrokeFigures figures;
};

/// The path of the document image that is stored next to the journal, for recovery after a crash.
std::string PicturePathOf(const std::string& journalPath);

}  // namespace trovik::studio
