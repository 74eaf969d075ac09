// SPDX-License-Identifier: Apache-2.0

/// \file How the engine thread carries out each kind of request.
#include "engine/EngineWorker.h"
#include "engine/JournalFolder.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/script/JournalRecovery.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace trovik::studio {

ScriptProgress EngineWorker::Progress() {
    ScriptProgress progress;
    const auto note = [this](const std::string& text) {
        const QString message = WithoutPosition(text);
        ToUi([message](Engine& to) { Q_EMIT to.Noted(message); });
    };
    progress.message = note;
    progress.warning = note;
    progress.job = &job;
    return progress;
}

void EngineWorker::Serve(EngineRequest& next) {
    std::visit([this](auto& one) { Serve(one); }, next);
}

LiveSession& EngineWorker::RequireSession() const {
    if (session == nullptr) throw HostError("no document is open");
    return *session;
}

void EngineWorker::Serve(OpenRequest& open) {
    job.Begin(requestNumber, Engine::tr("Opening"));
    auto opened = std::make_shared<OpenedDocument>();
    const QString error = Guarded([&] {
        if (!journalFolder.empty()) std::filesystem::create_directories(journalFolder);
        OpenRequest source = open;
        if (open.makeMesh) source.meshPath = open.makeMesh();
        if (!open.journalPath.empty()) {
            source.scenePath = RecoveredScenePathOf(open.journalPath);
            RecoveryOptions options;
            options.untilDamage = true;
            options.progress = Progress();
            const RecoveredWork work = RecoverJournal(open.journalPath, source.scenePath, options);
            opened->notes = work.notes;
            opened->workFolder = WorkFolderOf(work.content);
        }
        const std::string journal =
            journalFolder.empty() ? std::string() : NewJournalPath(journalFolder);
        auto next = std::make_unique<LiveSession>(source, journal, Progress());
        if (session != nullptr) session->Close();
        session = std::move(next);
        const OpenedDocument recovered = std::exchange(*opened, session->Opened());
        opened->notes.insert(opened->notes.begin(), recovered.notes.begin(), recovered.notes.end());
        opened->workFolder = recovered.workFolder;
        if (!open.journalPath.empty()) {
            // The new journal starts from the recovered scene; the old one is no longer offered.
            MarkAsRecovered(open.journalPath);
            opened->isRecovered = true;
            opened->scenePath.clear();
        }
    });
    EndJob();
    if (!error.isEmpty()) return;
    const bool hadFailure = !journalWatch.Failure().empty();
    journalWatch.Restart();
    if (hadFailure) SendJournalFailure();
    session->TakeToolChange();
    sentState = session->GetDocument().State();
    sentSettings = std::make_shared<const ToolSettingList>(
        ReadToolSettings(session->GetDocument().Brush(), session->GetDocument().Settings()));
    {
        const std::lock_guard lock(mutex);
        updates.clear();
        waitingBytes = 0;
    }
    ToUi([opened, settings = sentSettings, state = sentState](Engine& to) {
        to.opened = std::make_unique<const OpenedDocument>(*opened);
        to.state = state;
        to.settings = settings;
        Q_EMIT to.Opened();
        Q_EMIT to.StateChanged();
        Q_EMIT to.SettingsChanged();
    });
}

void EngineWorker::Serve(StepRequest& step) {
    job.Begin(requestNumber, step.label);
    const QString error = Guarded([&] {
        if (step.isPaced && step.step.contains("stroke"))
            RunPaced(step);
        else
            RequireSession().Run(step.step, step.view);
    });
    EndJob();
    const std::string saved =
        error.isEmpty() ? step.step.value("save", std::string()) : std::string();
    ToUi([error, saved, done = std::move(step.done)](Engine& to) {
        if (!saved.empty()) {
            auto renamed = std::make_unique<OpenedDocument>(*to.opened);
            renamed->scenePath = saved;
            renamed->title = std::filesystem::path(saved).filename().string();
            renamed->isRecovered = false;
            to.opened = std::move(renamed);
            Q_EMIT to.Saved(QString::fromStdString(saved));
        }
        if (done) done(error);
    });
}

// The UI thread may have been too busy to notice that the request took long.
void EngineWorker::EndJob() {
    if (job.End()) ToUi([](Engine& to) { to.NoteBusy(0); });
}

void EngineWorker::RunPaced(const StepRequest& step) {
    LiveSession& current = RequireSession();
    const SurfaceListener listener(current.GetDocument(), [this] {
        SendSurface();
        ToUi([](Engine& to) { Q_EMIT to.DabShown(); });
        pacer.Wait();
    });
    current.Run(step.step, step.view);
}

void EngineWorker::Serve(PrepareRequest& preparation) {
    job.Begin(requestNumber, preparation.label);
    const QString error = ErrorOf([&] {
        preparation.work();
        if (job.IsCancelled()) throw Cancelled();
    });
    EndJob();
    ToUi([error, done = std::move(preparation.done)](Engine&) { done(error); });
}

