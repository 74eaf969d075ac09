// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"

#include <QWidget>

class QListWidget;

namespace trovik::studio {

/// The camera bookmarks of the document: a click moves the camera to one. Adds the action that
/// renames the selected one in the list.
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
