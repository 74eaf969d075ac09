// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "input/PointerEvent.h"

#include <QDialog>
#include <QElapsedTimer>

#include <vector>

class QLabel;
class QPlainTextEdit;
class QTabletEvent;

namespace trovik::studio {

class PointerRouter;

/// Displays tablet data: sample rate and jitter, pressure, tilt, rotation, buttons and timestamps,
/// both on its own test area and on the viewport. The report can be copied for a bug report.
class TabletTester : public QDialog {
    Q_OBJECT
public:
    /// \param viewportRouter  its events are shown as well. Borrowed; must outlive the dialog.
    explicit TabletTester(const PointerRouter& viewportRouter, QWidget* parent = nullptr);

    /// The measurements so far, in several lines.
    QString Report() const;

private:
    struct Sample {
        double milliseconds;
        float pressure;
    };

    void Note(const QTabletEvent& event);
    void Note(const PointerEvent& event);
    void Show();

    QLabel* figures;
    QPlainTextEdit* log;
    QString device;
    /// Statistics of the last stroke.
    std::vector<Sample> samples;
    quint64 tabletEvents = 0;
    quint64 mouseEvents = 0;
    /// Distance between pen and cursor at the last press, in logical pixels.
    double offset = 0.0;
    double minPressure = 1.0;
    double maxPressure = 0.0;
    bool hasTilt = false;
    bool hasRotation = false;
};

}  // namespace trovik::studio
