// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/DabPacer.h"
#include "engine/EngineJob.h"
#include "engine/EngineRequests.h"
#include "engine/JournalWatch.h"
#include "engine/LiveSession.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace trovik::studio {

/// The engine thread: carries out requests in order, sends the changed surface after each, and
/// picks the surface when idle. Results are posted to the Engine's thread.
class EngineWorker {
public:
    /// \param journalFolder  see Engine.
    EngineWorker(Engine& resultReceiver, std::string journalFolder);
    /// Cancels the running request, discards pending ones, and joins the thread.
    ~EngineWorker();
    EngineWorker(const EngineWorker&) = delete;
    EngineWorker& operator=(const EngineWorker&) = delete;

    // --- UI thread ---

    void Post(EngineRequest request);
    void SetView(const StrokeView& newView);
    const StrokeView& View() const { return uiView; }
    /// Replaces a pending pick.
    void Pick(float x, float y);
    /// Cancels a request if it is running. \param request  from LongRequest.
    void Cancel(uint64_t request) {
        job.Cancel(request);
        pacer.Release();
    }
    DabPacer& Pacer() { return pacer; }
    /// The request that has been running for longer than 200 ms; 0 if there is none. A released
    /// stroke whose dabs are being applied counts as a request.
    uint64_t LongRequest() const { return job.LongRequest(); }
    /// Abandons the stroke that was begun last, even if it was released. Has no effect if the
    /// stroke has ended.
    void AbandonStroke();
    /// Whether a request applies the rest of a released stroke. \param request  from LongRequest.
    bool IsStroke(uint64_t request) const { return request == newestReleased; }
    std::vector<std::shared_ptr<const SurfaceUpdate>> TakeUpdates();
    bool HasUpdates() const;
    /// Requests and picks are numbered in the order in which they are posted.
    uint64_t NewestRequest() const;

private:
    struct PickRequest {
        StrokeView view;
        float x, y;
    };
    struct NumberedRequest {
        uint64_t number;
        EngineRequest request;
    };

    // --- Engine thread ---

    void Loop();
    /// Reports that all requests so far have been carried out, at most once per request. Called
    /// with the mutex locked.
    void ReportIdle();
    /// Blocks until there is work. \return false when the thread is to end.
    bool WaitForWork();
    bool HasWork() const;
    /// Carries out one request, or a part of the work that is left from earlier ones.
    void Turn();
    /// The next request. If this request ends the open stroke, a request to release the stroke is
    /// returned first.
    std::optional<NumberedRequest> NextRequest();
    void Serve(EngineRequest& request);
    void Serve(OpenRequest& request);
    void Serve(StepRequest& request);
    void Serve(PrepareRequest& request);
    void Serve(ImageRequest& request);
    void Serve(SaveActionsRequest& request);
    void Serve(SaveCopyRequest& request);
    void Serve(ResumeJournalRequest& request);
    void Serve(SurfaceRequest& request);
    void Serve(StrokeStart& request);
    void Serve(StrokeSamples& request);
    void Serve(StrokeTick& request);
    void Serve(StrokeEnd& request);
    /// Runs a function and catches its exceptions. \return the error in one line; empty if there is
    /// none.
    QString Guarded(const std::function<void()>& work);
    /// Like Guarded, but does not send Failed.
    static QString ErrorOf(const std::function<void()>& work);
    /// Removes the script position (name and JSON pointer) from the start of a message.
    static QString WithoutPosition(const std::string& message);
    LiveSession& RequireSession() const;
    /// Applies dabs of the released stroke for one turn, or abandons the stroke.
    void ContinueRelease();
    bool IsStrokeAbandoned() const;
    /// Reports failures of the journal, and tries to continue it.
    void WatchJournal();
    /// \return the error in one line; empty if there is none.
    QString TryJournal();
    void SendJournalFailure();
    /// Ends a request's job and the display of its progress.
    void EndJob();
    void AnswerPick();
    void SendSurface();
    /// Runs a step, and waits after each dab.
    void RunPaced(const StepRequest& request);
    void SendState();
    ScriptProgress Progress();
    /// Calls function(engine) on the UI thread.
    void ToUi(std::function<void(Engine&)> function);

    /// Limit on packed vertices waiting for the UI thread; beyond it, changes are merged before
    /// they are packed.
    static constexpr std::size_t maxWaitingBytes = std::size_t{32} << 20;

    Engine& engine;
    const std::string journalFolder;
    StrokeView uiView;
    EngineJob job;
    DabPacer pacer;

    mutable std::mutex mutex;
    std::condition_variable wake;
    // Guarded by the mutex.
    std::deque<NumberedRequest> requests;
    std::optional<PickRequest> pick;
    std::vector<std::shared_ptr<const SurfaceUpdate>> updates;
    std::size_t waitingBytes = 0;
    uint64_t newestRequest = 0;
    /// The requests of strokes that were abandoned after their release.
    std::vector<uint64_t> abandonedStrokes;
    /// The newest request that began a stroke, and the newest stroke that has ended.
    uint64_t newestStroke = 0;
    uint64_t endedStroke = 0;
    bool isStrokeReleased = true;
    /// The newest request when Engine::BecameIdle was last sent.
    uint64_t idleRequest = 0;
    bool isEnding = false;
    /// The stroke whose remaining dabs are being applied, or were applied last.
    std::atomic<uint64_t> newestReleased = 0;

    // Engine thread.
    std::unique_ptr<LiveSession> session;
    std::shared_ptr<const DocumentState> sentState;
    std::shared_ptr<const ToolSettingList> sentSettings;
    JournalWatch journalWatch;
    /// The request that is being carried out, and the one that began the open stroke.
    uint64_t requestNumber = 0;
    uint64_t strokeNumber = 0;
    double sampleTime = 0.0;
    bool hasBacklog = false;
    bool hasSurfaceWork = false;

    std::thread thread;
};

}  // namespace trovik::studio
