// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QToolButton>

#include <initializer_list>

class QAction;
class QVBoxLayout;

namespace trovik::studio {

class ActionRegistry;
class Section;

/// \file
/// Panel controls. Apart from line edits, they never take the keyboard focus, so that letter keys
/// always trigger the window's actions. Line edits return the focus with ReturnFocus.

/// Gives the keyboard focus to the central widget of the main window that contains a widget.
void ReturnFocus(QWidget* from);

/// A combo box that ignores the wheel, because panels scroll under the pointer.
class PanelCombo : public QComboBox {
    Q_OBJECT
public:
    PanelCombo(const QString& name, const QString& tip, QWidget* parent);

protected:
    void wheelEvent(QWheelEvent* event) override;
};

/// A small flat button with an icon.
QToolButton* MakeIconButton(const QString& icon,
                            const QString& name,
                            const QString& tip,
                            QWidget* parent);
/// A button for a registered action, with only its icon, or with icon and text across the full
/// width.
QToolButton* MakeActionButton(QAction* action, QWidget* parent, bool hasText = false);
/// Adds buttons for registered actions, with icon and text, in two columns.
void AddActionButtons(Section* section,
                      const ActionRegistry& actions,
                      std::initializer_list<const char*> ids);
/// A row with a switch: a check mark and a label.
class PanelCheck : public QToolButton {
    Q_OBJECT
public:
    PanelCheck(const QString& label, const QString& tip, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// A header that shows and hides the widgets below it.
class Section : public QWidget {
    Q_OBJECT
public:
    Section(const QString& title, QWidget* parent, bool isOpen = true);
    /// The layout for the contents.
    QVBoxLayout* Body() const { return layout; }
    bool IsOpen() const;
    void SetOpen(bool open);

private:
    QToolButton* header;
    QWidget* contents;
    QVBoxLayout* layout;
};

/// The label in front of a control. Short labels have equal widths, so that the controls of a panel
/// are aligned.
class RowLabel : public QLabel {
    Q_OBJECT
public:
    using QLabel::QLabel;
    QSize sizeHint() const override { return Widened(QLabel::sizeHint()); }
    QSize minimumSizeHint() const override { return Widened(QLabel::minimumSizeHint()); }

private:
    QSize Widened(const QSize& size) const;
};

/// A layout with the margins and spacing of panels.
QVBoxLayout* MakePanelLayout(QWidget* panel);
/// Dimmed text with word wrap.
QLabel* MakeHint(const QString& text, QWidget* parent);

}  // namespace trovik::studio
