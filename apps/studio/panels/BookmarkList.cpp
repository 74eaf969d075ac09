// SPDX-License-Identifier: Apache-2.0
#include "panels/BookmarkList.h"

#include "commands/StudioScene.h"
#include "commands/ViewModel.h"
#include "panels/Controls.h"
#include "panels/RowList.h"
#include "resources/Icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace trovik::studio {

BookmarkList::BookmarkList(const ActionContext& given, QWidget* parent)
    : QWidget(parent), context(given) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    list = MakeRowList(tr("Bookmarks"), tr("Click a bookmark to move the camera to it"), this);
    hint = MakeHint(tr("A bookmark stores the camera in the scene."), this);
    QAction* rename =
        context.actions.Add({.id = "view.bookmark.rename",
                             .text = tr("Rename Bookmark"),
                             .description = tr("Changes the name of the selected bookmark."),
                             .icon = "rename",
                             .run = [this] { Rename(); }});
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    for (const char* id : {"view.bookmark.add", "view.bookmark.update", "view.bookmark.rename"})
        buttons->addWidget(MakeActionButton(context.actions.Find(id), this));
    buttons->addStretch();
    buttons->addWidget(MakeActionButton(context.actions.Find("view.bookmark.delete"), this));
    layout->addWidget(hint);
    layout->addWidget(list);
    layout->addLayout(buttons);
    EnableWhen(context.scene, rename, [](const StudioScene& scene) {
        return scene.CurrentBookmark() >= 0;
    });
    connect(&context.scene, &StudioScene::Changed, this, &BookmarkList::Refresh);
    connect(list, &QListWidget::itemClicked, this, [this](const QListWidgetItem* item) {
        const int row = list->row(item);
        context.view.SetPose(context.scene.Bookmarks().at(static_cast<std::size_t>(row)).camera);
        context.scene.SelectBookmark(row);
    });
    connect(list, &QListWidget::itemChanged, this, [this](const QListWidgetItem* item) {
        std::vector<CameraBookmark> bookmarks = context.scene.Bookmarks();
        QString& name = bookmarks.at(static_cast<std::size_t>(list->row(item))).name;
        if (!item->text().trimmed().isEmpty()) name = item->text().trimmed();
        context.scene.SetBookmarks(std::move(bookmarks));
        Refresh();
    });
    Refresh();
}

void BookmarkList::Rename() {
    QListWidgetItem* item = list->item(context.scene.CurrentBookmark());
    if (item != nullptr) list->editItem(item);
}

void BookmarkList::Refresh() {
    const QSignalBlocker quiet(list);
    const std::vector<CameraBookmark>& bookmarks = context.scene.Bookmarks();
    const int count = static_cast<int>(bookmarks.size());
    while (list->count() > count) delete list->takeItem(list->count() - 1);
    while (list->count() < count) {
        auto* item = new QListWidgetItem(Icon(QStringLiteral("bookmark")), QString(), list);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
    }
    for (int i = 0; i < count; ++i)
        list->item(i)->setText(bookmarks[static_cast<std::size_t>(i)].name);
    list->setCurrentRow(context.scene.CurrentBookmark());
    FitToRows(list);
    list->setVisible(count > 0);
    hint->setVisible(count == 0);
}

}  // namespace trovik::studio
