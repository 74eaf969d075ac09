// SPDX-License-Identifier: Apache-2.0
#include "WorkRecovery.h"

#include "commands/Preferences.h"
#include "engine/Engine.h"
#include "engine/JournalFolder.h"
#include "input/ViewportInput.h"
#include "viewport/ViewportWidget.h"
#include "window/RecoveryDialog.h"

#include <QThreadPool>

#include <chrono>
#include <memory>
#include <utility>

namespace trovik::studio {

namespace {

/// How long after a change a thumbnail of the document is stored for the recovery dialog.
constexpr int pictureDelayMilliseconds = 15000;
constexpr QSize pictureSize(760, 440);

}  // namespace

FoundWork StartToFindWork(const QString& folder) {
    const auto search =
        std::make_shared<std::packaged_task<std::vector<RecoverableWork>()>>([folder] {
            auto works = FindRecoverableWork(folder);
            RemoveLeftovers(folder.toStdString());
            return works;
        });
    QThreadPool::globalInstance()->start([search] { (*search)(); });
    return search->get_future().share();
}

WorkRecovery::WorkRecovery(Engine& ofEngine,
                           ViewportWidget& ofViewport,
                           const ViewportInput& ofInput,
                           QWidget& ofWindow)
    : engine(ofEngine), viewport(ofViewport), input(ofInput), window(ofWindow) {
    pictureTimer.setSingleShot(true);
    pictureTimer.setInterval(pictureDelayMilliseconds);
    connect(&pictureTimer, &QTimer::timeout, this, &WorkRecovery::StorePicture);
    connect(&engine, &Engine::StateChanged, this, [this] {
        if (engine.State()->isModified && !pictureTimer.isActive()) pictureTimer.start();
    });
}

void WorkRecovery::Offer(const FoundWork& found, std::function<void()> otherwise) {
    const bool hasEnded = found.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    if (hasEnded && found.get().empty()) {
        otherwise();
        return;
    }
    QThreadPool::globalInstance()->start([this, found, otherwise = std::move(otherwise)] {
        found.wait();
        QMetaObject::invokeMethod(
            this,
            [this, found, otherwise] {
                if (!Ask(found.get())) otherwise();
            },
            Qt::QueuedConnection);
    });
}

bool WorkRecovery::Ask(std::vector<RecoverableWork> works) {
    if (works.empty()) return false;
    RecoveryDialog dialog(works, &window);
    dialog.exec();
    if (dialog.Chosen() == RecoveryDialog::Choice::Recover) {
        OpenRequest request;
        request.journalPath = dialog.Journal().toStdString();
        request.title = tr("Recovered").toStdString();
        engine.Open(request);
        return true;
    }
    if (dialog.Chosen() != RecoveryDialog::Choice::Discard) return false;
    RemoveJournal(dialog.Journal().toStdString());
    std::erase_if(works,
                  [&](const RecoverableWork& one) { return one.journalPath == dialog.Journal(); });
    return Ask(std::move(works));
}

void WorkRecovery::StorePicture() {
    if (!engine.HasDocument() || engine.Document().journalPath.empty()) return;
    // Reading back the frame would take too long during a stroke.
    if (input.HasGesture()) {
        pictureTimer.start();
        return;
    }
    const QString path = QString::fromStdString(PicturePathOf(engine.Document().journalPath));
    const QImage image = viewport.ShownFrame();
    if (image.isNull()) return;
    // Scaling and compression take longer than a frame.
    QThreadPool::globalInstance()->start([image, path] {
        image.scaled(pictureSize, Qt::KeepAspectRatio, Qt::SmoothTransformation).save(path);
    });
}

}  // namespace trovik::studio
