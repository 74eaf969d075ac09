// SPDX-License-Identifier: Apache-2.0
#include "brush/ToolCatalogue.h"

#include "brush/Registration.h"
#include "brush/Translation.h"

namespace trovik {

BrushConfiguration* smoothConfiguration = nullptr;

namespace {

struct ToolRow {
    Tool tool;
    const char* name;
    /// The host replaces ${SHORTCUT:...} when it displays the tool tip.
    const char* help;
};

constexpr ToolRow toolRows[] = {
    {Tool::Sculpt,
     "Sculpt",
     "The Sculpt Tool lifts the surface as you stroke over it.\n<p>To depress the surface rather "
     "than lifting it, hold down the <b>${SHORTCUT:Draw inverse-NoMouse}</b> key as you stroke."},
    {Tool::Smear,
     "Smear",
     "The Smear Tool pulls the surface under the brush in the direction of the stroke."},
    {Tool::Pinch,
     "Pinch",
     "The Pinch Tool pulls the mesh vertices towards the the center of the brush as you stroke. "
     "Use it along soft edges to sharpen them."},
    {Tool::Smooth,
     "Smooth",
     "The Smooth Tool smooths out surface detail by averaging the mesh points under your brush "
     "stroke."},
    {Tool::Amplify,
     "Amplify",
     "The Amplify Tool accentuates surface detail by raising high areas and lowering low areas as "
     "you stroke.\n<p>To reduce surface detail, hold down the <b>${SHORTCUT:Draw "
     "inverse-NoMouse}</b> key as you stroke."},
    {Tool::Flatten,
     "Flatten",
     "The Flatten Tool flattens the surface by moving the vertices under your brush stroke towards "
     "a common plane."},
    {Tool::Scrape,
     "Scrape",
     "The Scrape Tool reduces the high areas of the surface, while leaving the lower areas "
     "untouched."},
    {Tool::Fill,
     "Fill",
     "The Fill Tool fills in the valleys on the surface, while leaving the high areas untouched."},
    {Tool::Wax,
     "Wax",
     "The Wax Tool builds up the surface, similar to the way adding clay or wax to a sculpture "
     "would."},
    {Tool::Bulge,
     "Bulge",
     "The Bulge Tool inflates the area under the brush, by pushing each vertex out along its own "
     "normal."},
    {Tool::Spray,
     "Spray",
     "The Spray Tool should be used with a stamp. It sprays the stamp imprint randomly along your "
     "stroke."},
    {Tool::Repeat,
     "Repeat",
     "The Repeat tool should be used with a stamp. Use it to stroke patterns onto your model. For "
     "example: rivets on the wing of an airplane, zippers, stitching, etc.  The stamp will follow "
     "the direction of the stroke."},
    {Tool::Knife,
     "Knife",
     "The Knife Tool cuts very fine strokes into a model's surface. This tool has its own stamp "
     "image that should not be changed."},
    {Tool::Foamy,
     "Foamy",
     "The Foamy Tool is intended for initial shape forming, rather than for creating fine detail. "
     "It is similar to the Sculpt Tool, but has a softer feel."},
    {Tool::Imprint,
     "Imprint",
     "Use the Imprint Tool with a stamp image.\n<p>Press, drag, and release to imprint one copy of "
     "the stamp at a specific location, size, and orientation."},
};

}  // namespace

void RegisterTools() {
    const QString toolTipTemplate =
        QString::fromLatin1("<div style=\"background-color:Black; color:White;\">%1</div><p>%2");
    for (const ToolRow& row : toolRows) {
        const QString help = Translate(row.help);
        const QString title = Translate(row.name);
        const QString toolTip =
            toolTipTemplate.arg(title, 0, QLatin1Char(' ')).arg(help, 0, QLatin1Char(' '));
        BrushOperation::AddConfiguration(new BrushConfiguration(&swiftStrokeClass,
                                                                static_cast<uint32_t>(row.tool),
                                                                QString::fromLatin1(row.name),
                                                                Translate(row.name),
                                                                PredefinedCategory::Sculpt,
                                                                toolTip,
                                                                0));
        if (row.tool == Tool::Smooth) {
            smoothConfiguration =
                BrushOperation::Configuration(BrushOperation::ConfigurationCount() - 1);
        }
    }
}

}  // namespace trovik
