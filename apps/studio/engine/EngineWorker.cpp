// SPDX-License-Identifier: Apache-2.0
#include "engine/EngineWorker.h"

#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/nodes/HostKernel.h"
#include "framework/nodes/PlainText.h"

#include <QMetaObject>

namespace trovik::studio {

EngineWorker::EngineWorker(Engine& resultReceiver, std::string folder)
    : engine(resultReceiver),
      journalFolder(std::move(folder)),
      job([this](uint64_t number,
                 const QString& label,
                 const char* phase,
                 uint64_t done,
                 uint64_t total) {
          ToUi([=](Engine& to) {
              to.NoteBusy(number);
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
    pacer.Release();
    wake.notify_one();
    thread.join();
}

void EngineWorker::Post(EngineRequest request) {
    {
        const std::lock_guard lock(mutex);
        ++newestRequest;
        if (std::holds_alternative<StrokeStart>(request)) {
            newestStroke = newestRequest;
            isStrokeReleased = false;
        } else if (std::holds_alternative<StrokeEnd>(request)) {
            isStrokeReleased = true;
        }
        // All waiting samples are added to the stroke at once.
        auto* samples = std::get_if<StrokeSamples>(&request);
        auto* waiting =
            requests.empty() ? nullptr : std::get_if<StrokeSamples>(&requests.back().request);
        if (samples != nullptr && waiting != nullptr) {
            waiting->points.insert(
                waiting->points.end(), samples->points.begin(), samples->points.end());
            waiting->postedTime = samples->postedTime;
        } else {
            requests.push_back({newestRequest, std::move(request)});
        }
    }
    wake.notify_one();
}

// The request that ends an abandoned stroke is posted in order, since other requests may follow it.
void EngineWorker::AbandonStroke() {
    bool isOpen = false;
    {
        const std::lock_guard lock(mutex);
        if (newestStroke <= endedStroke) return;
        abandonedStrokes.push_back(newestStroke);
        isOpen = !isStrokeReleased;
    }
    if (isOpen) Post(StrokeEnd{true});
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

// The surface may still have to wait for the UI thread, which takes no updates while the window is
// hidden.
bool EngineWorker::WaitForWork() {
    std::unique_lock lock(mutex);
    if (!HasWork() && idleRequest != newestRequest) ReportIdle();
    const auto hasWork = [this] { return HasWork(); };
    if (session == nullptr || session->Opened().journalPath.empty())
        wake.wait(lock, hasWork);
    else
        wake.wait_until(lock, journalWatch.NextTime(), hasWork);
    return !isEnding;
}

std::optional<EngineWorker::NumberedRequest> EngineWorker::NextRequest() {
    const std::lock_guard lock(mutex);
    if (requests.empty()) return std::nullopt;
    const EngineRequest& front = requests.front().request;
    const bool endsStroke =
        std::holds_alternative<OpenRequest>(front) || std::holds_alternative<StepRequest>(front) ||
        std::holds_alternative<SaveCopyRequest>(front) ||
        std::holds_alternative<ImageRequest>(front) || std::holds_alternative<StrokeStart>(front);
    if (endsStroke && session != nullptr && session->HasStroke())
        return NumberedRequest{requests.front().number, StrokeEnd{false}};
    NumberedRequest next = std::move(requests.front());
    requests.pop_front();
    return next;
}

void EngineWorker::Loop() {
    // Messages from the brush to the user.
    const HUDListening listening([this](const std::string& text) {
        const QString message = PlainText(QString::fromStdString(text)).c_str();
        ToUi([message](Engine& to) { Q_EMIT to.Noted(message); });
    });
    while (WaitForWork()) {
        Turn();
        hasBacklog = session != nullptr && session->HasBacklog();
        if (session == nullptr || !session->HasStroke()) {
            const std::lock_guard lock(mutex);
            endedStroke = strokeNumber;
            std::erase(abandonedStrokes, strokeNumber);
        }
        SendSurface();
        SendState();
        WatchJournal();
    }
    // The last document is closed normally when the application ends.
    Guarded([this] {
        if (session != nullptr) session->Close();
    });
    session.reset();
}

void EngineWorker::Turn() {
    if (session != nullptr && session->HasStroke() && session->IsReleased()) {
        ContinueRelease();
    } else if (std::optional<NumberedRequest> next = NextRequest()) {
        requestNumber = next->number;
        Serve(next->request);
    } else if (hasBacklog) {
        Guarded([this] { session->Continue(); });
    } else {
        AnswerPick();
    }
}

}  // namespace trovik::studio
