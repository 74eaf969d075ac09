// SPDX-License-Identifier: Apache-2.0

/// \file What the engine thread sends to the UI thread: errors, picks, surface and state.
#include "engine/EngineWorker.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"

#include <QMetaObject>

#include <utility>

namespace trovik::studio {

namespace {

/// Size limit of one update, so that an opened mesh appears progressively.
constexpr std::size_t maxUpdateBytes = std::size_t{8} << 20;

}  // namespace

QString EngineWorker::WithoutPosition(const std::string& message) {
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

void EngineWorker::ToUi(std::function<void(Engine&)> function) {
    QMetaObject::invokeMethod(
        &engine, [to = &engine, call = std::move(function)] { call(*to); }, Qt::QueuedConnection);
}

void EngineWorker::ReportIdle() {
    idleRequest = newestRequest;
    ToUi([number = idleRequest](Engine& to) {
        to.idleNumber = number;
        if (to.IsIdle()) Q_EMIT to.BecameIdle();
    });
}

QString EngineWorker::ErrorOf(const std::function<void()>& work) {
    QString error;
    try {
        work();
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

QString EngineWorker::Guarded(const std::function<void()>& work) {
    QString error = ErrorOf(work);
    if (!error.isEmpty()) ToUi([error](Engine& to) { Q_EMIT to.Failed(error); });
    return error;
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
        // Packing is retried after the next request, because retrying it immediately would report
        // errors endlessly.
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
    if (session->TakeToolChange()) {
        ToolSettingList settings = ReadToolSettings(document.Brush(), document.Settings());
        if (sentSettings == nullptr || *sentSettings != settings) {
            sentSettings = std::make_shared<const ToolSettingList>(std::move(settings));
            ToUi([sent = sentSettings](Engine& to) {
                to.settings = sent;
                Q_EMIT to.SettingsChanged();
            });
        }
    }
    if (state == sentState) return;
    sentState = state;
    ToUi([state](Engine& to) {
        to.state = state;
        Q_EMIT to.StateChanged();
    });
}

}  // namespace trovik::studio
