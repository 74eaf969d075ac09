// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDialog>
#include <QKeySequence>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

namespace trovik::studio {

class ActionRegistry;
class Keymap;

/// Lists all actions with their keys. After a click on a key, the editor waits for the next key;
/// Backspace removes the key; Escape keeps it. A key that is bound to another action is only
/// rebound after a second press; a message names the other action.
class KeymapEditor : public QDialog {
    Q_OBJECT
public:
    KeymapEditor(ActionRegistry& actions, Keymap& keymap, QWidget* parent = nullptr);

    /// Shows the actions whose name, description or key contains the text.
    void Search(const QString& text);
    /// Selects an action and waits for a key.
    void Capture(const QString& id);
    /// The text of the line below the list.
    QString Message() const;
    /// The id for which the editor waits for a key; empty if there is none.
    const QString& Capturing() const { return capturing; }

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Refill();
    void ShowKeys();
    void TakeKey(const QKeySequence& key);
    void StopCapture();
    void Say(const QString& message);
    QString SelectedId() const;
    void ImportFile();
    void ExportFile();
    QWidget* MakeTopRow();
    QWidget* MakeButtons();

    ActionRegistry& actions;
    Keymap& keymap;
    QLineEdit* search;
    QComboBox* presets;
    QTreeWidget* list;
    QLabel* message;
    QPushButton* reset;
    QString capturing;
    /// A key that is bound to another action and has been pressed once.
    QKeySequence contested;
    /// Whether a key was pressed together with the modifiers that are held.
    bool isCombination = false;
};

}  // namespace trovik::studio
