// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"

#include <QWidget>

class QListWidget;

namespace trovik::studio {

/// The camera bookmarks of the document. A click on a bookmark moves the camera to it. The list
/// adds the action that renames the selected bookmark.
class BookmarkList : public QWidget {
    Q_OBJECT
public:
    BookmarkList(const ActionContext& context, QWidget* parent);

private:
    void Refresh();
    void Rename();

    ActionContext context;
    QListWidget* list;
    QWidget* hint;
};

}  // namespace trovik::studio
