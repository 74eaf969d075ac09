// SPDX-License-Identifier: Apache-2.0
#include "engine/Engine.h"

#include "engine/EngineWorker.h"

#include <QTimer>

#include <chrono>

namespace trovik::studio {

namespace {

/// Interval at which the UI thread checks whether a request has been running for a long time.
constexpr int busyPollMilliseconds = 50;

}  // namespace

Engine::Engine(const std::string& journalFolder, QObject* parent)
    : QObject(parent), worker(std::make_unique<EngineWorker>(*this, journalFolder)) {
    auto* poll = new QTimer(this);
    connect(poll, &QTimer::timeout, this, [this] { NoteBusy(worker->LongRequest()); });
    poll->start(busyPollMilliseconds);
}

Engine::~Engine() = default;

void Engine::NoteBusy(uint64_t request) {
    const bool wasBusy = IsBusy();
    busyRequest = request;
    if (IsBusy() == wasBusy) return;
    Q_EMIT BusyChanged(IsBusy());
    if (IsIdle()) Q_EMIT BecameIdle();
}

void Engine::Open(const OpenRequest& request) {
    OpenRequest withPreferences = request;
    withPreferences.preferences = preferences;
    Q_EMIT OpenRequested();
    worker->Post(std::move(withPreferences));
}

void Engine::Save(const std::string& scenePath) { Run({{"save", scenePath}}, tr("Saving")); }

void Engine::SaveCopy(const std::string& scenePath, Done done) {
    worker->Post(SaveCopyRequest{scenePath, std::move(done)});
}

void Engine::SaveActions(const std::string& scriptPath, ActionsDone done) {
    worker->Post(SaveActionsRequest{scriptPath, std::move(done)});
}

void Engine::Run(const nlohmann::json& step, const QString& label, Done done) {
    const QString shown =
        label.isEmpty() && !step.empty() ? QString::fromStdString(step.begin().key()) : label;
    Q_EMIT StepRequested(step);
    worker->Post(StepRequest{step, shown, std::move(done), worker->View()});
}

void Engine::RunOfScript(nlohmann::json step, const QString& label, Pace pace, Done done) {
    if (pace == Pace::DabByDab) worker->Pacer().Begin();
    Q_EMIT StepRequested(step);
    worker->Post(
        StepRequest{std::move(step), label, std::move(done), std::nullopt, pace == Pace::DabByDab});
}

void Engine::Prepare(const QString& label, std::function<void()> work, Done done) {
    worker->Post(PrepareRequest{label, std::move(work), std::move(done)});
}

void Engine::ContinueDab() { worker->Pacer().Go(); }
void Engine::ReleaseDabs() { worker->Pacer().Release(); }

void Engine::Compute(
    const QString& label, ImageWork work, CancelFlag cancel, ShowImage shown, Done done) {
    worker->Post(ImageRequest{label,
                              std::move(work),
                              std::move(cancel),
                              std::move(shown),
                              std::move(done),
                              worker->View()});
}

void Engine::SetView(const StrokeView& view) { worker->SetView(view); }

void Engine::BeginStroke(const StrokeStart& start) { worker->Post(start); }

void Engine::AddSamples(std::vector<PenPoint> points) {
    const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
    worker->Post(StrokeSamples{std::move(points), now.count()});
}

void Engine::Tick(double milliseconds) { worker->Post(StrokeTick{milliseconds}); }
void Engine::EndStroke() { worker->Post(StrokeEnd{false}); }
void Engine::AbandonStroke() { worker->AbandonStroke(); }
bool Engine::AcceptsStrokes() const { return !IsBusy() || worker->IsStroke(busyRequest); }
void Engine::ResumeJournal() { worker->Post(ResumeJournalRequest{}); }
bool Engine::IsIdle() const { return !IsBusy() && idleNumber == worker->NewestRequest(); }
bool Engine::HasUpdates() const { return worker->HasUpdates(); }
void Engine::CancelJob() { worker->Cancel(busyRequest); }
void Engine::Pick(float x, float y) { worker->Pick(x, y); }
void Engine::RequestSurface() { worker->Post(SurfaceRequest{}); }

std::vector<std::shared_ptr<const SurfaceUpdate>> Engine::TakeUpdates() {
    return worker->TakeUpdates();
}

const ToolSetting* Engine::Setting(const std::string& name) const {
    if (settings == nullptr) return nullptr;
    for (const ToolSetting& setting : *settings)
        if (setting.name == name) return &setting;
    return nullptr;
}

}  // namespace trovik::studio
