// SPDX-License-Identifier: Apache-2.0
#include "panels/LayerRow.h"

#include "panels/Controls.h"
#include "panels/ValueSlider.h"
#include "resources/Icons.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QToolButton>

#include <utility>

namespace trovik::studio {

LayerRow::LayerRow(QWidget* parent) : QWidget(parent) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(2, 2, 2, 2);
    row->setSpacing(1);
    auto* handle = new QLabel(this);
    const int side = fontMetrics().height();
    handle->setPixmap(Icon(QStringLiteral("grip")).pixmap(QSize(side, side), devicePixelRatioF()));
    handle->setCursor(Qt::OpenHandCursor);
    handle->setAccessibleName(tr("Move layer"));
    handle->setToolTip(tr("Drag to change the order of the layers"));
    handle->installEventFilter(this);
    grip = handle;
    row->addWidget(grip);
    target = MakeIconButton(QStringLiteral("target"), tr("Record"), {}, this);
    row->addWidget(target);
    strength = new ValueSlider(
        tr("Layer"),
        tr("Strength of the layer. 1: as sculpted, 0: no effect, below 0: inverted"),
        this);
    ValueSlider::Range range;
    range.least = -1e6;
    range.most = 1e6;
    range.softLeast = 0;
    range.softMost = 2;
    strength->SetRange(range);
    row->addWidget(strength, 1);
    eye =
        MakeIconButton(QStringLiteral("eye"), tr("Visible"), tr("Shows or hides the layer"), this);
    lock = MakeIconButton(
        QStringLiteral("unlock"), tr("Locked"), tr("Protects the layer from strokes"), this);
    row->addWidget(eye);
    row->addWidget(lock);
    for (QToolButton* button : {target, eye, lock}) button->setIconSize({side, side});
    connect(target, &QToolButton::clicked, this, &LayerRow::TargetClicked);
    connect(eye, &QToolButton::clicked, this, [this] { Q_EMIT VisibleClicked(!layer.visible); });
    connect(lock, &QToolButton::clicked, this, [this] { Q_EMIT WritableClicked(!layer.writable); });
    connect(strength, &ValueSlider::Edited, this, &LayerRow::StrengthEdited);
}

void LayerRow::Show(const DocumentState::Layer& shown) {
    layer = shown;
    const QString name = QString::fromStdString(layer.name);
    setAccessibleName(name);
    strength->SetName(name);
    strength->SetValue(static_cast<double>(layer.strength));
    target->setIcon(Icon(layer.active ? QStringLiteral("target-on") : QStringLiteral("target"),
                         layer.active ? QColor(226, 84, 74) : QColor()));
    target->setToolTip(layer.active ? tr("Strokes are recorded into this layer; click to stop")
                                    : tr("Records strokes into this layer"));
    eye->setIcon(Icon(layer.visible ? QStringLiteral("eye") : QStringLiteral("eye-off")));
    lock->setIcon(Icon(layer.writable ? QStringLiteral("unlock") : QStringLiteral("lock")));
    strength->setEnabled(layer.visible);
    update();
}

void LayerRow::paintEvent(QPaintEvent*) {
    if (!layer.active) return;
    QPainter painter(this);
    QColor back = palette().color(QPalette::Highlight);
    back.setAlphaF(0.18f);
    painter.fillRect(rect(), back);
}

void LayerRow::BeginRename() {
    EndRename(false);
    entry = new QLineEdit(QString::fromStdString(layer.name), this);
    entry->setAccessibleName(tr("Name of the layer"));
    entry->setToolTip(tr("Return accepts the name; Escape keeps the old one"));
    entry->setGeometry(strength->geometry());
    entry->selectAll();
    entry->installEventFilter(this);
    entry->show();
    entry->setFocus();
}

void LayerRow::EndRename(bool accepts) {
    if (entry == nullptr) return;
    QLineEdit* ended = std::exchange(entry, nullptr);
    const QString name = ended->text().trimmed();
    const bool hadFocus = ended->hasFocus();
    ended->removeEventFilter(this);
    ended->hide();
    ended->deleteLater();
    if (hadFocus) ReturnFocus(this);
    if (accepts && !name.isEmpty() && name != QString::fromStdString(layer.name))
        Q_EMIT Renamed(name);
}

bool LayerRow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == grip) {
        switch (event->type()) {
            case QEvent::MouseMove: {
                const auto* mouse = static_cast<QMouseEvent*>(event);
                if (!(mouse->buttons() & Qt::LeftButton)) break;
                Q_EMIT GripMoved(grip->mapTo(parentWidget(), mouse->position().toPoint()).y());
                return true;
            }
            case QEvent::MouseButtonRelease:
                Q_EMIT GripReleased();
                return true;
            case QEvent::MouseButtonPress:
                return true;
            default:
                break;
        }
        return QWidget::eventFilter(watched, event);
    }
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool accepts = key == Qt::Key_Return || key == Qt::Key_Enter;
        if (accepts || key == Qt::Key_Escape) {
            EndRename(accepts);
            return true;
        }
    } else if (event->type() == QEvent::FocusOut) {
        EndRename(true);
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace trovik::studio
