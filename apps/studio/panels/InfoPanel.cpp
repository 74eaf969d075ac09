// SPDX-License-Identifier: Apache-2.0
#include "panels/InfoPanel.h"

#include "commands/SubdivideDialog.h"
#include "commands/ViewModel.h"
#include "engine/Engine.h"
#include "panels/Controls.h"
#include "panels/DelayedRefresh.h"

#include <QFormLayout>
#include <QLabel>

namespace trovik::studio {

InfoPanel::InfoPanel(Engine& given, ViewModel& model, QWidget* parent)
    : QWidget(parent), engine(given), view(model) {
    setAccessibleName(tr("Information"));
    auto* form = new QFormLayout(this);
    form->setContentsMargins(10, 10, 10, 10);
    form->setVerticalSpacing(5);
    form->setLabelAlignment(Qt::AlignLeft);
    AddRow("file", tr("File"), tr("The document's file"));
    AddRow("level", tr("Level"), tr("The current level"));
    AddRow("faces", tr("Faces"), tr("Number of faces on the current level"));
    AddRow("vertices", tr("Vertices"), tr("Number of vertices on the current level"));
    AddRow("layers", tr("Layers"), tr("Number of layers on the current level"));
    AddRow("size", tr("Size"), tr("Bounding box of the surface, in world units"));
    AddRow("memory", tr("Memory"), tr("Memory used by all meshes and undo steps"));
    AddRow("undo", tr("Undo"), tr("Memory and disk space used by the undo steps"));
    AddRow("dabs", tr("Last stroke"), tr("Dabs of the last stroke"));
    AddRow("dab", tr("Dab"), tr("Time per dab in the last stroke"));
    AddRow("latency", tr("Pen latency"), tr("Delay from a pen sample to the frame that shows it"));
    auto* delayed = new DelayedRefresh(this, &InfoPanel::Refresh);
    connect(&engine, &Engine::StateChanged, this, &InfoPanel::Refresh);
    connect(&engine, &Engine::StrokeAdvanced, this, [this, delayed](const StrokeFigures& newest) {
        figures = newest;
        delayed->Request();
    });
    connect(&view, &ViewModel::PenLatencyChanged, delayed, &DelayedRefresh::Request);
    Refresh();
}

void InfoPanel::AddRow(const QString& id, const QString& title, const QString& tip) {
    auto* value = new QLabel(this);
    value->setAccessibleName(title);
    value->setToolTip(tip);
    value->setTextInteractionFlags(Qt::NoTextInteraction);
    value->setWordWrap(true);
    auto* label = MakeHint(title, this);
    label->setToolTip(tip);
    static_cast<QFormLayout*>(layout())->addRow(label, value);
    values[id] = value;
}

QString InfoPanel::Text(const QString& row) const { return values.at(row)->text(); }

void InfoPanel::Refresh() {
    for (const auto& [id, value] : values) value->setText(QStringLiteral("–"));
    if (!engine.State()) return;
    const DocumentState& state = *engine.State();
    const DocumentState::Level& level = state.levels.at(state.currentLevel);
    const std::string& path = state.scenePath.empty() ? state.sourcePath : state.scenePath;
    values["file"]->setText(QString::fromStdString(path.substr(path.find_last_of('/') + 1)));
    values["level"]->setText(tr("%1 of %2").arg(state.currentLevel).arg(state.levels.size() - 1));
    values["faces"]->setText(CountText(level.faces));
    values["vertices"]->setText(CountText(level.vertices));
    values["layers"]->setText(QString::number(state.layers.size()));
    if (engine.HasDocument()) {
        const AxisAlignedBoundingBox& box = engine.Document().bounds;
        const auto text = [](float length) {
            return QLocale().toString(static_cast<double>(length), 'g', 3);
        };
        values["size"]->setText(QStringLiteral("%1 × %2 × %3")
                                    .arg(text(box.maxX - box.minX),
                                         text(box.maxY - box.minY),
                                         text(box.maxZ - box.minZ)));
    }
    values["memory"]->setText(
        BytesText(static_cast<uint64_t>(std::max<int64_t>(state.memoryBytes, 0))));
    values["undo"]->setText(
        state.historyBytesOnDisk == 0
            ? BytesText(state.historyBytes)
            : tr("%1, %2 on disk")
                  .arg(BytesText(state.historyBytes), BytesText(state.historyBytesOnDisk)));
    if (figures.dabs > 0) {
        values["dabs"]->setText(figures.dabs == 1 ? tr("1 dab") : tr("%1 dabs").arg(figures.dabs));
        values["dab"]->setText(tr("%1 ms").arg(figures.millisecondsPerDab, 0, 'f', 2));
    }
    if (view.PenLatency() > 0.0)
        values["latency"]->setText(tr("%1 ms").arg(view.PenLatency() * 1000.0, 0, 'f', 1));
}

}  // namespace trovik::studio
