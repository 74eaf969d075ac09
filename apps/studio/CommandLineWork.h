// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "CommandLine.h"
#include "events/EventPlayer.h"

#include <QObject>
#include <QTimer>

class QWidget;

namespace trovik::studio {

/// Carries out the command-line options after the document has been opened: plays events, saves the
/// scene, writes a screenshot of the window, and ends the program. Errors are printed on standard
/// error; with `--quit`, the first one ends the program with status 1.
class CommandLineWork : public QObject {
    Q_OBJECT
public:
    /// Borrows all arguments. \param window  the window shown in screenshots.
    CommandLineWork(const CommandLine& commandLine, const EventTarget& target, QWidget& window);

    bool IsNeeded() const;
    EventPlayer& Player() { return player; }
    /// Reports an error; with `--quit`, it ends the program. Has no effect if IsNeeded is false.
    void Fail(const QString& error);

private:
    void Begin();
    void Continue();
    bool IsSettled() const;

    enum class Stage { Open, Events, Save, Screenshot, Done };

    CommandLine commandLine;
    EventTarget target;
    QWidget& window;
    EventPlayer player;
    Stage stage = Stage::Open;
    /// Checks whether the engine is idle and everything has been drawn.
    QTimer poll;
};

}  // namespace trovik::studio
