// SPDX-License-Identifier: Apache-2.0
#include "commands/SubdivideDialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSpinBox>

namespace trovik::studio {

LevelForecast ForecastLevels(const DocumentState& state, int times) {
    LevelForecast forecast;
    if (state.levels.empty()) return forecast;
    forecast.faces = state.levels.back().faces;
    forecast.vertices = state.levels.back().vertices;
    for (int i = 0; i < times; ++i) {
        // Each face and each edge gets a new vertex; a closed quad mesh has two edges per face.
        forecast.vertices += 3 * forecast.faces;
        forecast.faces *= 4;
        forecast.bytes += forecast.faces * LevelForecast::bytesPerFace +
                          forecast.vertices * LevelForecast::bytesPerVertex;
        ++forecast.levels;
    }
    return forecast;
}

QString BytesText(uint64_t bytes) {
    return QLocale().formattedDataSize(static_cast<qint64>(bytes),
                                       bytes < 10'000'000      ? 1
                                       : bytes < 1'000'000'000 ? 0
                                                               : 2,
                                       QLocale::DataSizeSIFormat);
}

QString CountText(uint64_t count) {
    if (count < 1'000'000) return QLocale().toString(static_cast<qulonglong>(count));
    return SubdivideDialog::tr("%1 million")
        .arg(QLocale().toString(static_cast<double>(count) / 1e6, 'f', count < 10'000'000 ? 2 : 1));
}

SubdivideDialog::SubdivideDialog(const DocumentState& given, QWidget* parent)
    : QDialog(parent), state(given) {
    setWindowTitle(tr("Subdivide"));
    auto* layout = new QFormLayout(this);
    times = new QSpinBox(this);
    times->setRange(1, 6);
    times->setAccessibleName(tr("Levels to add"));
    times->setToolTip(tr("Each level has four times as many faces as the one below"));
    layout->addRow(tr("Levels to add"), times);
    forecast = new QLabel(this);
    forecast->setAccessibleName(tr("Forecast"));
    layout->addRow(tr("Result"), forecast);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    auto* go = buttons->addButton(tr("Subdivide"), QDialogButtonBox::AcceptRole);
    go->setToolTip(tr("Adds the levels"));
    buttons->button(QDialogButtonBox::Cancel)->setToolTip(tr("Changes nothing"));
    go->setDefault(true);
    layout->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(times, &QSpinBox::valueChanged, this, &SubdivideDialog::ShowForecast);
    ShowForecast();
}

int SubdivideDialog::Times() const { return times->value(); }

QString SubdivideDialog::ForecastText() const { return forecast->text(); }

void SubdivideDialog::ShowForecast() {
    const LevelForecast more = ForecastLevels(state, Times());
    forecast->setText(
        tr("%1 faces, %2 more memory").arg(CountText(more.faces), BytesText(more.bytes)));
}

}  // namespace trovik::studio
