// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QTimer>

#include <functional>
#include <future>
#include <vector>

class QWidget;

namespace trovik::studio {

class Engine;
struct RecoverableWork;
class ViewportInput;
class ViewportWidget;

using FoundWork = std::shared_future<std::vector<RecoverableWork>>;

/// Starts to look for unfinished work in a folder of journals, on a thread of the global thread
/// pool, and to remove the remaining files of finished work.
FoundWork StartToFindWork(const QString& folder);

/// Offers unfinished work for recovery, and stores the images by which users recognise it.
///
/// Call on the UI thread only. The thread pool must be idle when the object is destroyed.
class WorkRecovery : public QObject {
    Q_OBJECT
public:
    /// Borrows the objects. \param window  the parent of dialogs.
    WorkRecovery(Engine& engine,
                 ViewportWidget& viewport,
                 const ViewportInput& input,
                 QWidget& window);

    /// Asks the user whether to recover the work that was found. The dialog opens in the event
    /// loop, once the search has ended.
    /// \param otherwise  called unless work is being recovered; at once if the search has ended
    /// and has not found any work.
    void Offer(const FoundWork& found, std::function<void()> otherwise);

private:
    /// \return whether the user chose to recover work.
    bool Ask(std::vector<RecoverableWork> works);
    /// Stores an image of the document next to its journal.
    void StorePicture();

    Engine& engine;
    ViewportWidget& viewport;
    const ViewportInput& input;
    QWidget& window;
    QTimer pictureTimer;
};

}  // namespace trovik::studio
