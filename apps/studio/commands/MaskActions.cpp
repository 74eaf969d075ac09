// SPDX-License-Identifier: Apache-2.0
#include "commands/StepAction.h"
#include "commands/StudioActions.h"

#include <QCoreApplication>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(MaskActions)
};

}  // namespace

void AddMaskActions(const ActionContext& context) {
    const StepAction rows[] = {
        {"mask.clear",
         Text::tr("Clear Mask"),
         Text::tr("Clear"),
         Text::tr("Removes the mask from the whole surface."),
         "Alt+M",
         "mask-clear",
         "mask",
         "clear"},
        {"mask.fill",
         Text::tr("Mask Everything"),
         Text::tr("Fill"),
         Text::tr("Masks the whole surface."),
         "Ctrl+A",
         "mask-fill",
         "mask",
         "all"},
        {"mask.invert",
         Text::tr("Invert Mask"),
         Text::tr("Invert"),
         Text::tr("Masks unmasked areas and unmasks masked ones."),
         "Ctrl+I",
         "mask-invert",
         "mask",
         "invert"},
        {"mask.grow",
         Text::tr("Grow Mask"),
         Text::tr("Grow"),
         Text::tr("Grows the mask by one ring of vertices."),
         "Ctrl+]",
         "mask-grow",
         "mask",
         {{"grow", 1}}},
        {"mask.shrink",
         Text::tr("Shrink Mask"),
         Text::tr("Shrink"),
         Text::tr("Shrinks the mask by one ring of vertices."),
         "Ctrl+[",
         "mask-shrink",
         "mask",
         {{"shrink", 1}}},
        {"mask.blur",
         Text::tr("Blur Mask"),
         Text::tr("Blur"),
         Text::tr("Softens the border of the mask."),
         "Ctrl+B",
         "mask-blur",
         "mask",
         {{"blur", 2}}},
        {"mask.sharpen",
         Text::tr("Sharpen Mask"),
         Text::tr("Sharpen"),
         Text::tr("Hardens the border of the mask."),
         "Ctrl+Shift+B",
         "mask-sharpen",
         "mask",
         {{"sharpen", 2}}},
        {"mask.cavity",
         Text::tr("Mask Cavities"),
         Text::tr("Cavities"),
         Text::tr("Masks hollows in the surface, in addition to the current mask."),
         "",
         "mask-cavity",
         "mask",
         {{"cavity", {{"softness", 0.5}}}}},
        {"mask.ridges",
         Text::tr("Mask Ridges"),
         Text::tr("Ridges"),
         Text::tr("Masks ridges on the surface, in addition to the current mask."),
         "",
         "mask-sharpen",
         "mask",
         {{"cavity", {{"sign", "ridge"}, {"softness", 0.5}}}}},
    };
    for (const StepAction& row : rows) AddStepAction(context, row);
}

}  // namespace trovik::studio
