// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"

#include <QDialog>
#include <QTemporaryDir>

#include <memory>

class QLabel;

namespace trovik::studio {

class ScriptBar;
class ScriptPlayer;
class ViewportWidget;

/// Repeats the actions since the document was opened, in an engine and a viewport of its own, so
/// that the document is not affected. The viewport shows them with the camera and the settings of
/// the main window.
class TimeLapseWindow : public QDialog {
    Q_OBJECT
public:
    TimeLapseWindow(const ActionContext& context, QWidget* parent);
    ~TimeLapseWindow() override;

    ScriptPlayer& Player() { return *player; }
    ScriptBar& Bar() { return *bar; }

private:
    void Restart();
    void TakeCamera();

    ActionContext context;
    QTemporaryDir folder;
    std::unique_ptr<Engine> engine;
    ViewportWidget* viewport;
    ScriptPlayer* player;
    ScriptBar* bar;
    QLabel* message;
};

}  // namespace trovik::studio
