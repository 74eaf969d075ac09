// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"

#include <QWidget>

#include <map>

class QLabel;

namespace trovik::studio {

class Engine;
class ViewModel;

/// Counts, memory and times of the document.
class InfoPanel : public QWidget {
    Q_OBJECT
public:
    InfoPanel(Engine& engine, ViewModel& view, QWidget* parent = nullptr);

    /// The value of a row, such as "faces"; for tests.
    QString Text(const QString& row) const;

private:
    void AddRow(const QString& id, const QString& title, const QString& tip);
    void Refresh();

    Engine& engine;
    ViewModel& view;
    StrokeFigures figures;
    std::map<QString, QLabel*> values;
};

}  // namespace trovik::studio
