// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionRegistry.h"
#include "commands/Preferences.h"
#include "commands/StudioScene.h"
#include "commands/ViewModel.h"
#include "engine/Engine.h"
#include "events/EventPlayer.h"
#include "framework/io/ContentHash.h"
#include "input/ViewportInput.h"
#include "tests/studio/WaitFor.h"
#include "viewport/ViewportWidget.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>

#include <string>
#include <vector>

namespace trovik::studio::test {

/// A viewport with input and actions, in a window without panels, on which events are played.
class StudioSession {
public:
    /// \param keepsJournal  whether a journal is kept, in the folder "journals" within `folder`.
    explicit StudioSession(bool keepsJournal = false);

    QTemporaryDir folder;
    std::string Path(const char* name) const { return folder.filePath(name).toStdString(); }

    template <typename Condition>
    static bool WaitFor(Condition condition) {
        return studio::WaitFor(condition, 120'000);
    }
    bool WaitUntilIdle() {
        return WaitFor([this] { return engine.IsIdle(); });
    }

    /// Opens the bust with two additional levels, seen through BustCamera. Fails the test on
    /// errors.
    void OpenBust();
    /// \return the playback error, or an empty string.
    QString Play(std::vector<TimedInput> events,
                 EventPlayer::Pace pace = EventPlayer::Pace::Settled);
    /// Saves the scene and returns its hash.
    ContentHash SceneHash();

    Engine engine;
    Preferences preferences;
    ViewModel view;
    StudioScene scene{engine};
    QWidget window;
    ActionRegistry actions;
    ViewportWidget* viewport;
    ViewportInput* input;
    EventTarget target;
    EventPlayer player;
    QStringList failures, notes;
};

/// The size of the viewport in all sessions.
constexpr QSize viewportSize(800, 600);

/// A camera that shows the bust.
CameraInput BustCamera();

/// Events of a stroke with a pen across the bust.
std::vector<TimedInput> PenStroke(double y, uint32_t time, int samples = 40, bool isEraser = false);
/// Events of the same stroke with a mouse.
std::vector<TimedInput> MouseStroke(double y, uint32_t time, bool isFromPen = false);
TimedInput Key(KeyInput::Kind kind, QKeyCombination key, uint32_t time = 0);
TimedInput Step(const char* json);
/// Concatenates lists of events.
std::vector<TimedInput> Joined(std::initializer_list<std::vector<TimedInput>> lists);

}  // namespace trovik::studio::test
