// SPDX-License-Identifier: Apache-2.0
#include "commands/CommandPalette.h"

#include "commands/ActionCategories.h"
#include "commands/ActionRegistry.h"
#include "commands/FuzzyMatch.h"
#include "resources/Icons.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace trovik::studio {

namespace {

constexpr int idRole = Qt::UserRole, keyRole = Qt::UserRole + 1, categoryRole = Qt::UserRole + 2;

/// Icon, text and category on the left, the key on the right.
class ActionRow : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return {200, option.fontMetrics.height() + 10};
    }

    void paint(QPainter* painter,
               const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const bool isSelected = option.state & QStyle::State_Selected;
        const bool isEnabled = index.flags() & Qt::ItemIsEnabled;
        if (isSelected) painter->fillRect(option.rect, option.palette.highlight());
        const QRect row = option.rect.adjusted(8, 0, -10, 0);
        const int side = option.fontMetrics.height() + 1;
        const QRect iconArea(row.left(), row.center().y() - side / 2, side, side);
        index.data(Qt::DecorationRole)
            .value<QIcon>()
            .paint(painter,
                   iconArea,
                   Qt::AlignCenter,
                   !isEnabled   ? QIcon::Disabled
                   : isSelected ? QIcon::Selected
                                : QIcon::Normal);
        QColor ink = option.palette.color(isEnabled ? QPalette::Active : QPalette::Disabled,
                                          isSelected ? QPalette::HighlightedText : QPalette::Text);
        painter->setPen(ink);
        const QRect textArea = row.adjusted(side + 9, 0, 0, 0);
        const QString text = index.data().toString();
        painter->drawText(textArea, Qt::AlignVCenter | Qt::AlignLeft, text);
        ink.setAlphaF(0.6f);
        painter->setPen(ink);
        const int width = option.fontMetrics.horizontalAdvance(text);
        painter->drawText(textArea.adjusted(width + 10, 0, 0, 0),
                          Qt::AlignVCenter | Qt::AlignLeft,
                          index.data(categoryRole).toString());
        painter->drawText(row, Qt::AlignVCenter | Qt::AlignRight, index.data(keyRole).toString());
    }
};

}  // namespace

