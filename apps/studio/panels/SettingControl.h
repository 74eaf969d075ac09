// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "panels/SettingCatalogue.h"

#include <QWidget>

#include <memory>
#include <vector>

class QVBoxLayout;

namespace trovik::studio {

class Engine;

/// The control of one setting of the active tool, chosen by its range: a switch, a list, a slider,
/// a slider with a switch for optional numbers, or a curve. It runs the step "set" when the user
/// changes the value.
class SettingControl : public QWidget {
    Q_OBJECT
public:
    /// Null for settings that other widgets show, such as paths.
    static SettingControl* Make(Engine& engine, const ToolSetting& setting, QWidget* parent);

    const std::string& Name() const { return name; }
    /// Shows the value and the limits of a setting of the same name.
    virtual void Show(const ToolSetting& setting) = 0;

protected:
    SettingControl(Engine& engine, const ToolSetting& setting, QWidget* parent);
    void Send(const nlohmann::json& value);

    Engine& engine;
    std::string name;
    SettingAppearance appearance;
};

/// The controls of some groups of settings, one below the other. Settings that the active tool does
/// not have are hidden; those that currently have no effect are disabled.
class SettingList : public QWidget {
    Q_OBJECT
public:
    SettingList(Engine& engine, SettingGroup group, QWidget* parent);

    /// Null if the group has no such setting.
    SettingControl* Find(const std::string& name) const;
    /// Whether any setting of the group applies to the active tool.
    bool HasAny() const;

Q_SIGNALS:
    void Refreshed();

private:
    void Refresh();

    Engine& engine;
    SettingGroup group;
    QVBoxLayout* layout;
    std::vector<SettingControl*> controls;
};

}  // namespace trovik::studio
