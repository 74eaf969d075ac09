// SPDX-License-Identifier: Apache-2.0
#include "window/StatusNumbers.h"

#include "commands/SubdivideDialog.h"
#include "commands/ViewModel.h"
#include "engine/Engine.h"
#include "panels/Controls.h"
#include "panels/DelayedRefresh.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QToolButton>

namespace trovik::studio {

StatusNumbers::StatusNumbers(Engine& given, ViewModel& model, QWidget* parent)
    : QWidget(parent), engine(given), view(model) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 0, 6, 0);
    text = new QLabel(this);
    text->setAccessibleName(tr("Document"));
    text->setToolTip(tr("Level, faces, memory, undo bytes, time per dab, pen latency"));
    layout->addWidget(text);
    auto* delayed = new DelayedRefresh(this, &StatusNumbers::Refresh);
    connect(&engine, &Engine::StateChanged, this, &StatusNumbers::Refresh);
    connect(&engine, &Engine::StrokeAdvanced, this, [this, delayed](const StrokeFigures& figures) {
        millisecondsPerDab = figures.millisecondsPerDab;
        delayed->Request();
    });
    connect(&view, &ViewModel::PenLatencyChanged, delayed, &DelayedRefresh::Request);
    Refresh();
}

QString StatusNumbers::Text() const { return text->text(); }

void StatusNumbers::Refresh() {
    if (!engine.State()) {
        text->setText(tr("No document"));
        return;
    }
    const DocumentState& state = *engine.State();
    const DocumentState::Level& level = state.levels.at(state.currentLevel);
    QStringList parts{tr("Level %1/%2").arg(state.currentLevel).arg(state.levels.size() - 1),
                      tr("%1 faces").arg(CountText(level.faces)),
                      BytesText(static_cast<uint64_t>(std::max<int64_t>(state.memoryBytes, 0))),
                      tr("undo %1").arg(BytesText(state.historyBytes + state.historyBytesOnDisk))};
    if (millisecondsPerDab > 0.0) parts.append(tr("dab %1 ms").arg(millisecondsPerDab, 0, 'f', 2));
    if (view.PenLatency() > 0.0)
        parts.append(tr("pen latency %1 ms").arg(view.PenLatency() * 1000.0, 0, 'f', 0));
    text->setText(parts.join(QStringLiteral("   ·   ")));
}

JobBar::JobBar(Engine& engine, QWidget* parent) : QWidget(parent) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    label = new QLabel(this);
    label->setAccessibleName(tr("Running command"));
    progress = new QProgressBar(this);
    progress->setFixedSize(160, fontMetrics().height());
    progress->setTextVisible(false);
    progress->setAccessibleName(tr("Progress"));
    progress->setToolTip(tr("Progress of the running command"));
    cancel = MakeIconButton(QStringLiteral("cancel"),
                            tr("Cancel"),
                            tr("Stops the command; the document is not changed"),
                            this);
    const int side = fontMetrics().height() - 2;
    cancel->setIconSize({side, side});
    layout->addWidget(label);
    layout->addWidget(progress);
    layout->addWidget(cancel);
    hide();
    connect(cancel, &QToolButton::clicked, &engine, &Engine::CancelJob);
    connect(&engine, &Engine::BusyChanged, this, [this](bool busy) {
        if (!busy) hide();
    });
    connect(&engine,
            &Engine::JobProgressed,
            this,
            [this](const QString& name, const QString& phase, quint64 done, quint64 total) {
                label->setText(name == phase || phase.isEmpty() ? name : name + ": " + phase);
                // In thousandths; a range of 0 indicates that the total is unknown.
                progress->setRange(0, total == 0 ? 0 : 1000);
                if (total > 0)
                    progress->setValue(static_cast<int>(static_cast<double>(done) * 1000.0 /
                                                        static_cast<double>(total)));
                show();
            });
}

}  // namespace trovik::studio
