// SPDX-License-Identifier: Apache-2.0
#include "commands/LayerCommands.h"
#include "commands/StudioActions.h"

#include <QCoreApplication>

#include <algorithm>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(LayerActions)
};

const DocumentState::Layer* Active(const DocumentState& state) {
    const auto found = std::find_if(state.layers.begin(),
                                    state.layers.end(),
                                    [](const DocumentState::Layer& layer) { return layer.active; });
    return found == state.layers.end() ? nullptr : &*found;
}

bool HasActive(const DocumentState& state) { return Active(state) != nullptr; }

void ChangeActive(const ActionContext& context, const char* field, const nlohmann::json& value) {
    const DocumentState::Layer* layer = Active(context.State());
    if (layer != nullptr) context.Run("layer", {{"of", layer->name}, {field, value}});
}

}  // namespace

std::string FreeLayerName(const DocumentState& state, const std::string& wanted) {
    const auto isTaken = [&](const std::string& name) {
        return std::any_of(state.layers.begin(),
                           state.layers.end(),
                           [&](const DocumentState::Layer& layer) { return layer.name == name; });
    };
    // "Skin 2" is followed by "Skin 3", not by "Skin 2 2".
    std::string stem = wanted;
    const std::size_t digits = stem.find_last_not_of("0123456789");
    if (digits != std::string::npos && digits + 1 < stem.size() && stem[digits] == ' ')
        stem.resize(digits);
    std::string name = wanted;
    for (int number = 2; isTaken(name); ++number) name = stem + " " + std::to_string(number);
    return name;
}

void AddLayerActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    const auto add = [&](const ActionInfo& info, auto condition) {
        context.EnableWhen(actions.Add(info), condition);
    };
    add({.id = "layer.add",
         .text = Text::tr("New Layer"),
         .description = Text::tr("Adds a layer on top and records strokes into it."),
         .keys = {QKeySequence("Ctrl+Shift+N")},
         .icon = "plus",
         .run =
             [context] {
                 const std::string wanted =
                     Text::tr("Layer %1").arg(context.State().layers.size() + 1).toStdString();
                 context.Run("layer", {{"add", FreeLayerName(context.State(), wanted)}});
             }},
        [](const DocumentState&) { return true; });
    add({.id = "layer.none",
         .text = Text::tr("Record into No Layer"),
         .description = Text::tr("Strokes change the surface below the layers."),
         .icon = "target",
         .run =
             [context] {
                 context.Run("layer", {{"select", nullptr}});
             }},
        HasActive);
    add({.id = "layer.duplicate",
         .text = Text::tr("Duplicate Layer"),
         .description = Text::tr("Adds a copy of the active layer above it."),
         .icon = "duplicate",
         .run =
             [context] {
                 const DocumentState::Layer* layer = Active(context.State());
                 if (layer != nullptr)
                     ChangeActive(
                         context, "duplicate", FreeLayerName(context.State(), layer->name));
             }},
        HasActive);
    add({.id = "layer.merge",
         .text = Text::tr("Merge Layer Down"),
         .description =
             Text::tr("Merges the active layer into the one below. The surface does not change."),
         .icon = "merge",
         .run = [context] { ChangeActive(context, "mergeDown", true); }},
        [](const DocumentState& state) { return HasActive(state) && !state.layers[0].active; });
    add({.id = "layer.erase",
         .text = Text::tr("Erase Layer by Mask"),
         .description = Text::tr("Removes the active layer's detail in proportion to the mask."),
         .icon = "erase",
         .run = [context] { ChangeActive(context, "erase", true); }},
        HasActive);
    add({.id = "layer.visible",
         .text = Text::tr("Show or Hide Layer"),
         .description = Text::tr("Turns the active layer's effect on the surface on or off."),
         .keys = {QKeySequence("Ctrl+H")},
         .icon = "eye",
         .run =
             [context] {
                 const DocumentState::Layer* layer = Active(context.State());
                 if (layer != nullptr) ChangeActive(context, "visible", !layer->visible);
             }},
        HasActive);
    add({.id = "layer.lock",
         .text = Text::tr("Lock or Unlock Layer"),
         .description = Text::tr("Protects the active layer from strokes, or permits them again."),
         .icon = "lock",
         .run =
             [context] {
                 const DocumentState::Layer* layer = Active(context.State());
                 if (layer != nullptr) ChangeActive(context, "writable", !layer->writable);
             }},
        HasActive);
    const auto move = [context](int by) {
        const DocumentState& state = context.State();
        for (std::size_t i = 0; i < state.layers.size(); ++i)
            if (state.layers[i].active) ChangeActive(context, "order", static_cast<int>(i) + by);
    };
    add({.id = "layer.raise",
         .text = Text::tr("Raise Layer"),
         .description = Text::tr("Moves the active layer up by one position."),
         .icon = "level-up",
         .run = [move] { move(1); }},
        [](const DocumentState& state) { return HasActive(state) && !state.layers.back().active; });
    add({.id = "layer.lower",
         .text = Text::tr("Lower Layer"),
         .description = Text::tr("Moves the active layer down by one position."),
         .icon = "level-down",
         .run = [move] { move(-1); }},
        [](const DocumentState& state) {
            return HasActive(state) && !state.layers.front().active;
        });
    add({.id = "layer.delete",
         .text = Text::tr("Delete Layer"),
         .description = Text::tr("Deletes the active layer and its detail."),
         .icon = "trash",
         .run = [context] { ChangeActive(context, "remove", true); }},
        HasActive);
}

}  // namespace trovik::studio
