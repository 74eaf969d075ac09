// SPDX-License-Identifier: Apache-2.0
#include "panels/BrushPanel.h"

#include "commands/ToolCatalogue.h"
#include "engine/Engine.h"
#include "panels/Controls.h"
#include "panels/SettingControl.h"
#include "resources/Icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace trovik::studio {

BrushPanel::BrushPanel(Engine& given, QWidget* parent) : QScrollArea(parent), engine(given) {
    setAccessibleName(tr("Brush"));
    setFocusPolicy(Qt::NoFocus);
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* contents = new QWidget(this);
    auto* layout = new QVBoxLayout(contents);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    head = new QHBoxLayout;
    head->setContentsMargins(8, 6, 4, 6);
    titleIcon = new QLabel(contents);
    title = new QLabel(contents);
    title->setObjectName(QStringLiteral("panelTitle"));
    head->addWidget(titleIcon);
    head->addWidget(title, 1);
    layout->addLayout(head);
    setWidget(contents);
    AddGroup(SettingGroup::Brush, true);
    AddGroup(SettingGroup::Detail, true);
    AddGroup(SettingGroup::Stroke, true);
    AddGroup(SettingGroup::Pressure, false);
    AddGroup(SettingGroup::Stamp, false);
    AddGroup(SettingGroup::Advanced, false);
    layout->addStretch();
    connect(&engine, &Engine::StateChanged, this, &BrushPanel::Refresh);
    connect(&engine, &Engine::SettingsChanged, this, &BrushPanel::Refresh);
    Refresh();
}

void BrushPanel::AddGroup(SettingGroup group, bool isOpen) {
    auto* section = new Section(TitleOf(group), widget(), isOpen);
    auto* list = new SettingList(engine, group, section);
    section->Body()->addWidget(list);
    widget()->layout()->addWidget(section);
    sections[group] = section;
    lists[group] = list;
}

void BrushPanel::AddTitleAction(QAction* action) {
    head->addWidget(MakeActionButton(action, widget()));
}

SettingControl* BrushPanel::Control(const std::string& name) const {
    for (const auto& [group, list] : lists)
        if (SettingControl* control = list->Find(name)) return control;
    return nullptr;
}

void BrushPanel::Refresh() {
    const QString tool =
        engine.State() ? QString::fromStdString(engine.State()->tool.name) : QString();
    const ToolAppearance appearance = AppearanceOf(tool);
    title->setText(tool.isEmpty() ? tr("No document") : LabelOfTool(tool));
    const int side = fontMetrics().height() + 4;
    titleIcon->setPixmap(Icon(tool.isEmpty() ? QStringLiteral("brush") : appearance.icon)
                             .pixmap(QSize(side, side), devicePixelRatioF()));
    title->setToolTip(appearance.description);
    for (const auto& [group, section] : sections) section->setVisible(lists.at(group)->HasAny());
}

}  // namespace trovik::studio
