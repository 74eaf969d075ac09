// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"

#include <QImage>
#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace trovik {
class Document;
class JobControl;
}  // namespace trovik

namespace trovik::studio {

class EngineWorker;

/// Set it to true on the UI thread to cancel the work to which it belongs.
using CancelFlag = std::shared_ptr<std::atomic<bool>>;
/// Receives an image.
using ShowImage = std::function<void(const QImage& image)>;
/// Computes images from a document on the engine thread, and passes each to `show`. It must leave
/// the document as it is, even if it throws. \throw HostError; Cancelled.
using ImageWork = std::function<void(
    trovik::Document& document, const StrokeView& view, JobControl& job, const ShowImage& show)>;

/// The UI thread's access to the document, which has a thread of its own. All functions return at
/// once; requests are carried out in order, and results arrive as signals on the UI thread.
///
/// Steps are those of stroke scripts, for example {"subdivide": 1} or {"layer": {"add": "Skin"}};
/// apart from live strokes, they are the only way in which the studio changes a document. Each step
/// and stroke is recorded in the journal and in the list of actions (SaveActions).
///
/// Call on the UI thread only.
class Engine : public QObject {
    Q_OBJECT
public:
    /// \param journalFolder  receives the journals of documents; empty: no journals are kept.
    explicit Engine(const std::string& journalFolder, QObject* parent = nullptr);
    /// Abandons an open stroke, cancels a running job, closes the journal and joins the thread.
    ~Engine() override;

    // --- Documents ---

    /// Opens a document instead of the current one. Ends with Opened or Failed; after Failed, the
    /// current document is still open.
    void Open(const OpenRequest& request);
    /// Whether a document is open.
    bool HasDocument() const { return opened != nullptr; }
    /// The document that was opened last. Requires HasDocument.
    const OpenedDocument& Document() const { return *opened; }
    /// Sets the preferences, as in stroke scripts, for documents that are opened from now on.
    void SetPreferences(nlohmann::json values) { preferences = std::move(values); }
    /// Saves to a path as the step "save" does; ends with Saved or Failed.
    void Save(const std::string& scenePath);

    // --- Changes ---

    /// Called on the UI thread when a step has finished; `error` is empty, or one line.
    using Done = std::function<void(const QString& error)>;
    /// Writes the actions since the document was opened as a stroke script. Errors are reported by
    /// Failed as well.
    void SaveActions(const std::string& scriptPath, Done done = {});
    /// Runs a step. Errors are reported by Failed as well. Steps that read the view (mask and
    /// visibility by box or lasso, renders) use the view of SetView at the time of this call.
    /// \param label  shown with the progress of a long step; empty: the name of the step.
    void Run(const nlohmann::json& step, const QString& label = {}, Done done = {});
    /// Whether a step runs at once, or waits after each dab of a stroke: then DabShown is sent, and
    /// ContinueDab or ReleaseDabs has to follow.
    enum class Pace { AtOnce, DabByDab };
    /// Runs a step of a script as Run does, but with the view of the script instead of SetView.
    /// Only one step with Pace::DabByDab may be waiting or running.
    void RunOfScript(const nlohmann::json& step, const QString& label, Pace pace, Done done);
    /// Applies the next dab.
    void ContinueDab();
    /// Applies the remaining dabs of the step without waiting.
    void ReleaseDabs();
    /// Runs work that computes images, as a job. An open stroke is released first.
    /// \param cancel  cancels this work, whether it is waiting or running; nothing is called then.
    /// \param shown  called on the UI thread with each image. \param done  receives the error,
    /// which Failed does not report.
    void Compute(
        const QString& label, ImageWork work, CancelFlag cancel, ShowImage shown, Done done);
    /// Sets the view of the viewport. It is cheap and may be called for each frame.
    void SetView(const StrokeView& view);

    // --- Live strokes ---

    void BeginStroke(const StrokeStart& start);
    void AddSamples(std::vector<PenPoint> points);
    /// Reports that the pen rests at its last position. Call it about 60 times a second while the
    /// pen is pressed.
    void Tick(double milliseconds);
    void EndStroke();
    /// Reverts the surface bit-exactly to its state before the stroke.
    void AbandonStroke();

    // --- Jobs ---

    /// Whether a step or another request has been running for longer than 200 ms, so that strokes
    /// and steps would wait.
    bool IsBusy() const { return isBusy; }
    /// Cancels the running request.
    void CancelJob();
    /// Whether all requests so far, including picks, have been carried out and their results have
    /// arrived. Surface updates may still wait for TakeUpdates.
    bool IsIdle() const;

    // --- What panels and viewport show ---

    /// Requests the surface point under a pixel of the view; HoverPicked follows when the engine is
    /// idle. A newer request replaces a pending one.
    void Pick(float x, float y);
    /// Sends the whole surface again, for example after the loss of the graphics context.
    void RequestSurface();
    /// Returns the updates that have arrived, in order, and removes them.
    std::vector<std::shared_ptr<const SurfaceUpdate>> TakeUpdates();
    bool HasUpdates() const;
    /// The newest state; null before the first document.
    const std::shared_ptr<const DocumentState>& State() const { return state; }
    /// The settings of the active tool; null before the first document.
    const std::shared_ptr<const ToolSettingList>& Settings() const { return settings; }
    /// A setting of the active tool by its name ("strength", "stamp.factor"); null if there is
    /// none.
    const ToolSetting* Setting(const std::string& name) const;

Q_SIGNALS:
    void Opened();
    void Saved(const QString& scenePath);
    /// TakeUpdates has something to return. Sent once until TakeUpdates is called.
    void SurfaceArrived();
    /// State returns something new.
    void StateChanged();
    /// Settings returns something new.
    void SettingsChanged();
    void HoverPicked(const trovik::studio::HoverHit& hit);
    void StrokeAdvanced(const trovik::studio::StrokeFigures& figures);
    /// A dab of a step with Pace::DabByDab was applied, and TakeUpdates returns the surface with
    /// it.
    void DabShown();
    /// A job has been running for longer than 200 ms. \param total  0 if unknown.
    void JobProgressed(const QString& label, const QString& phase, quint64 done, quint64 total);
    void BusyChanged(bool busy);
    /// IsIdle has become true.
    void BecameIdle();
    /// Run was called; before the step is carried out.
    void StepRequested(const nlohmann::json& step);
    /// A request failed; the document is unchanged unless the message says otherwise.
    void Failed(const QString& message);
    /// A note, a warning, or a problem that loses no work.
    void Noted(const QString& message);

private:
    friend class EngineWorker;

    std::unique_ptr<EngineWorker> worker;
    std::unique_ptr<const OpenedDocument> opened;
    std::shared_ptr<const DocumentState> state;
    std::shared_ptr<const ToolSettingList> settings;
    nlohmann::json preferences;
    bool isBusy = false;
    /// Number of the newest request that was carried out before the engine thread had no work left.
    uint64_t idleNumber = 0;
};

}  // namespace trovik::studio

Q_DECLARE_METATYPE(trovik::studio::HoverHit)
Q_DECLARE_METATYPE(trovik::studio::StrokeFigures)
