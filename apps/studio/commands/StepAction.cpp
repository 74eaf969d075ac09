// SPDX-License-Identifier: Apache-2.0
#include "commands/StepAction.h"

namespace trovik::studio {

void AddStepAction(const ActionContext& context, const StepAction& row) {
    QList<QKeySequence> keys;
    if (*row.key != '\0') keys.append(QKeySequence(QLatin1String(row.key)));
    QAction* action = context.actions.Add(
        {.id = row.id,
         .text = row.text,
         .description = row.description,
         .keys = keys,
         .icon = row.icon,
         .run = [context, row] { context.Run(row.step, row.value, row.text); }});
    action->setIconText(row.shortText);
    context.EnableWithDocument(action);
}

}  // namespace trovik::studio
