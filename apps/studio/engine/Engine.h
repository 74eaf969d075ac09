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

/// The UI thread's interface to the document, which lives on the engine thread. All functions
/// return immediately; requests are carried out in order, and results arrive as signals on the UI
/// thread.
///
/// Steps are stroke-script steps, for example {"subdivide": 1} or {"layer": {"add": "Skin"}}. Apart
/// from live strokes, they are the only way in which the studio changes a document. Each step and
/// stroke is recorded in the journal and in the list of actions (SaveActions).
///
/// Call on the UI thread only.
class Engine : public QObject {
    Q_OBJECT
public:
    /// \param journalFolder  for the journals of documents; empty: no journals are written.
    explicit Engine(const std::string& journalFolder, QObject* parent = nullptr);
    /// Cancels an open stroke, cancels a running job, closes the journal and joins the thread.
    ~Engine() override;

    // --- Documents ---

    /// Opens a document instead of the current one. Ends with Opened or Failed; after Failed, the
    /// current document is still open.
    void Open(const OpenRequest& request);
    /// Whether a document is open.
    bool HasDocument() const { return opened != nullptr; }
    /// The most recently opened document. Requires HasDocument.
    const OpenedDocument& Document() const { return *opened; }
    /// Sets the preferences, as in stroke scripts, for documents opened from now on.
    void SetPreferences(nlohmann::json values) { preferences = std::move(values); }
    /// Saves to a path, like the step "save"; ends with Saved or Failed.
    void Save(const std::string& scenePath);
    /// Called on the UI thread when a request has finished; `error` is empty, or one line.
    using Done = std::function<void(const QString& error)>;
    /// Writes a scene file that does not become the file of the document. Errors are also reported
    /// by Failed.
    void SaveCopy(const std::string& scenePath, Done done = {});
    /// Called on the UI thread when a script has been written. \param start  the copy of the opened
    /// file that was written next to the script; empty if none was needed.
    using ActionsDone = std::function<void(const QString& error, const QString& start)>;
    /// Writes the actions since the document was opened as a stroke script. If the opened file has
    /// been replaced since, for example by a save, the script starts from a copy of its original
    /// content, NAME.start.EXTENSION. Errors are also reported by Failed.
    void SaveActions(const std::string& scriptPath, ActionsDone done = {});

    // --- Changes ---

    /// Runs a step. Errors are also reported by Failed. Steps that read the view (mask and
    /// visibility by box or lasso, renders) use the view that was last passed to SetView before
    /// this call.
    /// \param label  shown with the progress of a long step; empty: the name of the step.
    void Run(const nlohmann::json& step, const QString& label = {}, Done done = {});
    /// Whether a step runs at once, or waits after each dab of a stroke: then DabShown is sent, and
    /// ContinueDab or ReleaseDabs has to follow.
    enum class Pace { AtOnce, DabByDab };
    /// Runs a step of a script as Run does, but with the view of the script instead of that of
    /// SetView. Only one step with Pace::DabByDab may be waiting or running.
    void RunOfScript(nlohmann::json step, const QString& label, Pace pace, Done done);
    /// Applies the next dab.
    void ContinueDab();
    /// Applies the remaining dabs of the step without waiting.
    void ReleaseDabs();
    /// Runs work that does not use the document, such as reading a file, on the engine thread as a
    /// job. \param work  may throw HostError. \param done  receives the error, which Failed does
    /// not report.
    void Prepare(const QString& label, std::function<void()> work, Done done);
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
    /// Reports that the pen is still at its last position. Call this about 60 times a second while
    /// the pen is pressed.
    void Tick(double milliseconds);
    void EndStroke();
    /// Reverts the surface bit-exactly to its state before the newest stroke, unless all of its
    /// dabs have been applied: while the stroke is open, and also after its release while its dabs
    /// are still being applied.
    void AbandonStroke();

    // --- Jobs ---

    /// Whether a step or another request has been running for longer than 200 ms, so that strokes
    /// and steps would wait.
    bool IsBusy() const { return busyRequest != 0; }
    /// Cancels the request that BusyChanged or JobProgressed reported last. If it has ended
    /// meanwhile, the call has no effect on the requests after it. Cancelling the rest of a
    /// released stroke abandons the stroke.
    void CancelJob();
    /// Whether a new stroke would begin soon: the engine is not busy, or is busy only with earlier
    /// strokes.
    bool AcceptsStrokes() const;
    /// Whether all requests so far, including picks, have been carried out and their results have
    /// arrived. Surface updates may still wait for TakeUpdates.
    bool IsIdle() const;

    // --- Journal ---

    /// Why the journal of the document is not being written, in one line; empty while it is. The
    /// engine tries to continue it from time to time.
    const QString& JournalFailure() const { return journalFailure; }
    /// Tries to continue the journal now. Errors are reported by Noted.
    void ResumeJournal();

    // --- What panels and viewport show ---

    /// Requests the surface point under a pixel of the view; HoverPicked follows when the engine is
    /// idle. A newer request replaces a pending one.
    void Pick(float x, float y);
    /// Sends the whole surface again, for example after the graphics context was lost.
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
    /// A document is about to be requested by Open.
    void OpenRequested();
    void Opened();
    void Saved(const QString& scenePath);
    /// Updates are available from TakeUpdates. Sent once until TakeUpdates is called.
    void SurfaceArrived();
    /// State returns a new value.
    void StateChanged();
    /// Settings returns a new value.
    void SettingsChanged();
    void HoverPicked(const trovik::studio::HoverHit& hit);
    void StrokeAdvanced(const trovik::studio::StrokeFigures& figures);
    /// JournalFailure returns a new value.
    void JournalFailureChanged(const QString& failure);
    /// A dab of a step with Pace::DabByDab was applied, and TakeUpdates returns the resulting
    /// surface.
    void DabShown();
    /// A job has been running for longer than 200 ms. \param total  0 if unknown.
    void JobProgressed(const QString& label, const QString& phase, quint64 done, quint64 total);
    void BusyChanged(bool busy);
    /// IsIdle has become true.
    void BecameIdle();
    /// Run was called; sent before the step is carried out.
    void StepRequested(const nlohmann::json& step);
    /// A request failed; the document is unchanged unless the message says otherwise.
    void Failed(const QString& message);
    /// A note, a warning, or a problem that does not cause loss of work.
    void Noted(const QString& message);

private:
    friend class EngineWorker;

    /// \param request  the request that has been running for a long time; 0 for none.
    void NoteBusy(uint64_t request);

    std::unique_ptr<EngineWorker> worker;
    std::unique_ptr<const OpenedDocument> opened;
    std::shared_ptr<const DocumentState> state;
    std::shared_ptr<const ToolSettingList> settings;
    nlohmann::json preferences;
    QString journalFailure;
    /// The request that has been running for a long time; 0 if there is none.
    uint64_t busyRequest = 0;
    /// Number of the last request carried out before the engine thread became idle.
    uint64_t idleNumber = 0;
};

}  // namespace trovik::studio

Q_DECLARE_METATYPE(trovik::studio::HoverHit)
Q_DECLARE_METATYPE(trovik::studio::StrokeFigures)
