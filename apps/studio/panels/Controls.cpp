// SPDX-License-Identifier: Apache-2.0
#include "panels/Controls.h"

#include "commands/ActionRegistry.h"
#include "resources/Icons.h"

#include <QAction>
#include <QMainWindow>
#include <QPainter>
#include <QStyle>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace trovik::studio {

void ReturnFocus(QWidget* from) {
    for (QWidget* widget = from; widget != nullptr; widget = widget->parentWidget()) {
        auto* window = qobject_cast<QMainWindow*>(widget);
        if (window == nullptr || window->centralWidget() == nullptr) continue;
        // A floating dock is a separate window.
        if (from->window() != window) window->activateWindow();
        window->centralWidget()->setFocus();
        return;
    }
    from->clearFocus();
}

PanelCombo::PanelCombo(const QString& name, const QString& tip, QWidget* parent)
    : QComboBox(parent) {
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(name);
    setToolTip(tip);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(6);
}

void PanelCombo::wheelEvent(QWheelEvent* event) { event->ignore(); }

QToolButton* MakeIconButton(const QString& icon,
                            const QString& name,
                            const QString& tip,
                            QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setIcon(Icon(icon));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setAccessibleName(name);
    button->setToolTip(tip);
    return button;
}

QToolButton* MakeActionButton(QAction* action, QWidget* parent, bool hasText) {
    auto* button = new QToolButton(parent);
    button->setDefaultAction(action);
    button->setFocusPolicy(Qt::NoFocus);
    button->setAccessibleName(action->text());
    if (hasText) {
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        // The style sheet draws it as a button.
        button->setProperty("hasText", true);
    } else {
        button->setAutoRaise(true);
    }
    return button;
}

PanelCheck::PanelCheck(const QString& label, const QString& tip, QWidget* parent)
    : QToolButton(parent) {
    setText(label);
    setCheckable(true);
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(label);
    setToolTip(tip);
    // Without a label, only the box is shown.
    setSizePolicy(label.isEmpty() ? QSizePolicy::Fixed : QSizePolicy::Ignored, QSizePolicy::Fixed);
    setFixedHeight(fontMetrics().height() + 8);
    if (label.isEmpty()) setFixedWidth(fontMetrics().height() + 4);
}

void PanelCheck::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled()) painter.setOpacity(0.4);
    const int side = fontMetrics().height() - 1;
    const QRectF box(1.5, (height() - side) / 2.0, side, side);
    const QColor edge = palette().color(QPalette::Mid);
    painter.setPen(isChecked() ? Qt::NoPen : QPen(edge, 1));
    painter.setBrush(isChecked()    ? palette().color(QPalette::Highlight)
                     : underMouse() ? palette().color(QPalette::Button).lighter(115)
                                    : palette().color(QPalette::Base));
    painter.drawRoundedRect(box, 2.5, 2.5);
    if (isChecked()) {
        painter.setPen(QPen(palette().color(QPalette::HighlightedText),
                            side / 8.0,
                            Qt::SolidLine,
                            Qt::RoundCap,
                            Qt::RoundJoin));
        const QPointF tick[] = {box.topLeft() + QPointF(side * 0.22, side * 0.53),
                                box.topLeft() + QPointF(side * 0.42, side * 0.74),
                                box.topLeft() + QPointF(side * 0.79, side * 0.28)};
        painter.setBrush(Qt::NoBrush);
        painter.drawPolyline(tick, 3);
    }
    painter.setPen(palette().color(QPalette::WindowText));
    const QRect room = rect().adjusted(side + 9, 0, -2, 0);
    painter.drawText(room,
                     Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
}

Section::Section(const QString& title, QWidget* parent, bool isOpen) : QWidget(parent) {
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    header = new QToolButton(this);
    header->setObjectName(QStringLiteral("sectionHeader"));
    header->setText(title);
    header->setCheckable(true);
    header->setAutoRaise(true);
    header->setFocusPolicy(Qt::NoFocus);
    header->setAccessibleName(title);
    header->setToolTip(tr("Shows or hides this group"));
    header->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    const int side = fontMetrics().height() - 3;
    header->setIconSize({side, side});
    header->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    contents = new QWidget(this);
    layout = new QVBoxLayout(contents);
    layout->setContentsMargins(8, 4, 8, 8);
    layout->setSpacing(4);
    all->addWidget(header);
    all->addWidget(contents);
    connect(header, &QToolButton::toggled, this, [this](bool open) {
        contents->setVisible(open);
        header->setIcon(
            Icon(open ? QStringLiteral("chevron-down") : QStringLiteral("chevron-right")));
    });
    header->setIcon(Icon(QStringLiteral("chevron-right")));
    header->setChecked(isOpen);
    contents->setVisible(isOpen);
}

bool Section::IsOpen() const { return header->isChecked(); }
void Section::SetOpen(bool open) { header->setChecked(open); }

void AddActionButtons(Section* section,
                      const ActionRegistry& actions,
                      std::initializer_list<const char*> ids) {
    auto* grid = new QGridLayout;
    grid->setSpacing(4);
    int index = 0;
    for (const char* id : ids) {
        grid->addWidget(MakeActionButton(actions.Find(id), section, true), index / 2, index % 2);
        ++index;
    }
    section->Body()->addLayout(grid);
}

QSize RowLabel::Widened(const QSize& size) const {
    return size.expandedTo(QSize(fontMetrics().height() * 28 / 5, 0));
}

QVBoxLayout* MakePanelLayout(QWidget* panel) {
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(4);
    return layout;
}

QLabel* MakeHint(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QStringLiteral("hint"));
    label->setWordWrap(true);
    return label;
}

}  // namespace trovik::studio
