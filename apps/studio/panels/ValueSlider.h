// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QWidget>

class QLineEdit;

namespace trovik::studio {

/// A slider that shows name and value in itself. A drag changes the value, with Shift ten times as
/// finely; a click opens an entry for a number, which Return accepts and Escape closes. After both
/// the key focus is back at the viewport. The wheel does nothing, since panels scroll.
class ValueSlider : public QWidget {
    Q_OBJECT
public:
    struct Range {
        /// Values that can be typed.
        double least = 0.0, most = 1.0;
        /// Values that a drag reaches; equal ones: those that can be typed.
        double softLeast = 0.0, softMost = 0.0;
        bool isLogarithmic = false;
        bool isWhole = false;
        /// Behind the point; fewer are shown for large values.
        int decimals = 2;
        QString unit;
    };

    ValueSlider(const QString& name, const QString& tip, QWidget* parent);

    double Value() const { return value; }
    /// Shows a value, which is limited to the range, without a signal. Ignored during a drag.
    void SetValue(double shown);
    const Range& Limits() const { return range; }
    void SetRange(const Range& changed);
    const QString& Name() const { return name; }
    void SetName(const QString& shown);
    QString ValueText() const;
    /// Opens the entry for a number.
    void BeginEntry();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The value changes during a drag.
    void Dragged(double value);
    /// The user has chosen a value: at the end of a drag, or typed.
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
