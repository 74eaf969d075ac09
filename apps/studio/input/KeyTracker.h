// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QKeySequence>
#include <QObject>
#include <QSet>

namespace trovik::studio {

/// The keys that are held while the application is active. Tablet events carry no modifiers on
/// some window systems, so input reads them here.
class KeyTracker : public QObject {
    Q_OBJECT
public:
    /// Watches all key events of the application.
    explicit KeyTracker(QObject* parent = nullptr);

    /// Whether the keys of a sequence of one chord are held, and no other modifier. A sequence may
    /// be a modifier alone, such as Shift; other modifiers may then be held as well.
    bool IsHeld(const QKeySequence& sequence) const;
    bool IsHeld(Qt::Key key) const { return keys.contains(key); }
    Qt::KeyboardModifiers Modifiers() const;
    /// Mouse events know the modifiers also of keys that another window saw.
    void Synchronise(Qt::KeyboardModifiers modifiers);
    /// No key is held, as after a change of window.
    void Clear();

Q_SIGNALS:
    /// Without repetitions.
    void Pressed(int key);
    void Released(int key);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Set(int key, bool isHeld);

    QSet<int> keys;
};

}  // namespace trovik::studio
