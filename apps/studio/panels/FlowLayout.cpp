// SPDX-License-Identifier: Apache-2.0
#include "panels/FlowLayout.h"

namespace trovik::studio {

QSize FlowLayout::minimumSize() const {
    QSize size;
    for (const QLayoutItem* item : items) size = size.expandedTo(item->minimumSize());
    const QMargins margins = contentsMargins();
    return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

int FlowLayout::Place(const QRect& area, bool moves) const {
    const QMargins margins = contentsMargins();
    const QRect room = area.marginsRemoved(margins);
    int x = room.x(), y = room.y(), rowHeight = 0;
    for (QLayoutItem* item : items) {
        if (item->isEmpty()) continue;
        const QSize size = item->sizeHint();
        if (x + size.width() > room.right() + 1 && rowHeight > 0) {
            x = room.x();
            y += rowHeight + between;
            rowHeight = 0;
        }
        if (moves) item->setGeometry(QRect(QPoint(x, y), size));
        x += size.width() + between;
        rowHeight = std::max(rowHeight, size.height());
    }
    return y + rowHeight - area.y() + margins.bottom();
}

}  // namespace trovik::studio
