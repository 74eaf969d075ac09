// SPDX-License-Identifier: Apache-2.0
#include "panels/SymmetryPanel.h"

#include "commands/ActionRegistry.h"
#include "engine/Engine.h"
#include "panels/Controls.h"
#include "panels/ValueSlider.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace trovik::studio {

namespace {

PanelCombo* MakeAxes(const QString& name, const QString& tip, QWidget* parent) {
    auto* box = new PanelCombo(name, tip, parent);
    for (const char* axis : {"x", "y", "z"})
        box->addItem(SymmetryPanel::tr("%1 axis").arg(QString::fromLatin1(axis).toUpper()), axis);
    return box;
}

}  // namespace

SymmetryPanel::SymmetryPanel(Engine& given, ActionRegistry& actions, QWidget* parent)
    : QWidget(parent), engine(given) {
    setAccessibleName(tr("Symmetry"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    auto* strokes = new Section(tr("Symmetry of strokes"), this);
    layout->addWidget(strokes);
    auto* planes = new QHBoxLayout;
    planes->setSpacing(4);
    for (const char* id : {"symmetry.x", "symmetry.y", "symmetry.z"}) {
        QToolButton* button = MakeActionButton(actions.Find(id), strokes, true);
        button->setToolButtonStyle(Qt::ToolButtonIconOnly);
        planes->addWidget(button, 1);
    }
    strokes->Body()->addLayout(planes);
    copies = new ValueSlider(
        tr("Radial copies"), tr("Number of copies of each dab about the axis; 1: off"), strokes);
    ValueSlider::Range range;
    range.isWhole = true;
    range.least = 1;
    range.most = 65;
    range.softLeast = 1;
    range.softMost = 24;
    copies->SetRange(range);
    axis = MakeAxes(tr("Radial axis"), tr("The axis about which the copies are rotated"), strokes);
    axis->setCurrentIndex(1);
    auto* radial = new QHBoxLayout;
    radial->setSpacing(4);
    radial->addWidget(copies, 2);
    radial->addWidget(axis, 1);
    strokes->Body()->addLayout(radial);
    strokes->Body()->addWidget(
        MakeActionButton(actions.Find("symmetry.topological"), strokes, true));
    strokes->Body()->addWidget(MakeActionButton(actions.Find("symmetry.off"), strokes, true));

    auto* mesh = new Section(tr("Symmetrize mesh"), this);
    layout->addWidget(mesh);
    symmetrizeAxis = MakeAxes(tr("Axis"), tr("The axis perpendicular to the symmetry plane"), mesh);
    side = new PanelCombo(tr("Side"), tr("The half whose shape is kept"), mesh);
    side->addItem(tr("Keep + side"), "positive");
    side->addItem(tr("Keep - side"), "negative");
    auto* row = new QHBoxLayout;
    row->setSpacing(4);
    row->addWidget(symmetrizeAxis, 1);
    row->addWidget(side, 1);
    mesh->Body()->addLayout(row);
    auto* apply = new QPushButton(tr("Symmetrize"), mesh);
    apply->setFocusPolicy(Qt::NoFocus);
    apply->setAccessibleName(apply->text());
    apply->setToolTip(tr("Makes the other half of the mesh a mirror image of the kept half"));
    mesh->Body()->addWidget(apply);
    layout->addStretch();

    connect(apply, &QPushButton::clicked, this, [this] {
        engine.Run({{"symmetrize",
                     {{"axis", symmetrizeAxis->currentData().toString().toStdString()},
                      {"from", side->currentData().toString().toStdString()}}}},
                   tr("Symmetrize"));
    });
    connect(copies, &ValueSlider::Edited, this, [this](double value) {
        setting.mirrors.copies = static_cast<int>(value);
        setting.mirrors.axis = axis->currentIndex();
        setting.isTopological = false;
        Send();
    });
    connect(axis, &QComboBox::activated, this, [this](int index) {
        setting.mirrors.axis = index;
        if (setting.mirrors.copies > 1) Send();
    });
    connect(&engine, &Engine::StateChanged, this, &SymmetryPanel::Refresh);
    Refresh();
}

void SymmetryPanel::Send() { engine.Run({{"mirror", setting.ToJson()}}); }

void SymmetryPanel::Refresh() {
    setEnabled(engine.State() != nullptr);
    if (!engine.State()) return;
    setting = SymmetrySetting::Of(*engine.State());
    copies->SetValue(setting.mirrors.copies);
    if (setting.mirrors.copies > 1) axis->setCurrentIndex(setting.mirrors.axis);
}

}  // namespace trovik::studio
