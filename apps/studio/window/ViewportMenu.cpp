// SPDX-License-Identifier: Apache-2.0
#include "window/ViewportMenu.h"

#include "commands/StudioScene.h"
#include "commands/ToolCatalogue.h"
#include "panels/BrushSliders.h"
#include "panels/ValueSlider.h"
#include "resources/Icons.h"

#include <QVBoxLayout>
#include <QWidgetAction>

namespace trovik::studio {

namespace {

/// Width of the sliders, in heights of a text line.
constexpr int sliderLines = 15;

}  // namespace

ViewportMenu::ViewportMenu(const ActionContext& given, const HoverHit& hit, QWidget* parent)
    : QMenu(parent), context(given) {
    setAccessibleName(tr("Viewport menu"));
    setToolTipsVisible(true);
    AddTools();
    AddSliders();
    addSeparator();
    if (hit.isHit && hit.group >= 0) AddGroup(hit.group);
    if (hit.isHit) AddPart(hit);
    AddIds(addMenu(Icon(QStringLiteral("mask")), tr("Mask")),
           {"mask.clear",
            "mask.fill",
            "mask.invert",
            "mask.grow",
            "mask.shrink",
            "mask.blur",
            "mask.sharpen",
            "mask.cavity",
            "mask.box",
            "mask.lasso"});
    AddIds(addMenu(Icon(QStringLiteral("eye")), tr("Visibility")),
           {"visibility.hide",
            "visibility.isolate",
            "visibility.show",
            "visibility.invert",
            "visibility.hideBox",
            "visibility.hideLasso",
            "visibility.isolateLasso"});
    addSeparator();
    AddIds(this, {"edit.undo", "edit.redo", "view.frame", "window.palette"});
}

void ViewportMenu::AddIds(QMenu* menu, std::initializer_list<const char*> ids) {
    for (const char* id : ids)
        if (QAction* action = context.actions.Find(QString::fromLatin1(id)))
            menu->addAction(action);
}

void ViewportMenu::AddTools() {
    const QString active = QString::fromStdString(context.State().tool.name);
    QMenu* tools = addMenu(Icon(QStringLiteral("tool")), tr("Tool: %1").arg(active));
    for (const ToolAppearance& tool : KnownTools())
        if (QAction* action = context.actions.Find(QStringLiteral("tool.%1").arg(tool.name)))
            tools->addAction(action);
}

void ViewportMenu::AddSliders() {
    auto* box = new QWidget(this);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(8, 4, 8, 4);
    layout->setSpacing(4);
    const auto* sliders = new BrushSliders(context.engine, box);
    for (ValueSlider* slider : {sliders->Radius(), sliders->Strength()}) {
        slider->setMinimumWidth(sliderLines * fontMetrics().height());
        layout->addWidget(slider);
    }
    auto* action = new QWidgetAction(this);
    action->setDefaultWidget(box);
    addAction(action);
}

void ViewportMenu::AddGroup(int group) {
    context.scene.SelectGroup(group);
    if (context.scene.CurrentGroup() < 0) return;
    const FaceGroup& selected = context.scene.Groups()[static_cast<std::size_t>(group)];
    AddIds(addMenu(Icon(QStringLiteral("group")), tr("Group “%1”").arg(selected.title)),
           {"group.mask", "group.unmask", "group.maskOnly", "group.hide", "group.isolate"});
}

void ViewportMenu::AddPart(const HoverHit& hit) {
    QMenu* part = addMenu(Icon(QStringLiteral("target")), tr("Connected part"));
    const nlohmann::json at = {{"pointer", {hit.x, hit.y}}};
    const auto add = [&](const char* icon,
                         const QString& text,
                         const QString& tip,
                         const char* step,
                         const nlohmann::json& choice) {
        QAction* action = part->addAction(Icon(QString::fromLatin1(icon)), text);
        action->setToolTip(tip);
        action->setStatusTip(tip);
        connect(action, &QAction::triggered, this, [self = context, step, choice, text] {
            self.Run(step, choice, text);
        });
    };
    add("mask-fill",
        tr("Mask Part"),
        tr("Masks everything that is connected to the point under the pointer"),
        "mask",
        {{"component", at}});
    add("mask-clear",
        tr("Unmask Part"),
        tr("Removes the mask from everything that is connected to the point under the pointer"),
        "mask",
        {{"component", at}, {"mode", "subtract"}});
    add("hide",
        tr("Hide Part"),
        tr("Hides everything that is connected to the point under the pointer"),
        "hide",
        {{"component", at}});
    add("isolate",
        tr("Isolate Part"),
        tr("Hides everything that is not connected to the point under the pointer"),
        "isolate",
        {{"component", at}});
}

}  // namespace trovik::studio
