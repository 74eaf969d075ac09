// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "panels/SettingCatalogue.h"

#include <QScrollArea>

#include <map>

class QAction;
class QHBoxLayout;
class QLabel;

namespace trovik::studio {

class Engine;
class Section;
class SettingControl;
class SettingList;

/// All settings of the active tool, in groups.
class BrushPanel : public QScrollArea {
    Q_OBJECT
public:
    explicit BrushPanel(Engine& engine, QWidget* parent = nullptr);

    /// Adds a button for an action next to the title.
    void AddTitleAction(QAction* action);
    /// The control of a setting; null if there is none yet.
    SettingControl* Control(const std::string& name) const;

private:
    void AddGroup(SettingGroup group, bool isOpen);
    void Refresh();

    Engine& engine;
    QLabel* title;
    QLabel* titleIcon;
    QHBoxLayout* head;
    std::map<SettingGroup, Section*> sections;
    std::map<SettingGroup, SettingList*> lists;
};

}  // namespace trovik::studio
