// SPDX-License-Identifier: Apache-2.0
#include "commands/StudioActions.h"
#include "commands/ToolCatalogue.h"

#include <QCoreApplication>

#include <algorithm>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(ToolActions)
};

void AddTool(const ActionContext& context, const ToolAppearance& tool) {
    QList<QKeySequence> keys;
    if (!tool.key.isEmpty()) keys.append(tool.key);
    const std::string name = tool.name.toStdString();
    QAction* action = context.actions.Add({.id = QStringLiteral("tool.%1").arg(tool.name),
                                           .text = LabelOfTool(tool.name),
                                           .description = tool.description,
                                           .keys = keys,
                                           .icon = tool.icon,
                                           .isCheckable = true,
                                           .run = [context, name] { context.Run("tool", name); }});
    context.CheckWhen(action,
                      [name](const DocumentState& state) { return state.tool.name == name; });
    context.EnableWithDocument(action);
}

/// Adds actions for those tools of the plug-in that do not have one yet.
void AddNewTools(const ActionContext& context) {
    for (const std::string& name : context.State().tools) {
        const QString tool = QString::fromStdString(name);
        if (context.actions.Find(QStringLiteral("tool.%1").arg(tool)) == nullptr)
            AddTool(context, AppearanceOf(tool));
    }
}

void Set(const ActionContext& context, const char* name, const nlohmann::json& value) {
    context.Run("set", {{name, value}});
}

/// Multiplies the radius, in its current unit.
void ScaleRadius(const ActionContext& context, double factor) {
    const ToolSetting* pixels = context.engine.Setting("radiusPixels");
    const ToolSetting* world = context.engine.Setting("radius");
    if (pixels != nullptr && pixels->value.is_number())
        Set(context, "radiusPixels", pixels->value.get<double>() * factor);
    else if (world != nullptr && world->value.is_number())
        Set(context, "radius", world->value.get<double>() * factor);
}

void ChangeStrength(const ActionContext& context, double by) {
    const ToolSetting* strength = context.engine.Setting("strength");
    if (strength == nullptr || !strength->value.is_number()) return;
    Set(context, "strength", std::clamp(strength->value.get<double>() + by, 0.0, 100.0));
}

/// Whether a setting is on: a boolean, or a length that is false or null while it is off.
bool IsOn(const nlohmann::json& value) {
    return value.is_boolean() ? value.get<bool>() : !value.is_null();
}

/// An action that toggles a boolean setting of the active tool. It is disabled for tools without
/// that setting.
void AddSwitch(const ActionContext& context, const char* setting, const ActionInfo& given) {
    ActionInfo info = given;
    info.isCheckable = true;
    const std::string name = setting;
    info.run = [context, name] {
        const ToolSetting* present = context.engine.Setting(name);
        if (present == nullptr || !present->applies) return;
        const bool isOn = IsOn(present->value);
        // "stamp.enabled" is the field "enabled" of the setting "stamp".
        const std::size_t dot = name.find('.');
        nlohmann::json value = !isOn;
        if (dot != std::string::npos) value = {{name.substr(dot + 1), value}};
        context.Run("set", {{name.substr(0, dot), value}});
    };
    QAction* action = context.actions.Add(info);
    const auto update = [context, action, name] {
        const ToolSetting* present = context.engine.Setting(name);
        action->setEnabled(present != nullptr && present->applies);
        action->setChecked(action->isEnabled() && IsOn(present->value));
    };
    QObject::connect(&context.engine, &Engine::SettingsChanged, action, update);
    QObject::connect(action, &QAction::triggered, action, update);
    update();
}

}  // namespace

void AddToolActions(const ActionContext& context) {
    for (const ToolAppearance& tool : KnownTools()) AddTool(context, tool);
    QObject::connect(&context.engine, &Engine::StateChanged, &context.actions, [context] {
        AddNewTools(context);
    });
    ActionRegistry& actions = context.actions;
    const auto add = [&](const ActionInfo& info) { context.EnableWithDocument(actions.Add(info)); };
    add({.id = "brush.larger",
         .text = Text::tr("Larger Brush"),
         .description = Text::tr("Makes the brush about 11 percent larger."),
         .keys = {QKeySequence("]")},
         .icon = "plus",
         .run = [context] { ScaleRadius(context, 1.0 / 0.9); }});
    add({.id = "brush.smaller",
         .text = Text::tr("Smaller Brush"),
         .description = Text::tr("Makes the brush 10 percent smaller."),
         .keys = {QKeySequence("[")},
         .icon = "minus",
         .run = [context] { ScaleRadius(context, 0.9); }});
    add({.id = "brush.stronger",
         .text = Text::tr("Stronger Brush"),
         .description = Text::tr("Adds 5 percent to the strength."),
         .keys = {QKeySequence("Shift+]"), QKeySequence("}")},
         .icon = "strength",
         .run = [context] { ChangeStrength(context, 5); }});
    add({.id = "brush.weaker",
         .text = Text::tr("Weaker Brush"),
         .description = Text::tr("Subtracts 5 percent from the strength."),
         .keys = {QKeySequence("Shift+["), QKeySequence("{")},
         .icon = "strength",
         .run = [context] { ChangeStrength(context, -5); }});
    AddSwitch(context,
              "pressureControlsStrength",
              {.id = "brush.pressure.strength",
               .text = Text::tr("Pressure Controls Strength"),
               .description = Text::tr("Pressing harder makes dabs stronger."),
               .keys = {QKeySequence("P")},
               .icon = "pressure"});
    AddSwitch(context,
              "pressureControlsSize",
              {.id = "brush.pressure.size",
               .text = Text::tr("Pressure Controls Size"),
               .description = Text::tr("Pressing harder makes dabs larger."),
               .keys = {QKeySequence("Shift+P")},
               .icon = "radius"});
    AddSwitch(context,
              "stamp.enabled",
              {.id = "brush.stamp",
               .text = Text::tr("Use Stamp"),
               .description = Text::tr("Shapes the active tool's dabs with its stamp."),
               .keys = {QKeySequence("J")},
               .icon = "stamp"});
    AddSwitch(
        context,
        "stabiliser",
        {.id = "brush.steady",
         .text = Text::tr("Steady Stroke"),
         .description = Text::tr("The brush follows the pen at a distance, for smooth curves."),
         .keys = {QKeySequence("Shift+S")},
         .icon = "falloff"});
    AddSwitch(
        context,
        "facing.enabled",
        {.id = "brush.facing",
         .text = Text::tr("Front Faces Only"),
         .description = Text::tr("Reduces the effect where the surface faces away from the view."),
         .icon = "isolate"});
}

}  // namespace trovik::studio
