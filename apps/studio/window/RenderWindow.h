// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"

#include <QDialog>
#include <QImage>

class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;

namespace trovik::studio {

/// Renders the surface with ray tracing, as the camera of the viewport sees it, and shows the image
/// while it becomes finer. The final image is the one that the step "render" writes for this
/// camera, and can be saved.
class RenderWindow : public QDialog {
    Q_OBJECT
public:
    RenderWindow(const ActionContext& context, QWidget* parent);
    ~RenderWindow() override;

    /// Starts a render with the current camera, after cancelling a running one.
    void Render();
    bool IsRendering() const { return isRendering; }
    /// The complete image; null before it is complete.
    const QImage& Picture() const { return picture; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void AddControls(QWidget* parent);
    void Finish(const QString& error);
    void Save();
    void ShowImage();
    void ShowState();

    ActionContext context;
    QComboBox* size;
    QComboBox* shading;
    QComboBox* matcap;
    QComboBox* samples;
    QCheckBox* wireframe;
    QCheckBox* transparent;
    QLabel* view;
    QLabel* message;
    QProgressBar* progress;
    QPushButton* go;
    QPushButton* save;
    /// The newest image, complete or not.
    QImage shown;
    QImage picture;
    bool isRendering = false;
    /// Cancels the newest render, whose results are then dropped.
    CancelFlag cancel = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace trovik::studio
