// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionRegistry.h"
#include "engine/Engine.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace trovik::studio {

class Preferences;
class StudioScene;
class ViewModel;

/// The objects that actions use. All members are borrowed and must outlive the actions.
struct ActionContext {
    Engine& engine;
    ActionRegistry& actions;
    ViewModel& view;
    Preferences& preferences;
    StudioScene& scene;
    /// Parent window of dialogs.
    QWidget* window;

    /// The document's state. It has no levels before the first document is opened.
    const DocumentState& State() const {
        static const DocumentState none;
        return engine.State() ? *engine.State() : none;
    }
    /// Runs the step {name: value}.
    void Run(const char* name, nlohmann::json value, const QString& label = {}) const {
        nlohmann::json step;
        step[name] = std::move(value);
        engine.Run(step, label);
    }
    /// Enables the action while a document is open and a condition on its state holds.
    template <typename Condition>
    void EnableWhen(QAction* action, Condition condition) const {
        const auto update = [self = *this, action, condition] {
            action->setEnabled(self.engine.State() && condition(*self.engine.State()));
        };
        QObject::connect(&engine, &Engine::StateChanged, action, update);
        update();
    }
    void EnableWithDocument(QAction* action) const {
        EnableWhen(action, [](const DocumentState&) { return true; });
    }
    /// Keeps an action's check mark in sync with a condition on the document's state.
    template <typename Condition>
    void CheckWhen(QAction* action, Condition condition) const {
        const auto update = [self = *this, action, condition] {
            action->setChecked(self.engine.State() && condition(*self.engine.State()));
        };
        QObject::connect(&engine, &Engine::StateChanged, action, update);
        // A click has already toggled the check mark, but the engine's state is authoritative.
        QObject::connect(action, &QAction::triggered, action, update);
        update();
    }
};

}  // namespace trovik::studio
