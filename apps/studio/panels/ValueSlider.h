// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QWidget>

class QLineEdit;

namespace trovik::studio {

/// A slider that displays its name and value. A drag changes the value; with Shift, it changes ten
/// times more slowly. A click opens a line edit for a number, which Return accepts and Escape
/// cancels; both return the keyboard focus to the viewport. The wheel has no effect, because panels
/// scroll.
class ValueSlider : public QWidget {
    Q_OBJECT
public:
    struct Range {
        /// Values that can be typed.
        double least = 0.0, most = 1.0;
        /// Limits of a drag; if they are equal, the limits for typed values are used.
        double softLeast = 0.0, softMost = 0.0;
        bool isLogarithmic = false;
        bool isWhole = false;
        /// Number of decimals; fewer are shown for large values.
        int decimals = 2;
        QString unit;
    };

    ValueSlider(const QString& name, const QString& tip, QWidget* parent);

    double Value() const { return value; }
    /// Shows a value, clamped to the range, without a signal. Ignored during a drag.
    void SetValue(double shown);
    const Range& Limits() const { return range; }
    void SetRange(const Range& changed);
    const QString& Name() const { return name; }
    void SetName(const QString& shown);
    QString ValueText() const;
    /// Opens the line edit for a number.
    void BeginEntry();
    /// Sets a value as if the user had typed it.
    void Enter(double typed);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The value changes during a drag.
    void Dragged(double value);
    /// The user has chosen a value, by a drag or by typing.
    void Edited(double value);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    double SoftLeast() const;
    double SoftMost() const;
    double FractionOf(double of) const;
    double ValueAt(double fraction) const;
    double Limited(double given) const;
    void EndEntry(bool accepts);
    /// Repaints, and informs assistive technology.
    void NotifyValue();

    QString name;
    Range range;
    double value = 0.0;
    QLineEdit* entry = nullptr;
    bool isDragging = false;
    bool hasMoved = false;
    double pressX = 0.0;
    double dragFraction = 0.0;
};

}  // namespace trovik::studio
