// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"

#include <QMenu>

#include <initializer_list>

namespace trovik::studio {

/// The context menu of the viewport: tools, radius and strength, and the actions for the mask and
/// the visibility of the surface under the pointer.
class ViewportMenu : public QMenu {
    Q_OBJECT
public:
    /// \param hit  the surface under the pointer; its pixel belongs to the current view. If there
    /// is a face group, it becomes the selected one.
    ViewportMenu(const ActionContext& context, const HoverHit& hit, QWidget* parent);

private:
    void AddTools();
    void AddSliders();
    void AddIds(QMenu* menu, std::initializer_list<const char*> ids);
    void AddGroup(int group);
    void AddPart(const HoverHit& hit);

    ActionContext context;
};

}  // namespace trovik::studio
