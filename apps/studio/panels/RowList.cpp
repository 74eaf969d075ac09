// SPDX-License-Identifier: Apache-2.0
#include "panels/RowList.h"

#include "panels/Controls.h"

#include <QListWidget>
#include <QStyledItemDelegate>

#include <algorithm>

namespace trovik::studio {

namespace {

/// Rows with room around the text.
class RowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return {100, option.fontMetrics.height() + 8};
    }
};

}  // namespace

QListWidget* MakeRowList(const QString& name, const QString& tip, QWidget* parent) {
    auto* list = new QListWidget(parent);
    list->setFocusPolicy(Qt::NoFocus);
    list->setAccessibleName(name);
    list->setToolTip(tip);
    list->setUniformItemSizes(true);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setMouseTracking(true);
    auto* delegate = new RowDelegate(list);
    list->setItemDelegate(delegate);
    QObject::connect(
        delegate, &QAbstractItemDelegate::closeEditor, list, [list] { ReturnFocus(list); });
    return list;
}

void FitToRows(QListWidget* list, int maxRows) {
    const int row = list->count() > 0 ? list->sizeHintForRow(0) : list->fontMetrics().height() + 8;
    list->setFixedHeight(row * std::min(list->count(), maxRows) + 2 * list->frameWidth());
}

}  // namespace trovik::studio
