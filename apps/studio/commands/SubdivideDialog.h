// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentState.h"
#include "framework/mesh/LevelForecast.h"

#include <QDialog>

class QLabel;
class QSpinBox;

namespace trovik::studio {

/// The predicted size of additional levels. It is exact for quads without open borders, and
/// slightly too small for meshes with open borders. It is computed from counts only, so the cost is
/// negligible.
LevelForecast ForecastLevels(const DocumentState& state, int times);

/// A number of bytes or elements in readable form, such as "1.25 GB" or "3.1 million".
QString BytesText(uint64_t bytes);
QString CountText(uint64_t count);

/// Asks how many levels to add, and shows the number of faces and the memory that they need.
class SubdivideDialog : public QDialog {
    Q_OBJECT
public:
    SubdivideDialog(const DocumentState& state, QWidget* parent = nullptr);
    int Times() const;
    QString ForecastText() const;

private:
    void ShowForecast();

    DocumentState state;
    QSpinBox* times;
    QLabel* forecast;
};

}  // namespace trovik::studio
