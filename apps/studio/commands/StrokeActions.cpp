// SPDX-License-Identifier: Apache-2.0
#include "commands/StudioActions.h"

#include <QCoreApplication>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(StrokeActions)
};

}  // namespace

void AddStrokeActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    actions.AddHeld({.id = "stroke.smooth",
                     .text = Text::tr("Smooth While Held"),
                     .description = Text::tr("Strokes smooth the surface, regardless of the tool."),
                     .keys = {QKeySequence(Qt::Key_Shift)},
                     .icon = "tool-smooth"});
    actions.AddHeld({.id = "stroke.invert",
                     .text = Text::tr("Invert While Held"),
                     .description = Text::tr("Strokes have the opposite effect: they carve instead "
                                             "of raising, and unmask instead of masking."),
                     .keys = {QKeySequence(Qt::Key_Control)},
                     .icon = "tool-fill"});
    actions.AddHeld({.id = "stroke.mask",
                     .text = Text::tr("Mask While Held"),
                     .description = Text::tr("Strokes paint the mask, regardless of the tool."),
                     .keys = {QKeySequence("Q")},
                     .icon = "mask"});
    actions.AddHeld(
        {.id = "stroke.line",
         .text = Text::tr("Straight Line While Held"),
         .description = Text::tr("Draws the stroke as a straight line from press to release."),
         .keys = {QKeySequence("V")},
         .icon = "strength"});
    actions.AddHeld({.id = "stroke.abandon",
                     .text = Text::tr("Cancel Stroke"),
                     .description = Text::tr(
                         "Cancels the current stroke and restores the surface bit for bit."),
                     .keys = {QKeySequence("Esc")},
                     .icon = "cancel"});
    actions.AddHeld({.id = "brush.radius",
                     .text = Text::tr("Change Radius"),
                     .description = Text::tr("Drag to change the radius of the brush, or type a "
                                             "number and press Return."),
                     .keys = {QKeySequence("F")},
                     .icon = "radius"});
    actions.AddHeld({.id = "brush.strength",
                     .text = Text::tr("Change Strength"),
                     .description = Text::tr("Drag to change the strength of the brush, or type a "
                                             "number and press Return."),
                     .keys = {QKeySequence("Shift+F")},
                     .icon = "strength"});
    actions.AddHeld({.id = "view.navigate",
                     .text = Text::tr("Navigate While Held"),
                     .description = Text::tr("Drag to orbit, Shift-drag to pan, Ctrl-drag to zoom. "
                                             "Intended for pens without buttons."),
                     .keys = {QKeySequence("Space")},
                     .icon = "view"});
}

}  // namespace trovik::studio
