// SPDX-License-Identifier: Apache-2.0
#include "commands/StudioActions.h"

#include <QCoreApplication>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(MaskActions)
};

struct Row {
    const char* id;
    QString text, description;
    const char* key;
    const char* icon;
    nlohmann::json freeze;
};

}  // namespace

void AddMaskActions(const ActionContext& context) {
    const Row rows[] = {
        {"mask.clear",
         Text::tr("Clear Mask"),
         Text::tr("Removes the mask from the whole surface."),
         "Alt+M",
         "mask-clear",
         "clear"},
        {"mask.fill",
         Text::tr("Mask Everything"),
         Text::tr("Masks the whole surface."),
         "Ctrl+A",
         "mask-fill",
         "all"},
        {"mask.invert",
         Text::tr("Invert Mask"),
         Text::tr("Masks what is not masked, and the other way round."),
         "Ctrl+I",
         "mask-invert",
         "invert"},
        {"mask.grow",
         Text::tr("Grow Mask"),
         Text::tr("Widens the mask by one ring of vertices."),
         "Ctrl+]",
         "mask-grow",
         {{"grow", 1}}},
        {"mask.shrink",
         Text::tr("Shrink Mask"),
         Text::tr("Narrows the mask by one ring of vertices."),
         "Ctrl+[",
         "mask-shrink",
         {{"shrink", 1}}},
        {"mask.blur",
         Text::tr("Blur Mask"),
         Text::tr("Softens the border of the mask."),
         "Ctrl+B",
         "mask-blur",
         {{"blur", 2}}},
        {"mask.sharpen",
         Text::tr("Sharpen Mask"),
         Text::tr("Hardens the border of the mask."),
         "Ctrl+Shift+B",
         "mask-sharpen",
         {{"sharpen", 2}}},
        {"mask.cavity",
         Text::tr("Mask Cavities"),
         Text::tr("Masks hollows of the surface, in addition to what is masked."),
         "",
         "mask-cavity",
         {{"cavity", {{"softness", 0.5}}}}},
        {"mask.ridges",
         Text::tr("Mask Ridges"),
         Text::tr("Masks ridges of the surface, in addition to what is masked."),
         "",
         "mask-sharpen",
         {{"cavity", {{"sign", "ridge"}, {"softness", 0.5}}}}},
    };
    for (const Row& row : rows) {
        QList<QKeySequence> keys;
        if (*row.key != '\0') keys.append(QKeySequence(QLatin1String(row.key)));
        QAction* action = context.actions.Add(
            {.id = row.id,
             .text = row.text,
             .description = row.description,
             .keys = keys,
             .icon = row.icon,
             .run = [context, row] { context.Run("freeze", row.freeze, row.text); }});
        context.EnableWithDocument(action);
    }
}

}  // namespace trovik::studio
