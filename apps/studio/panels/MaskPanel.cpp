// SPDX-License-Identifier: Apache-2.0
#include "panels/MaskPanel.h"

#include "commands/ActionContext.h"
#include "panels/Controls.h"
#include "panels/GroupList.h"
#include "panels/ValueSlider.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace trovik::studio {

MaskPanel::MaskPanel(const ActionContext& context, QWidget* parent)
    : QWidget(parent), engine(context.engine) {
    ActionRegistry& actions = context.actions;
    setAccessibleName(tr("Mask and visibility"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    auto* mask = new Section(tr("Mask"), this);
    AddActionButtons(mask,
                     actions,
                     {"mask.clear",
                      "mask.invert",
                      "mask.fill",
                      "tool.Freeze",
                      "mask.grow",
                      "mask.shrink",
                      "mask.blur",
                      "mask.sharpen"});
    auto* cavity = new Section(tr("Mask by cavity"), this);
    auto* visibility = new Section(tr("Visibility"), this);
    AddActionButtons(
        visibility,
        actions,
        {"visibility.hide", "visibility.isolate", "visibility.show", "visibility.invert"});
    layout->addWidget(mask);
    layout->addWidget(visibility);
    auto* groups = new Section(tr("Face groups"), this);
    groups->Body()->addWidget(new GroupList(context, groups));
    AddActionButtons(groups,
                     actions,
                     {"group.mask",
                      "group.unmask",
                      "group.maskOnly",
                      "group.hide",
                      "group.isolate",
                      "group.show"});
    layout->addWidget(groups);
    layout->addWidget(cavity);
    layout->addStretch();

    sign = new PanelCombo(tr("Where"), tr("The parts of the surface to mask"), cavity);
    sign->addItem(tr("Cavities"), "cavity");
    sign->addItem(tr("Ridges"), "ridge");
    sign->addItem(tr("Both"), "both");
    mode = new PanelCombo(tr("Mode"), tr("How the result combines with the current mask"), cavity);
    mode->addItem(tr("Add to mask"), "raise");
    mode->addItem(tr("Replace mask"), "replace");
    mode->addItem(tr("Subtract"), "subtract");
    mode->addItem(tr("Within mask"), "multiply");
    auto* row = new QHBoxLayout;
    row->setSpacing(4);
    row->addWidget(sign, 1);
    row->addWidget(mode, 1);
    cavity->Body()->addLayout(row);
    const auto slider = [&](const QString& name, const QString& tip, double most, double value) {
        auto* made = new ValueSlider(name, tip, cavity);
        ValueSlider::Range range;
        range.most = most;
        made->SetRange(range);
        made->SetValue(value);
        cavity->Body()->addWidget(made);
        return made;
    };
    from = slider(
        tr("From curvature"), tr("Curvature above which the surface is fully masked"), 2, 0.25);
    softness = slider(tr("Softness"), tr("Curvature range over which the mask fades"), 2, 0.5);
    amount = slider(tr("Amount"), tr("Strength of the mask"), 1, 1);
    auto* apply = new QPushButton(tr("Mask by Cavity"), cavity);
    apply->setFocusPolicy(Qt::NoFocus);
    apply->setAccessibleName(apply->text());
    apply->setToolTip(tr("Masks the surface by its curvature"));
    cavity->Body()->addWidget(apply);
    connect(apply, &QPushButton::clicked, this, &MaskPanel::MaskByCavity);
}

void MaskPanel::MaskByCavity() {
    engine.Run({{"mask",
                 {{"cavity",
                   {{"sign", sign->currentData().toString().toStdString()},
                    {"from", from->Value()},
                    {"softness", softness->Value()}}},
                  {"amount", amount->Value()},
                  {"mode", mode->currentData().toString().toStdString()}}}},
               tr("Mask by cavity"));
}

}  // namespace trovik::studio
