// SPDX-License-Identifier: Apache-2.0
#include "commands/StepAction.h"
#include "commands/StudioActions.h"

#include <QCoreApplication>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(VisibilityActions)
};

/// A face is selected if the mask weight is at least one half at all its corners.
constexpr double maskLimit = 0.5;

}  // namespace

void AddVisibilityActions(const ActionContext& context) {
    const nlohmann::json masked = {{"mask", maskLimit}};
    const StepAction rows[] = {
        {"visibility.hide",
         Text::tr("Hide Masked"),
         Text::tr("Hide"),
         Text::tr("Hides the masked faces. Hidden faces are not sculpted or rendered."),
         "H",
         "hide",
         "hide",
         masked},
        {"visibility.isolate",
         Text::tr("Isolate Masked"),
         Text::tr("Isolate"),
         Text::tr("Hides all faces except the masked ones."),
         "Shift+H",
         "isolate",
         "isolate",
         masked},
        {"visibility.show",
         Text::tr("Show All"),
         Text::tr("Show all"),
         Text::tr("Shows all hidden faces."),
         "Alt+H",
         "show",
         "show",
         "all"},
        {"visibility.invert",
         Text::tr("Invert Visibility"),
         Text::tr("Invert"),
         Text::tr("Shows hidden faces and hides visible ones."),
         "Ctrl+Shift+H",
         "invert-visibility",
         "invertVisibility",
         true},
        {"visibility.grow",
         Text::tr("Hide More"),
         Text::tr("Hide more"),
         Text::tr("Hides one more ring of faces around the hidden ones."),
         "",
         "mask-grow",
         "hide",
         {{"hidden", true}, {"grow", 1}}},
    };
    for (const StepAction& row : rows) AddStepAction(context, row);
}

}  // namespace trovik::studio
