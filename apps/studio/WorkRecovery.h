// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QTimer>

#include <functional>
#include <vector>

class QWidget;

namespace trovik::studio {

class Engine;
struct RecoverableWork;
class ViewportInput;
class ViewportWidget;

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

    /// Looks for unfinished work, removes the remaining files of finished work, and asks the user
    /// whether to recover the unfinished work. \param otherwise  called unless work is being
    /// recovered.
    void Offer(std::function<void()> otherwise);

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
