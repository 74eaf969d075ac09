// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QKeySequence>
#include <QObject>
#include <QSet>

#include <array>
#include <utility>

namespace trovik::studio {

/// The input modifiers, each with its key.
inline constexpr std::array<std::pair<Qt::KeyboardModifier, Qt::Key>, 4> modifierKeys{{
    {Qt::ShiftModifier, Qt::Key_Shift},
    {Qt::ControlModifier, Qt::Key_Control},
    {Qt::AltModifier, Qt::Key_Alt},
    {Qt::MetaModifier, Qt::Key_Meta},
}};

/// Tracks the keys that are held while the application is active. On some window systems tablet
/// events have no modifiers, so the input code reads them from this class.
class KeyTracker : public QObject {
    Q_OBJECT
public:
    /// Watches all key events of the application.
    explicit KeyTracker(QObject* parent = nullptr);

    /// Whether the keys of a single-chord sequence are held, and no other modifier. If the sequence
    /// is only a modifier, such as Shift, other modifiers may be held as well.
    bool IsHeld(const QKeySequence& sequence) const;
    bool IsHeld(Qt::Key key) const { return keys.contains(key); }
    Qt::KeyboardModifiers Modifiers() const;
    /// Updates the modifiers from those of a mouse event, which include keys that were pressed in
    /// another window.
    void Synchronise(Qt::KeyboardModifiers modifiers);
    /// Marks all keys as released, for example after a change of window.
    void Clear();

Q_SIGNALS:
    /// Auto-repeat is ignored.
    void Pressed(int key);
    void Released(int key);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Set(int key, bool isHeld);

    QSet<int> keys;
};

}  // namespace trovik::studio
