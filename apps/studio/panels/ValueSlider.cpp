// SPDX-License-Identifier: Apache-2.0
#include "panels/ValueSlider.h"

#include "panels/AccessibleSlider.h"
#include "panels/Controls.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <utility>

namespace trovik::studio {

namespace {

/// A press that moves no farther than this distance, in pixels, is a click.
constexpr double clickSlop = 3.0;
constexpr double fineFactor = 0.1;
constexpr double corner = 3.0;

}  // namespace

ValueSlider::ValueSlider(const QString& given, const QString& tip, QWidget* parent)
    : QWidget(parent), name(given) {
    AccessibleSlider::Install();
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(name);
    setToolTip(tip);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setCursor(Qt::SizeHorCursor);
    SetRange(range);
}

QSize ValueSlider::sizeHint() const { return {180, fontMetrics().height() + 8}; }
QSize ValueSlider::minimumSizeHint() const { return {60, fontMetrics().height() + 8}; }

double ValueSlider::SoftLeast() const {
    return range.softLeast == range.softMost ? range.least : range.softLeast;
}
double ValueSlider::SoftMost() const {
    return range.softLeast == range.softMost ? range.most : range.softMost;
}

double ValueSlider::FractionOf(double of) const {
    const double least = SoftLeast(), most = SoftMost();
    if (most <= least) return 0.0;
    const double fraction = range.isLogarithmic && least > 0.0
                                ? std::log(std::max(of, least) / least) / std::log(most / least)
                                : (of - least) / (most - least);
    return std::clamp(fraction, 0.0, 1.0);
}

double ValueSlider::ValueAt(double fraction) const {
    const double least = SoftLeast(), most = SoftMost();
    const double at = range.isLogarithmic && least > 0.0 ? least * std::pow(most / least, fraction)
                                                         : least + (most - least) * fraction;
    // A drag rounds values to three significant digits.
    const double step = std::pow(10.0, std::floor(std::log10(std::max(std::abs(at), 1e-12))) - 2);
    return Limited(std::round(at / step) * step);
}

double ValueSlider::Limited(double given) const {
    const double limited = std::clamp(given, range.least, range.most);
    return range.isWhole ? std::round(limited) : limited;
}

void ValueSlider::SetRange(const Range& changed) {
    range = changed;
    value = Limited(value);
    update();
}

void ValueSlider::SetValue(double shown) {
    if (isDragging || Limited(shown) == value) return;
    value = Limited(shown);
    NotifyValue();
}

void ValueSlider::NotifyValue() {
    update();
    QAccessibleValueChangeEvent event(this, value);
    QAccessible::updateAccessibility(&event);
}

void ValueSlider::Enter(double typed) {
    if (!isEnabled() || Limited(typed) == value) return;
    value = Limited(typed);
    NotifyValue();
    Q_EMIT Edited(value);
}

void ValueSlider::SetName(const QString& shown) {
    name = shown;
    setAccessibleName(name);
    update();
}

QString ValueSlider::ValueText() const {
    int decimals = range.isWhole ? 0 : range.decimals;
    if (decimals > 0 && value != 0.0)
        decimals = std::clamp(2 - static_cast<int>(std::floor(std::log10(std::abs(value)))),
                              0,
                              std::max(range.decimals, 4));
    QString text = QLocale().toString(value, 'f', decimals);
    if (decimals > 0) {
        const QString point = QLocale().decimalPoint();
        while (text.contains(point) && text.endsWith(u'0')) text.chop(1);
        if (text.endsWith(point)) text.chop(1);
    }
    return range.unit.isEmpty() ? text
           : range.unit == QLatin1String("%") || range.unit == QStringLiteral("°")
               ? text + range.unit
               : text + u' ' + range.unit;
}

void ValueSlider::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled()) painter.setOpacity(0.4);
    const QRectF area = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath shape;
    shape.addRoundedRect(area, corner, corner);
    painter.fillPath(shape, palette().color(QPalette::Base));
    painter.save();
    painter.setClipPath(shape);
    QColor fill = palette().color(QPalette::Highlight);
    fill.setAlphaF(underMouse() || isDragging ? 0.62f : 0.48f);
    // If the range includes values on both sides of 0, the bar is filled from 0.
    const double from = SoftLeast() < 0.0 && SoftMost() > 0.0 ? FractionOf(0.0) : 0.0;
    const double to = FractionOf(value);
    painter.fillRect(QRectF(area.x() + area.width() * std::min(from, to),
                            area.y(),
                            area.width() * std::abs(to - from),
                            area.height()),
                     fill);
    painter.restore();
    painter.setPen(QPen(palette().color(QPalette::Mid), 1));
    painter.drawPath(shape);
    const QRect text = rect().adjusted(8, 0, -8, 0);
    painter.setPen(palette().color(QPalette::WindowText));
    const QString number = ValueText();
    const int numberWidth = fontMetrics().horizontalAdvance(number);
    painter.drawText(text, Qt::AlignVCenter | Qt::AlignRight, number);
    painter.drawText(
        text.adjusted(0, 0, -numberWidth - 6, 0),
        Qt::AlignVCenter | Qt::AlignLeft,
        fontMetrics().elidedText(name, Qt::ElideRight, text.width() - numberWidth - 6));
}

void ValueSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    EndEntry(true);
    isDragging = true;
    hasMoved = false;
    pressX = event->position().x();
    dragFraction = FractionOf(value);
}

void ValueSlider::mouseMoveEvent(QMouseEvent* event) {
    if (!isDragging) return;
    const double moved = event->position().x() - pressX;
    if (!hasMoved && std::abs(moved) < clickSlop) return;
    hasMoved = true;
    pressX = event->position().x();
    const bool isFine = event->modifiers() & Qt::ShiftModifier;
    dragFraction = std::clamp(
        dragFraction + moved / std::max(width(), 1) * (isFine ? fineFactor : 1.0), 0.0, 1.0);
    value = ValueAt(dragFraction);
    NotifyValue();
    Q_EMIT Dragged(value);
}

void ValueSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !isDragging) return;
    isDragging = false;
    update();
    if (hasMoved)
        Q_EMIT Edited(value);
    else
        BeginEntry();
}

void ValueSlider::enterEvent(QEnterEvent*) { update(); }
void ValueSlider::leaveEvent(QEvent*) { update(); }

void ValueSlider::BeginEntry() {
    EndEntry(false);
    entry = new QLineEdit(this);
    entry->setAccessibleName(name);
    entry->setToolTip(tr("Return accepts the number; Escape keeps the old one"));
    entry->setAlignment(Qt::AlignRight);
    entry->setGeometry(rect());
    entry->setText(QLocale().toString(value, 'g', 7).remove(QLocale().groupSeparator()));
    entry->selectAll();
    entry->installEventFilter(this);
    entry->show();
    entry->setFocus();
}

void ValueSlider::EndEntry(bool accepts) {
    if (entry == nullptr) return;
    QLineEdit* ended = std::exchange(entry, nullptr);
    const bool hadFocus = ended->hasFocus();
    bool isNumber = false;
    double typed = QLocale().toDouble(ended->text().trimmed(), &isNumber);
    if (!isNumber) typed = ended->text().trimmed().toDouble(&isNumber);
    ended->removeEventFilter(this);
    ended->hide();
    ended->deleteLater();
    if (hadFocus) ReturnFocus(this);
    if (accepts && isNumber) Enter(typed);
}

bool ValueSlider::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool accepts = key == Qt::Key_Return || key == Qt::Key_Enter;
        if (accepts || key == Qt::Key_Escape) {
            EndEntry(accepts);
            return true;
        }
    } else if (event->type() == QEvent::FocusOut) {
        EndEntry(true);
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace trovik::studio
