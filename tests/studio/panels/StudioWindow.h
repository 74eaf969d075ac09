// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionRegistry.h"
#include "commands/Keymap.h"
#include "commands/Preferences.h"
#include "commands/ViewModel.h"
#include "engine/Engine.h"
#include "tests/studio/WaitFor.h"
#include "window/MainWindow.h"

#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

#include <memory>

namespace trovik::studio {

/// A main window with an engine and a plain widget as its viewport.
class StudioWindow : public testing::Test {
protected:
    StudioWindow();
    ~StudioWindow() override;

    /// Opens a sphere of 6 x 8 x 8 faces with levels above it.
    void OpenSphere(int levels = 1);
    /// Waits until the results of all requests so far are shown.
    void Finish();
    /// Waits until all widgets of the window have stopped moving and changing size, because layouts
    /// respond to a change over several iterations of the event loop.
    void FinishLayout();
    /// The steps since the document was opened, as SaveActions writes them.
    nlohmann::json Steps();
    /// The last of these steps; null if there is none.
    nlohmann::json LastStep();
    const DocumentState& State() const { return *engine.State(); }
    QAction* Action(const char* id) const { return actions.Find(QString::fromLatin1(id)); }

    QTemporaryDir folder;
    Engine engine{folder.filePath("journals").toStdString()};
    ActionRegistry actions{nullptr};
    ViewModel view;
    Preferences preferences{folder.filePath("studio.ini")};
    Keymap keymap{actions, folder.filePath("keymap.json")};
    QWidget* viewport = new QWidget;
    std::unique_ptr<MainWindow> window;
    QStringList failures;
};

}  // namespace trovik::studio
