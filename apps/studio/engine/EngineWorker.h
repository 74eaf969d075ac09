// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/DabPacer.h"
#include "engine/EngineJob.h"
#include "engine/EngineRequests.h"
#include "engine/LiveSession.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace trovik::studio {

/// The engine thread: carries out requests in order, sends the changed surface after each, and
/// picks the surface when idle. Results are posted to the Engine's thread.
class EngineWorker {
public:
    /// \param journalFolder  see Engine.
    EngineWorker(Engine& resultReceiver, std::string journalFolder);
    /// Cancels the running request, drops the pending ones, and joins the thread.
    ~EngineWorker();
    EngineWorker(const EngineWorker&) = delete;
    EngineWorker& operator=(const EngineWorker&) = delete;

    // --- UI thread ---

    void Post(EngineRequest request);
    void SetView(const StrokeView& newView);
    const StrokeView& View() const { return uiView; }
    /// Replaces a pending pick.
    void Pick(float x, float y);
    void Cancel() {
        job.Cancel();
        pacer.Release();
    }
    DabPacer& Pacer() { return pacer; }
    bool IsLong() const { return job.IsLong(); }
    std::vector<std::shared_ptr<const SurfaceUpdate>> TakeUpdates();
    bool HasUpdates() const;
    /// Requests and picks are numbered in the order in which they are posted.
    uint64_t NewestRequest() const;

private:
    struct PickRequest {
        StrokeView view;
        float x, y;
    };

    // --- Engine thread ---

    void Loop();
    /// Reports that all requests so far are carried out, once for each newest request. Called with
    /// the mutex locked.
    void ReportIdle();
    /// Blocks until there is work. \return false when the thread is to end.
    bool WaitForWork();
    bool HasWork() const;
    std::optional<EngineRequest> NextRequest();
    void Serve(EngineRequest& request);
    void Serve(OpenRequest& request);
    void Serve(StepRequest& request);
    void Serve(ImageRequest& request);
    void Serve(SaveActionsRequest& request);
    void Serve(SurfaceRequest& request);
    void Serve(StrokeStart& request);
    void Serve(StrokeSamples& request);
    void Serve(StrokeTick& request);
    void Serve(StrokeEnd& request);
    /// Runs a function and catches its exceptions. \return the error in one line; empty if there is
    /// none.
    template <typename Work>
    static QString ErrorOf(Work work);
    /// Runs a function and reports its exceptions. \return as ErrorOf.
    template <typename Work>
    QString Guarded(Work work);
    template <typename Request>
    void RequireDocument(const Request& request) const;
    /// Ends the job of a request, and the display of its progress.
    void EndJob();
    void AnswerPick();
    void SendSurface();
    /// Runs a step, and waits after each dab.
    void RunPaced(const StepRequest& request);
    void SendState();
    std::string NewJournalPath() const;
    ScriptProgress Progress();
    /// Calls function(engine) on the UI thread.
    template <typename Function>
    void ToUi(Function function);

    Engine& engine;
    const std::string journalFolder;
    StrokeView uiView;
    EngineJob job;
    DabPacer pacer;

    mutable std::mutex mutex;
    std::condition_variable wake;
    // Guarded by the mutex.
    std::deque<EngineRequest> requests;
    std::optional<PickRequest> pick;
    std::vector<std::shared_ptr<const SurfaceUpdate>> updates;
    std::size_t waitingBytes = 0;
    uint64_t newestRequest = 0;
    /// The newest request when Engine::BecameIdle was last sent.
    uint64_t idleRequest = 0;
    bool isEnding = false;

    // Engine thread.
    std::unique_ptr<LiveSession> session;
    std::shared_ptr<const DocumentState> sentState;
    double sampleTime = 0.0;
    bool hasBacklog = false;
    bool hasSurfaceWork = false;

    std::thread thread;
};

}  // namespace trovik::studio