CommandPalette::CommandPalette(ActionRegistry& registry, QWidget* window)
    : QFrame(window), actions(registry) {
    setObjectName(QStringLiteral("palette"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 6);
    layout->setSpacing(6);
    query = new QLineEdit(this);
    query->setPlaceholderText(tr("Search commands"));
    query->setAccessibleName(tr("Search commands"));
    query->setToolTip(tr("Type parts of a command's name; Return runs the selected command"));
    query->addAction(Icon(QStringLiteral("search")), QLineEdit::LeadingPosition);
    list = new QListWidget(this);
    list->setAccessibleName(tr("Commands"));
    list->setToolTip(tr("Matching commands; click one to run it"));
    list->setItemDelegate(new ActionRow(list));
    list->setFocusPolicy(Qt::NoFocus);
    list->setUniformItemSizes(true);
    list->setFrameShape(QFrame::NoFrame);
    description = new QLabel(this);
    description->setWordWrap(true);
    description->setObjectName(QStringLiteral("hint"));
    layout->addWidget(query);
    layout->addWidget(list);
    layout->addWidget(description);
    query->installEventFilter(this);
    connect(query, &QLineEdit::textChanged, this, &CommandPalette::Refill);
    connect(list, &QListWidget::currentRowChanged, this, &CommandPalette::ShowDescription);
    connect(list, &QListWidget::itemClicked, this, &CommandPalette::RunSelected);
    hide();
}

void CommandPalette::Open() {
    focusBefore = window()->focusWidget();
    query->clear();
    Refill();
    const QSize room = parentWidget()->size();
    const int line = fontMetrics().height();
    const int width = std::min(35 * line, room.width() - 40);
    const int height = std::min(26 * line, room.height() - 80);
    setGeometry((room.width() - width) / 2, std::max(10, room.height() / 8), width, height);
    raise();
    show();
    query->setFocus();
}

void CommandPalette::SetQuery(const QString& text) { query->setText(text); }

QStringList CommandPalette::Listed() const {
    QStringList ids;
    for (int row = 0; row < list->count(); ++row)
        ids.append(list->item(row)->data(idRole).toString());
    return ids;
}

void CommandPalette::Refill() {
    struct Match {
        int score;
        const ActionInfo* info;
    };
    std::vector<Match> matches;
    const QStringList& recent = actions.Recent();
    const std::vector<ActionInfo> infos = InMenuOrder(actions.Infos());
    for (const ActionInfo& info : infos) {
        // A match in the name scores much higher than one in the description.
        int score = 16 * FuzzyScore(query->text(), info.text);
        if (score == 0)
            score = FuzzyScore(query->text(),
                               CategoryTitle(info) + u' ' + info.text + u' ' + info.description);
        if (score == 0) continue;
        const qsizetype age = recent.indexOf(info.id);
        if (age >= 0) score += static_cast<int>(std::max<qsizetype>(20 - age, 1));
        matches.push_back({score, &info});
    }
    std::stable_sort(matches.begin(), matches.end(), [](const Match& a, const Match& b) {
        return a.score > b.score;
    });
    list->clear();
    for (const Match& match : matches) {
        auto* item = new QListWidgetItem(Icon(match.info->icon), match.info->text, list);
        item->setData(idRole, match.info->id);
        item->setData(categoryRole, CategoryTitle(*match.info));
        const QList<QKeySequence> keys = actions.Keys(match.info->id);
        QString key = keys.isEmpty() ? QString() : keys.first().toString(QKeySequence::NativeText);
        if (actions.IsHeld(match.info->id)) {
            if (!key.isEmpty()) key = tr("hold %1").arg(key);
            item->setFlags(item->flags() & ~Qt::ItemIsEnabled);
        } else if (!actions.Find(match.info->id)->isEnabled()) {
            item->setFlags(item->flags() & ~Qt::ItemIsEnabled);
        }
        item->setData(keyRole, key);
    }
    // Selects the first item that can be run. Actions on held keys are listed only to show the key.
    int first = 0;
    while (first + 1 < list->count() && !(list->item(first)->flags() & Qt::ItemIsEnabled)) ++first;
    list->setCurrentRow(first);
    ShowDescription();
}

void CommandPalette::ShowDescription() {
    const QListWidgetItem* item = list->currentItem();
    const ActionInfo* info =
        item == nullptr ? nullptr : actions.Info(item->data(idRole).toString());
    description->setText(info == nullptr ? tr("No command matches.") : info->description);
}

void CommandPalette::RunSelected() {
    const QListWidgetItem* item = list->currentItem();
    const QString id = item == nullptr ? QString() : item->data(idRole).toString();
    hide();
    if (focusBefore != nullptr && focusBefore->window() == window()) focusBefore->setFocus();
    // The action may open a dialog, which must not run inside the palette's event handler.
    if (!id.isEmpty()) QTimer::singleShot(0, &actions, [this, id] { actions.Trigger(id); });
}

bool CommandPalette::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        hide();
    } else if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const int last = list->count() - 1;
        const auto move = [&](int rows) {
            list->setCurrentRow(std::clamp(list->currentRow() + rows, 0, std::max(last, 0)));
        };
        switch (key) {
            case Qt::Key_Up:
                move(-1);
                return true;
            case Qt::Key_Down:
                move(1);
                return true;
            case Qt::Key_PageUp:
                move(-10);
                return true;
            case Qt::Key_PageDown:
                move(10);
                return true;
            case Qt::Key_Return:
            case Qt::Key_Enter:
                RunSelected();
                return true;
            case Qt::Key_Escape:
                hide();
                if (focusBefore != nullptr) focusBefore->setFocus();
                return true;
            default:
                break;
        }
    }
    return QFrame::eventFilter(watched, event);
}

}  // namespace trovik::studio
