// SPDX-License-Identifier: Apache-2.0
#include "window/QuickBar.h"

#include "commands/ActionRegistry.h"
#include "panels/BrushSliders.h"
#include "panels/Controls.h"
#include "panels/ValueSlider.h"

#include <QToolButton>

#include <utility>

namespace trovik::studio {

QuickBar::QuickBar(Engine& engine, ActionRegistry& registry, QWidget* parent)
    : QToolBar(tr("Quick bar"), parent), actions(registry) {
    setObjectName(QStringLiteral("quickBar"));
    setMovable(false);
    setAccessibleName(tr("Quick bar"));
    const int side = fontMetrics().height() + 2;
    setIconSize({side, side});
    for (const char* id : {"file.new", "file.open", "file.save"}) AddAction(id);
    addSeparator();
    for (const char* id : {"edit.undo", "edit.redo"}) AddAction(id);
    addSeparator();
    const auto* sliders = new BrushSliders(engine, this);
    for (const auto& [slider, action] :
         {std::pair(sliders->Radius(), "brush.pressure.size"),
          std::pair(sliders->Strength(), "brush.pressure.strength")}) {
        slider->setFixedWidth(10 * side);
        addWidget(slider);
        AddAction(action);
    }
    addSeparator();
    for (const char* id : {"symmetry.x", "symmetry.y", "symmetry.z", "symmetry.radial"})
        AddAction(id);
    auto* space = new QWidget(this);
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addWidget(space);
    for (const char* id : {"view.frame",
                           "view.orthographic",
                           "view.wireframe",
                           "view.cavity",
                           "view.grid",
                           "window.palette"})
        AddAction(id);
}

void QuickBar::AddAction(const char* id) {
    QAction* action = actions.Find(QString::fromLatin1(id));
    if (action == nullptr) return;
    QToolButton* button = MakeActionButton(action, this);
    button->setIconSize(iconSize());
    addWidget(button);
}

}  // namespace trovik::studio
