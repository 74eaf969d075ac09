// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"

namespace trovik::studio {

/// An action that runs one step of a stroke script, enabled while a document is open.
struct StepAction {
    const char* id;
    /// `shortText` is the text of buttons in a group of such actions.
    QString text, shortText, description;
    /// A key sequence; may be empty.
    const char* key;
    const char* icon;
    /// The step {step: value}.
    const char* step;
    nlohmann::json value;
};

void AddStepAction(const ActionContext& context, const StepAction& row);

}  // namespace trovik::studio
