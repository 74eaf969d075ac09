// SPDX-License-Identifier: Apache-2.0
#include "commands/StudioActions.h"
#include "commands/StudioScene.h"

#include <QCoreApplication>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(GroupActions)
};

/// An action on the selected group.
struct GroupAction {
    const char* id;
    QString text, shortText, description;
    const char* icon;
    /// The step {step: {"group": name}}, with a "mode" if it is not empty.
    const char* step;
    const char* mode;
};

}  // namespace

void AddGroupActions(const ActionContext& context) {
    const GroupAction rows[] = {
        {"group.mask",
         Text::tr("Mask Group"),
         Text::tr("Mask"),
         Text::tr("Adds the selected face group to the mask."),
         "mask-fill",
         "mask",
         ""},
        {"group.unmask",
         Text::tr("Unmask Group"),
         Text::tr("Unmask"),
         Text::tr("Removes the mask from the selected face group."),
         "mask-clear",
         "mask",
         "subtract"},
        {"group.maskOnly",
         Text::tr("Mask Only Group"),
         Text::tr("Mask only"),
         Text::tr("Masks the selected face group and nothing else."),
         "mask",
         "mask",
         "replace"},
        {"group.hide",
         Text::tr("Hide Group"),
         Text::tr("Hide"),
         Text::tr("Hides the selected face group."),
         "hide",
         "hide",
         ""},
        {"group.isolate",
         Text::tr("Isolate Group"),
         Text::tr("Isolate"),
         Text::tr("Hides everything except the selected face group."),
         "isolate",
         "isolate",
         ""},
        {"group.show",
         Text::tr("Show Group"),
         Text::tr("Show"),
         Text::tr("Shows the selected face group."),
         "show",
         "show",
         ""},
    };
    for (const GroupAction& row : rows) {
        QAction* action = context.actions.Add(
            {.id = row.id,
             .text = row.text,
             .description = row.description,
             .icon = row.icon,
             .run = [context, row] {
                 const auto index = static_cast<std::size_t>(context.scene.CurrentGroup());
                 nlohmann::json choice = {{"group", context.scene.Groups().at(index).name}};
                 if (*row.mode != '\0') choice["mode"] = row.mode;
                 context.Run(row.step, std::move(choice), row.text);
             }});
        action->setIconText(row.shortText);
        EnableWhen(context.scene, action, [](const StudioScene& scene) {
            return scene.CurrentGroup() >= 0;
        });
    }
}

}  // namespace trovik::studio
