// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "CommandLine.h"
#include "WorkRecovery.h"
#include "commands/ActionRegistry.h"
#include "commands/ViewModel.h"
#include "engine/Engine.h"
#include "input/SelectionGesture.h"

#include <QObject>
#include <QTemporaryDir>

#include <memory>

namespace trovik::studio {

class CommandLineWork;
class EventRecorder;
class Keymap;
class MainWindow;
class Preferences;
class ViewportInput;
class ViewportWidget;

/// Owns and connects the objects of the running studio. Needs a QApplication.
class StudioApplication : public QObject {
    Q_OBJECT
public:
    explicit StudioApplication(const CommandLine& commandLine);
    ~StudioApplication() override;

    /// Shows the window and offers to recover unsaved work. Unless the user recovers work, it then
    /// opens the file named on the command line or, without a file, a sphere. Errors are shown in
    /// the window.
    void Start();

    Engine& GetEngine() { return *engine; }
    ActionRegistry& Actions() { return *actions; }
    ViewportWidget& Viewport() { return *viewport; }
    ViewportInput& Input() { return *input; }
    MainWindow& Window() { return *window; }

private:
    void ConnectView();
    void ConnectInput();
    void AddSelectionActions();
    void AddSelection(const char* id,
                      const QString& text,
                      const QString& description,
                      SelectionGesture::Shape shape,
                      const char* step);
    void AddTabletTester();
    void AddEventActions();
    void RecordEvents();
    void PlayEvents();
    void ApplyPreferences();
    void ShowSymmetry();
    /// Whether the user may be asked questions at startup.
    bool MayAsk() const;
    void OpenFirst();
    void WhenOpened();

    CommandLine commandLine;
    /// Folder for temporary preferences and journals.
    QTemporaryDir scratch;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<Engine> engine;
    std::unique_ptr<ActionRegistry> actions;
    std::unique_ptr<ViewModel> view;
    std::unique_ptr<Keymap> keymap;
    std::unique_ptr<MainWindow> window;
    ViewportWidget* viewport = nullptr;
    ViewportInput* input = nullptr;
    std::unique_ptr<CommandLineWork> work;
    std::unique_ptr<EventRecorder> recorder;
    std::unique_ptr<WorkRecovery> recovery;
    FoundWork unfinishedWork;
};

}  // namespace trovik::studio
