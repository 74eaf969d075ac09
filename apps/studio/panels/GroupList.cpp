// SPDX-License-Identifier: Apache-2.0
#include "panels/GroupList.h"

#include "commands/ActionContext.h"
#include "commands/StudioScene.h"
#include "panels/Controls.h"
#include "panels/RowList.h"
#include "render/GroupColors.h"

#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

namespace trovik::studio {

GroupList::GroupList(const ActionContext& context, QWidget* parent)
    : QWidget(parent), scene(context.scene) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    list = MakeRowList(
        tr("Face groups"), tr("Click a group to select it for the buttons below"), this);
    hint =
        MakeHint(tr("The mesh has no face groups. They come from groups in the mesh file."), this);
    layout->addWidget(hint);
    layout->addWidget(list);
    layout->addWidget(MakeActionButton(context.actions.Find("view.groups"), this, true));
    connect(list, &QListWidget::itemClicked, this, [this](const QListWidgetItem* item) {
        scene.SelectGroup(list->row(item));
    });
    connect(&scene, &StudioScene::Changed, this, &GroupList::Refresh);
    Refresh();
}

void GroupList::Refresh() {
    const std::vector<FaceGroup>& groups = scene.Groups();
    const int count = static_cast<int>(groups.size());
    while (list->count() > count) delete list->takeItem(list->count() - 1);
    while (list->count() < count) new QListWidgetItem(list);
    for (int i = 0; i < count; ++i) {
        const FaceGroup& group = groups[static_cast<std::size_t>(i)];
        QPixmap swatch(32, 32);
        swatch.fill(GroupColor(group.displayGroup));
        list->item(i)->setIcon(swatch);
        list->item(i)->setText(group.title);
    }
    list->setCurrentRow(scene.CurrentGroup());
    FitToRows(list);
    list->setVisible(count > 0);
    hint->setVisible(count == 0);
}

}  // namespace trovik::studio
