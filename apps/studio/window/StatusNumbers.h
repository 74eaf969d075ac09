// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;
class QToolButton;

namespace trovik::studio {

class Engine;
class ViewModel;

/// Statistics of the document in the status bar.
class StatusNumbers : public QWidget {
    Q_OBJECT
public:
    StatusNumbers(Engine& engine, ViewModel& view, QWidget* parent);
    QString Text() const;

private:
    void Refresh();

    Engine& engine;
    ViewModel& view;
    QLabel* text;
    double millisecondsPerDab = 0.0;
};

/// Progress of the running command, with a cancel button; hidden while no command is running.
class JobBar : public QWidget {
    Q_OBJECT
public:
    JobBar(Engine& engine, QWidget* parent);

private:
    QLabel* label;
    QProgressBar* progress;
    QToolButton* cancel;
};

}  // namespace trovik::studio