void EngineWorker::Serve(ImageRequest& image) {
    job.Begin(requestNumber, image.label);
    const ShowImage show = [this, &image](const QImage& shownImage) {
        ToUi([shownImage, shown = image.shown, cancel = image.cancel](Engine&) {
            if (!*cancel) shown(shownImage);
        });
    };
    const QString error = ErrorOf([&] {
        LiveSession& current = RequireSession();
        if (*image.cancel) throw Cancelled();
        CancellableJob part(job, *image.cancel);
        image.work(current.GetDocument(), image.view, part, show);
    });
    EndJob();
    ToUi([error, done = std::move(image.done), cancel = image.cancel](Engine&) {
        if (!*cancel) done(error);
    });
}

void EngineWorker::Serve(SaveActionsRequest& save) {
    job.Begin(requestNumber, Engine::tr("Saving the actions"));
    std::string start;
    const QString error = Guarded([&] { start = RequireSession().SaveActions(save.path); });
    EndJob();
    ToUi([error, copy = QString::fromStdString(start), done = std::move(save.done)](Engine&) {
        if (done) done(error, copy);
    });
}

void EngineWorker::Serve(SaveCopyRequest& save) {
    job.Begin(requestNumber, Engine::tr("Saving a Copy"));
    const QString error = Guarded([&] { RequireSession().SaveCopy(save.path, &job); });
    EndJob();
    ToUi([error, done = std::move(save.done)](Engine&) {
        if (done) done(error);
    });
}

void EngineWorker::Serve(SurfaceRequest&) {
    if (session != nullptr) session->Feed().SendAll();
}

void EngineWorker::Serve(StrokeStart& start) {
    strokeNumber = requestNumber;
    if (session == nullptr || IsStrokeAbandoned()) return;
    const auto poll = [this] {
        if (IsStrokeAbandoned() || !job.Report(0, 0, "Applying mirrored dabs")) throw Cancelled();
    };
    Guarded([&] { session->BeginStroke(start, poll); });
}

void EngineWorker::Serve(StrokeSamples& samples) {
    if (session == nullptr || !session->HasStroke() || IsStrokeAbandoned()) return;
    sampleTime = samples.postedTime;
    Guarded([&] { session->AddSamples(samples.points); });
    ToUi([figures = session->Figures()](Engine& to) { Q_EMIT to.StrokeAdvanced(figures); });
}

void EngineWorker::Serve(StrokeTick& tick) {
    if (session == nullptr || IsStrokeAbandoned()) return;
    Guarded([&] { session->Tick(tick.milliseconds); });
}

void EngineWorker::Serve(StrokeEnd& end) {
    if (session == nullptr || !session->HasStroke()) return;
    if (end.isAbandoned || IsStrokeAbandoned()) {
        Guarded([&] { session->AbandonStroke(); });
        return;
    }
    newestReleased = strokeNumber;
    job.Begin(strokeNumber, Engine::tr("Stroke"));
    Guarded([&] { session->ReleaseStroke(); });
    if (!session->HasStroke()) EndJob();
}

bool EngineWorker::IsStrokeAbandoned() const {
    const std::lock_guard lock(mutex);
    return std::find(abandonedStrokes.begin(), abandonedStrokes.end(), strokeNumber) !=
           abandonedStrokes.end();
}

void EngineWorker::ContinueRelease() {
    const bool isAbandoned =
        IsStrokeAbandoned() || !job.Report(0, 0, "Applying the rest of the stroke");
    Guarded([&] {
        if (isAbandoned)
            session->AbandonStroke();
        else
            session->Continue();
    });
    ToUi([figures = session->Figures()](Engine& to) { Q_EMIT to.StrokeAdvanced(figures); });
    if (!session->HasStroke()) EndJob();
}

void EngineWorker::WatchJournal() {
    if (session == nullptr || session->Opened().journalPath.empty()) return;
    if (journalWatch.Update(session->JournalFailure())) SendJournalFailure();
    if (!journalWatch.IsAttemptDue()) return;
    journalWatch.Postpone();
    // The scene from which the journal continues contains no open stroke.
    if (session->HasStroke() || !session->HasRoomForJournal()) return;
    {
        const std::lock_guard lock(mutex);
        requestNumber = ++newestRequest;
    }
    TryJournal();
}

QString EngineWorker::TryJournal() {
    job.Begin(requestNumber, Engine::tr("Restarting the journal"));
    QString error = ErrorOf([&] { session->ResumeJournal(); });
    EndJob();
    if (journalWatch.Update(session->JournalFailure())) SendJournalFailure();
    return error;
}

void EngineWorker::Serve(ResumeJournalRequest&) {
    if (session == nullptr || session->JournalFailure().empty()) return;
    const QString error = TryJournal();
    if (!error.isEmpty()) ToUi([error](Engine& to) { Q_EMIT to.Noted(error); });
}

void EngineWorker::SendJournalFailure() {
    ToUi([failure = QString::fromStdString(journalWatch.Failure())](Engine& to) {
        to.journalFailure = failure;
        Q_EMIT to.JournalFailureChanged(failure);
    });
}

}  // namespace trovik::studio
