// SPDX-License-Identifier: Apache-2.0
#include "panels/HistoryPanel.h"

#include "commands/ActionRegistry.h"
#include "commands/SubdivideDialog.h"
#include "engine/Engine.h"
#include "panels/Controls.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QToolButton>
#include <QVBoxLayout>

namespace trovik::studio {

namespace {

constexpr int positionRole = Qt::UserRole, bytesRole = Qt::UserRole + 1,
              doneRole = Qt::UserRole + 2;

/// Label on the left, size on the right; steps that can be redone are dimmed.
class StepRow : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return {100, option.fontMetrics.height() + 6};
    }
    void paint(QPainter* painter,
               const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const bool isCurrent = option.state & QStyle::State_Selected;
        if (isCurrent)
            painter->fillRect(option.rect, option.palette.highlight());
        else if (option.state & QStyle::State_MouseOver)
            painter->fillRect(option.rect, option.palette.alternateBase());
        QColor ink = option.palette.color(isCurrent ? QPalette::HighlightedText : QPalette::Text);
        if (!index.data(doneRole).toBool()) ink.setAlphaF(0.45f);
        painter->setPen(ink);
        const QRect row = option.rect.adjusted(8, 0, -8, 0);
        const QString bytes = index.data(bytesRole).toString();
        const int width = option.fontMetrics.horizontalAdvance(bytes) + 8;
        painter->drawText(row.adjusted(0, 0, -width, 0),
                          Qt::AlignVCenter | Qt::AlignLeft,
                          option.fontMetrics.elidedText(
                              index.data().toString(), Qt::ElideRight, row.width() - width));
        ink.setAlphaF(ink.alphaF() * 0.65f);
        painter->setPen(ink);
        painter->drawText(row, Qt::AlignVCenter | Qt::AlignRight, bytes);
    }
};

}  // namespace

HistoryPanel::HistoryPanel(Engine& given, ActionRegistry& actions, QWidget* parent)
    : QWidget(parent), engine(given) {
    setAccessibleName(tr("History"));
    QVBoxLayout* layout = MakePanelLayout(this);
    list = new QListWidget(this);
    list->setFocusPolicy(Qt::NoFocus);
    list->setAccessibleName(tr("Undo steps"));
    list->setToolTip(tr("Click a step to undo or redo up to it"));
    list->setItemDelegate(new StepRow(list));
    list->setMouseTracking(true);
    list->setUniformItemSizes(true);
    auto* row = new QHBoxLayout;
    row->setSpacing(4);
    row->addWidget(MakeActionButton(actions.Find("edit.undo"), this, true), 1);
    row->addWidget(MakeActionButton(actions.Find("edit.redo"), this, true), 1);
    totals = MakeHint({}, this);
    layout->addLayout(row);
    layout->addWidget(list, 1);
    layout->addWidget(totals);
    connect(list, &QListWidget::itemClicked, this, [this](const QListWidgetItem* item) {
        JumpTo(item->data(positionRole).toULongLong());
    });
    connect(&engine, &Engine::StateChanged, this, &HistoryPanel::Refresh);
    Refresh();
}

void HistoryPanel::JumpTo(std::size_t position) {
    if (!engine.State()) return;
    const DocumentState& state = *engine.State();
    const std::size_t from = std::min(position, state.historyPosition);
    const std::size_t to = std::max(position, state.historyPosition);
    // Joined steps are undone and redone together and count as one.
    int count = 0;
    for (std::size_t i = from; i < to && i < state.history.size(); ++i)
        if (!state.history[i].joinsPrevious) ++count;
    if (count == 0) return;
    if (position < state.historyPosition)
        engine.Run({{"undo", count}}, tr("Undo"));
    else
        engine.Run({{"redo", count}}, tr("Redo"));
}

void HistoryPanel::Refresh() {
    list->clear();
    if (!engine.State()) return;
    const DocumentState& state = *engine.State();
    for (std::size_t i = state.history.size(); i > 0; --i) {
        const HistoryEntry& entry = state.history[i - 1];
        if (entry.joinsPrevious) continue;
        // The end of the group, which includes all steps joined with this one.
        std::size_t end = i;
        uint64_t bytes = entry.bytes;
        for (; end < state.history.size() && state.history[end].joinsPrevious; ++end)
            bytes += state.history[end].bytes;
        auto* item = new QListWidgetItem(QString::fromStdString(entry.label), list);
        item->setData(positionRole, static_cast<qulonglong>(end));
        item->setData(bytesRole, BytesText(bytes));
        item->setData(doneRole, i <= state.historyPosition);
        const auto seconds =
            std::chrono::duration_cast<std::chrono::seconds>(entry.time.time_since_epoch()).count();
        item->setToolTip(
            tr("%1, %2").arg(QString::fromStdString(entry.tool),
                             QLocale().toString(QDateTime::fromSecsSinceEpoch(seconds).time(),
                                                QLocale::LongFormat)));
        if (end == state.historyPosition) list->setCurrentItem(item);
    }
    auto* first = new QListWidgetItem(tr("As opened"), list);
    first->setData(positionRole, 0ULL);
    first->setData(doneRole, true);
    if (state.historyPosition == 0) list->setCurrentItem(first);
    totals->setText(
        state.historyBytesOnDisk == 0
            ? tr("Steps: %1, %2").arg(state.history.size()).arg(BytesText(state.historyBytes))
            : tr("Steps: %1, %2 in memory, %3 on disk")
                  .arg(state.history.size())
                  .arg(BytesText(state.historyBytes), BytesText(state.historyBytesOnDisk)));
}

}  // namespace trovik::studio
