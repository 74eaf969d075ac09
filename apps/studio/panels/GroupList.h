// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QListWidget;

namespace trovik::studio {

class StudioScene;
struct ActionContext;

/// The face groups of the document with the colours in which the viewport tints them. A click
/// selects the group on which the actions operate.
class GroupList : public QWidget {
    Q_OBJECT
public:
    GroupList(const ActionContext& context, QWidget* parent);

private:
    void Refresh();

    StudioScene& scene;
    QListWidget* list;
    QWidget* hint;
};

}  // namespace trovik::studio
