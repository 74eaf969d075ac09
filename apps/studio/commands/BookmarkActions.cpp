// SPDX-License-Identifier: Apache-2.0
#include "commands/StudioActions.h"
#include "commands/StudioScene.h"
#include "commands/ViewModel.h"

#include <QCoreApplication>

#include <algorithm>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(BookmarkActions)
};

/// Number of bookmarks that have a key.
constexpr int keyCount = 4;

CameraPose PoseOf(const ActionContext& context) {
    return context.view.pose ? context.view.pose() : CameraPose();
}

QString FreeName(const std::vector<CameraBookmark>& bookmarks) {
    for (std::size_t number = bookmarks.size() + 1;; ++number) {
        QString name = Text::tr("View %1").arg(number);
        if (std::none_of(bookmarks.begin(), bookmarks.end(), [&](const CameraBookmark& one) {
                return one.name == name;
            }))
            return name;
    }
}

void Add(const ActionContext& context) {
    std::vector<CameraBookmark> bookmarks = context.scene.Bookmarks();
    bookmarks.push_back({FreeName(bookmarks), PoseOf(context)});
    const int added = static_cast<int>(bookmarks.size()) - 1;
    context.scene.SetBookmarks(std::move(bookmarks));
    context.scene.SelectBookmark(added);
}

void GoTo(const ActionContext& context, int index) {
    const std::vector<CameraBookmark>& bookmarks = context.scene.Bookmarks();
    if (index < 0 || static_cast<std::size_t>(index) >= bookmarks.size()) return;
    context.view.SetPose(bookmarks[static_cast<std::size_t>(index)].camera);
    context.scene.SelectBookmark(index);
}

}  // namespace

void AddBookmarkActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    QAction* add = actions.Add({.id = "view.bookmark.add",
                                .text = Text::tr("Add Bookmark"),
                                .description = Text::tr("Stores the camera in the scene."),
                                .keys = {QKeySequence("F9")},
                                .icon = "bookmark-add",
                                .run = [context] { Add(context); }});
    context.EnableWithDocument(add);
    QAction* update = actions.Add(
        {.id = "view.bookmark.update",
         .text = Text::tr("Update Bookmark"),
         .description = Text::tr("Replaces the camera of the selected bookmark."),
         .keys = {QKeySequence("Shift+F9")},
         .icon = "reset",
         .run = [context] {
             std::vector<CameraBookmark> bookmarks = context.scene.Bookmarks();
             bookmarks.at(static_cast<std::size_t>(context.scene.CurrentBookmark())).camera =
                 PoseOf(context);
             context.scene.SetBookmarks(std::move(bookmarks));
         }});
    QAction* remove =
        actions.Add({.id = "view.bookmark.delete",
                     .text = Text::tr("Delete Bookmark"),
                     .description = Text::tr("Deletes the selected bookmark."),
                     .icon = "trash",
                     .run = [context] {
                         std::vector<CameraBookmark> bookmarks = context.scene.Bookmarks();
                         bookmarks.erase(bookmarks.begin() + context.scene.CurrentBookmark());
                         context.scene.SetBookmarks(std::move(bookmarks));
                     }});
    for (QAction* action : {update, remove})
        EnableWhen(context.scene, action, [](const StudioScene& scene) {
            return scene.CurrentBookmark() >= 0;
        });
    QAction* next = actions.Add(
        {.id = "view.bookmark.next",
         .text = Text::tr("Next Bookmark"),
         .description = Text::tr("Moves the camera to the bookmark after the selected one."),
         .keys = {QKeySequence("Ctrl+F9")},
         .icon = "bookmark",
         .run = [context] {
             const int count = static_cast<int>(context.scene.Bookmarks().size());
             GoTo(context, (context.scene.CurrentBookmark() + 1) % std::max(count, 1));
         }});
    EnableWhen(
        context.scene, next, [](const StudioScene& scene) { return !scene.Bookmarks().empty(); });
    for (int i = 0; i < keyCount; ++i) {
        QAction* go =
            actions.Add({.id = QStringLiteral("view.bookmark.%1").arg(i + 1),
                         .text = Text::tr("Go to Bookmark %1").arg(i + 1),
                         .description = Text::tr("Moves the camera to this bookmark in the list."),
                         .keys = {QKeySequence(QStringLiteral("F%1").arg(5 + i))},
                         .icon = "bookmark",
                         .run = [context, i] { GoTo(context, i); }});
        EnableWhen(context.scene, go, [i](const StudioScene& scene) {
            return static_cast<std::size_t>(i) < scene.Bookmarks().size();
        });
    }
}

}  // namespace trovik::studio
