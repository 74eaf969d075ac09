// SPDX-License-Identifier: Apache-2.0
#include "engine/EngineWorker.h"

#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/nodes/HostKernel.h"
#include "framework/nodes/PlainText.h"
#include "framework/script/JournalRecovery.h"

#include <QDateTime>
#include <QMetaObject>

#include <filesystem>
#include <unistd.h>

namespace trovik::studio {

namespace {

/// Limit for packed vertices that wait for the UI thread; beyond it, changes are merged before they
/// are packed.
constexpr std::size_t maxWaitingBytes = std::size_t{32} << 20;
/// Size limit of one update, so that an opened mesh appears progressively.
constexpr std::size_t maxUpdateBytes = std::size_t{8} << 20;

/// Removes the script position (name and JSON pointer) from the start of a message.
QString WithoutPosition(const std::string& message) {
    const std::string prefix = "studio: ";
    if (message.compare(0, prefix.size(), prefix) != 0) return QString::fromStdString(message);
    std::size_t begin = prefix.size();
    if (message.compare(begin, 1, "/") == 0) {
        const std::size_t end = message.find(": ", begin);
        if (end != std::string::npos) begin = end + 2;
    }
    QString reason = QString::fromStdString(message.substr(begin));
    if (!reason.isEmpty()) reason[0] = reason[0].toUpper();
    return reason;
}

}  // namespace

EngineWorker::EngineWorker(Engine& resultReceiver, std::string folder)
    : engine(resultReceiver),
      journalFolder(std::move(folder)),
      job([this](const QString& label, const char* phase, uint64_t done, uint64_t total) {
          ToUi([=](Engine& to) {
              Q_EMIT to.JobProgressed(label, QString::fromLatin1(phase), done, total);
          });
      }),
      thread([this] { Loop(); }) {}

EngineWorker::~EngineWorker() {
    {
        const std::lock_guard lock(mutex);
        isEnding = true;
        job.CancelAll();
        requests.clear();
        pick.reset();
    }
    Cancel();
    wake.notify_one();
    thread.join();
}

void EngineWorker::Post(EngineRequest request) {
    {
        const std::lock_guard lock(mutex);
        ++newestRequest;
        // All waiting samples are added to the stroke at once.
        auto* samples = std::get_if<StrokeSamples>(&request);
        auto* waiting = requests.empty() ? nullptr : std::get_if<StrokeSamples>(&requests.back());
        if (samples != nullptr && waiting != nullptr) {
            waiting->points.insert(
                waiting->points.end(), samples->points.begin(), samples->points.end());
            waiting->postedTime = samples->postedTime;
        } else {
            requests.push_back(std::move(request));
        }
    }
    wake.notify_one();
}

void EngineWorker::SetView(const StrokeView& newView) { uiView = newView; }

void EngineWorker::Pick(float x, float y) {
    {
        const std::lock_guard lock(mutex);
        ++newestRequest;
        pick = {uiView, x, y};
    }
    wake.notify_one();
}

std::vector<std::shared_ptr<const SurfaceUpdate>> EngineWorker::TakeUpdates() {
    std::vector<std::shared_ptr<const SurfaceUpdate>> taken;
    {
        const std::lock_guard lock(mutex);
        taken.swap(updates);
        waitingBytes = 0;
    }
    wake.notify_one();
    return taken;
}

bool EngineWorker::HasUpdates() const {
    const std::lock_guard lock(mutex);
    return !updates.empty();
}

uint64_t EngineWorker::NewestRequest() const {
    const std::lock_guard lock(mutex);
    return newestRequest;
}

bool EngineWorker::HasWork() const {
    if (isEnding || !requests.empty() || hasBacklog || pick) return true;
    return hasSurfaceWork && waitingBytes < maxWaitingBytes;
}

bool EngineWorker::WaitForWork() {
    std::unique_lock lock(mutex);
    if (!HasWork() && !hasSurfaceWork && idleRequest != newestRequest) ReportIdle();
    wake.wait(lock, [this] { return HasWork(); });
    return !isEnding;
}

std::optional<EngineRequest> EngineWorker::NextRequest() {
    const std::lock_guard lock(mutex);
    if (requests.empty()) return std::nullopt;
    EngineRequest next = std::move(requests.front());
    requests.pop_front();
    return next;
}

void EngineWorker::Loop() {
    // Messages of the brush for the user.
    const HUDListening listening([this](const std::string& text) {
        const QString message = PlainText(QString::fromStdString(text)).c_str();
        ToUi([message](Engine& to) { Q_EMIT to.Noted(message); });
    });
    while (WaitForWork()) {
        if (std::optional<EngineRequest> request = NextRequest())
            Serve(*request);
        else if (hasBacklog)
            Guarded([this] { session->Continue(); });
        else
            AnswerPick();
        hasBacklog = session != nullptr && session->HasBacklog();
        SendSurface();
        SendState();
    }
    // The last document is closed normally when the application ends.
    Guarded([this] {
        if (session != nullptr) session->Close();
    });
    session.reset();
}

template <typename Function>
void EngineWorker::ToUi(Function function) {
    QMetaObject::invokeMethod(
        &engine, [to = &engine, function] { function(*to); }, Qt::QueuedConnection);
}

void EngineWorker::ReportIdle() {
    idleRequest = newestRequest;
    ToUi([number = idleRequest](Engine& to) {
        to.idleNumber = number;
        if (to.IsIdle()) Q_EMIT to.BecameIdle();
    });
}

template <typename Work>
QString EngineWorker::ErrorOf(Work work) {
    QString error;
    try {
        work();
        return error;
    } catch (const Cancelled&) {
        error = Engine::tr("Cancelled");
    } catch (const HostError& failure) {
        error = WithoutPosition(failure.what());
    } catch (Error* failure) {
        error = failure->Message();
        Error::Dispose(failure);
    } catch (const std::bad_alloc&) {
        error = Engine::tr("There is not enough memory");
    } catch (const std::exception& failure) {
        error = QString::fromUtf8(failure.what());
    }
    return error;
}

template <typename Work>
QString EngineWorker::Guarded(Work work) {
    QString error = ErrorOf(work);
    if (error.isEmpty()) return error;
    ToUi([error](Engine& to) { Q_EMIT to.Failed(error); });
    return error;
}

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

void EngineWorker::Serve(EngineRequest& request) {
    std::visit([this](auto& one) { Serve(one); }, request);
}

std::string EngineWorker::NewJournalPath() const {
    if (journalFolder.empty()) return {};
    static unsigned count = 0;
    const std::string name =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")).toStdString() +
        "-" + std::to_string(::getpid()) + "-" + std::to_string(++count) + ".journal";
    return (std::filesystem::path(journalFolder) / name).string();
}

void EngineWorker::Serve(OpenRequest& request) {
    job.Begin(Engine::tr("Opening"));
    auto opened = std::make_shared<OpenedDocument>();
    const QString error = Guarded([&] {
        if (!journalFolder.empty()) std::filesystem::create_directories(journalFolder);
        OpenRequest source = request;
        if (!request.journalPath.empty()) {
            source.scenePath = request.journalPath + ".trovik";
            source.title = request.title;
            RecoveryOptions options;
            options.untilDamage = true;
            options.progress = Progress();
            const RecoveredWork work =
                RecoverJournal(request.journalPath, source.scenePath, options);
            opened->notes = work.notes;
        }
        auto next = std::make_unique<LiveSession>(source, NewJournalPath(), Progress());
        if (session != nullptr) session->Close();
        session = std::move(next);
        std::vector<std::string> notes = std::move(opened->notes);
        *opened = session->Opened();
        opened->notes.insert(opened->notes.begin(), notes.begin(), notes.end());
        if (!request.journalPath.empty()) {
            // The new journal starts from the recovered scene; the old one is no longer offered.
            std::error_code ignored;
            std::filesystem::rename(
                request.journalPath, request.journalPath + ".recovered", ignored);
            opened->isRecovered = true;
            opened->scenePath.clear();
        }
    });
    EndJob();
    if (!error.isEmpty()) return;
    sentState = session->GetDocument().State();
    auto settings = std::make_shared<const ToolSettingList>(
        ReadToolSettings(session->GetDocument().Brush(), session->GetDocument().Settings()));
    {
        const std::lock_guard lock(mutex);
        updates.clear();
        waitingBytes = 0;
    }
    ToUi([opened, settings, state = sentState](Engine& to) {
        to.opened = std::make_unique<const OpenedDocument>(*opened);
        to.state = state;
        to.settings = settings;
        Q_EMIT to.Opened();
        Q_EMIT to.StateChanged();
        Q_EMIT to.SettingsChanged();
    });
}

void EngineWorker::Serve(StepRequest& request) {
    job.Begin(request.label);
    const QString error = Guarded([&] {
        if (session == nullptr) throw HostError("no document is open");
        if (request.isPaced && request.step.contains("stroke"))
            RunPaced(request);
        else
            session->Run(request.step, request.view);
    });
    EndJob();
    const std::string saved =
        error.isEmpty() ? request.step.value("save", std::string()) : std::string();
    ToUi([error, saved, done = std::move(request.done)](Engine& to) {
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

void EngineWorker::RunPaced(const StepRequest& request) {
    SurfaceListener listener([this] {
        SendSurface();
        ToUi([](Engine& to) { Q_EMIT to.DabShown(); });
        pacer.Wait();
    });
    trovik::Document& document = session->GetDocument();
    document.AddObserver(listener);
    try {
        session->Run(request.step, request.view);
    } catch (...) {
        document.RemoveObserver(listener);
        throw;
    }
    document.RemoveObserver(listener);
}

// The UI thread may have been too busy to notice that the request was a long one.
void EngineWorker::EndJob() {
    if (!job.End()) return;
    ToUi([](Engine& to) {
        to.isBusy = false;
        Q_EMIT to.BusyChanged(false);
    });
}

void EngineWorker::Serve(ImageRequest& request) {
    job.Begin(request.label);
    const ShowImage show = [this, &request](const QImage& image) {
        ToUi([image, shown = request.shown, cancel = request.cancel](Engine&) {
            if (!*cancel) shown(image);
        });
    };
    const QString error = ErrorOf([&] {
        if (session == nullptr) throw HostError("no document is open");
        if (*request.cancel) throw Cancelled();
        if (session->HasStroke()) session->EndStroke();
        CancellableJob part(job, *request.cancel);
        request.work(session->GetDocument(), request.view, part, show);
    });
    EndJob();
    ToUi([error, done = std::move(request.done), cancel = request.cancel](Engine&) {
        if (!*cancel) done(error);
    });
}

void EngineWorker::Serve(SaveActionsRequest& request) {
    const QString error = Guarded([&] {
        if (session == nullptr) throw HostError("no document is open");
        session->Actions().Write(request.path);
    });
    if (request.done) ToUi([error, done = std::move(request.done)](Engine&) { done(error); });
}

void EngineWorker::Serve(SurfaceRequest&) {
    if (session != nullptr) session->Feed().SendAll();
}

void EngineWorker::Serve(StrokeStart& request) {
    if (session != nullptr) Guarded([&] { session->BeginStroke(request); });
}

void EngineWorker::Serve(StrokeSamples& request) {
    if (session == nullptr || !session->HasStroke()) return;
    sampleTime = request.postedTime;
    Guarded([&] { session->AddSamples(request.points); });
    ToUi([figures = session->Figures()](Engine& to) { Q_EMIT to.StrokeAdvanced(figures); });
}

void EngineWorker::Serve(StrokeTick& request) {
    if (session != nullptr) Guarded([&] { session->Tick(request.milliseconds); });
}

void EngineWorker::Serve(StrokeEnd& request) {
    if (session == nullptr) return;
    Guarded([&] {
        if (request.isAbandoned)
            session->AbandonStroke();
        else
            session->EndStroke();
    });
}

void EngineWorker::AnswerPick() {
    std::optional<PickRequest> asked;
    {
        const std::lock_guard lock(mutex);
        asked.swap(pick);
    }
    if (!asked) return;
    HoverHit hit;
    hit.x = asked->x;
    hit.y = asked->y;
    if (session != nullptr) Guarded([&] { hit = session->Pick(asked->view, asked->x, asked->y); });
    ToUi([hit](Engine& to) { Q_EMIT to.HoverPicked(hit); });
}

void EngineWorker::SendSurface() {
    hasSurfaceWork = session != nullptr && session->Feed().HasWork();
    {
        const std::lock_guard lock(mutex);
        if (!hasSurfaceWork || waitingBytes >= maxWaitingBytes) return;
    }
    std::shared_ptr<SurfaceUpdate> update;
    const QString error = Guarded([&] { update = session->Feed().Pack(maxUpdateBytes); });
    if (!error.isEmpty()) {
        // Tried again after the next request; repeating it at once would report errors without end.
        session->Feed().SendAll();
        hasSurfaceWork = false;
        return;
    }
    hasSurfaceWork = session->Feed().HasWork();
    if (update == nullptr) return;
    update->sampleTime = std::exchange(sampleTime, 0.0);
    bool isFirst = false;
    {
        const std::lock_guard lock(mutex);
        isFirst = updates.empty();
        waitingBytes += update->vertices.size() * sizeof(DisplayVertex);
        updates.push_back(std::move(update));
    }
    if (isFirst) ToUi([](Engine& to) { Q_EMIT to.SurfaceArrived(); });
}

void EngineWorker::SendState() {
    if (session == nullptr) return;
    trovik::Document& document = session->GetDocument();
    std::shared_ptr<const DocumentState> state = document.State();
    if (state == sentState) return;
    sentState = state;
    auto settings = std::make_shared<const ToolSettingList>(
        ReadToolSettings(document.Brush(), document.Settings()));
    ToUi([state, settings](Engine& to) {
        to.state = state;
        Q_EMIT to.StateChanged();
        to.settings = settings;
        Q_EMIT to.SettingsChanged();
    });
}

}  // namespace trovik::studio
