// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "CommandLine.h"
#include "events/EventPlayer.h"

#include <QObject>
#include <QTimer>

class QWidget;

namespace trovik::studio {

/// Does what the command line asks for after the document is open: plays events, saves the scene,
/// writes a screenshot of the window, and ends the program. Errors go to standard error; with
/// `--quit` the first one ends the program with status 1.
class CommandLineWork : public QObject {
    Q_OBJECT
public:
    /// \param window  the one that a screenshot shows. Borrows everything.
    CommandLineWork(const CommandLine& commandLine, const EventTarget& target, QWidget& window);

    bool IsNeeded() const;
    EventPlayer& Player() { return player; }

private:
    void Begin();
    void Continue();
    void Fail(const QString& error);
    bool IsSettled() const;

    enum class Stage { Open, Events, Save, Screenshot, Done };

    CommandLine commandLine;
    EventTarget target;
    QWidget& window;
    EventPlayer player;
    Stage stage = Stage::Open;
    /// Looks whether the engine is idle and everything is drawn.
    QTimer poll;
};

}  // namespace trovik::studio
