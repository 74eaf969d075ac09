// SPDX-License-Identifier: Apache-2.0
#include "panels/LevelsPanel.h"

#include "commands/ActionRegistry.h"
#include "commands/SubdivideDialog.h"
#include "engine/Engine.h"
#include "panels/Controls.h"
#include "panels/ValueSlider.h"

#include <QGridLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

namespace trovik::studio {

LevelsPanel::LevelsPanel(Engine& given, ActionRegistry& actions, QWidget* parent)
    : QWidget(parent), engine(given) {
    setAccessibleName(tr("Levels"));
    QVBoxLayout* layout = MakePanelLayout(this);
    level = new ValueSlider(
        tr("Level"), tr("The level that is displayed and sculpted; the lowest is 0"), this);
    layout->addWidget(level);
    counts = new QLabel(this);
    layout->addWidget(counts);
    auto* grid = new QGridLayout;
    grid->setSpacing(4);
    const char* ids[] = {"level.subdivide.once",
                         "level.unsubdivide",
                         "level.delete.higher",
                         "level.delete.lower",
                         "level.apply",
                         "level.subdivide"};
    int cell = 0;
    for (const char* id : ids) {
        grid->addWidget(MakeActionButton(actions.Find(id), this, true), cell / 2, cell % 2);
        ++cell;
    }
    forecast = MakeHint({}, this);
    layout->addWidget(forecast);
    layout->addSpacing(4);
    layout->addLayout(grid);
    layout->addStretch();
    connect(level, &ValueSlider::Edited, this, [this](double value) {
        engine.Run({{"level", static_cast<int>(value)}}, tr("Level %1").arg(value));
    });
    connect(&engine, &Engine::StateChanged, this, &LevelsPanel::Refresh);
    Refresh();
}

void LevelsPanel::Refresh() {
    setEnabled(engine.State() != nullptr);
    if (!engine.State()) return;
    const DocumentState& state = *engine.State();
    ValueSlider::Range range;
    range.isWhole = true;
    range.least = 0;
    range.most = static_cast<double>(state.levels.size()) - 1;
    level->SetRange(range);
    level->setEnabled(state.levels.size() > 1);
    level->SetValue(state.currentLevel);
    const DocumentState::Level& current = state.levels.at(state.currentLevel);
    counts->setText(tr("Level %1 of %2: %3 faces, %4 vertices")
                        .arg(state.currentLevel)
                        .arg(state.levels.size() - 1)
                        .arg(CountText(current.faces), CountText(current.vertices)));
    counts->setWordWrap(true);
    const LevelForecast more = ForecastLevels(state, 1);
    forecast->setText(tr("One more level: %1 faces, %2 more memory")
                          .arg(CountText(more.faces), BytesText(more.bytes)));
}

}  // namespace trovik::studio
