// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentState.h"
#include "framework/mesh/LevelForecast.h"

#include <QDialog>

class QLabel;
class QSpinBox;

namespace trovik::studio {

/// What more levels on top of a document would hold. Exact for quads without open borders; with
/// borders a little less than what it will be. Estimated from counts, so that it costs nothing.
LevelForecast ForecastLevels(const DocumentState& state, int times);

/// A number of bytes or elements as users read it, such as "1.25 GB" or "3.1 million".
QString BytesText(uint64_t bytes);
QString CountText(uint64_t count);

/// Asks how many levels to add, with the faces and the memory that they need.
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
