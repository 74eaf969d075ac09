// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>

class QLabel;

namespace trovik::studio {

class ActionRegistry;
class Engine;

/// A notice over the upper edge of a widget while the journal of the document cannot be written. It
/// has buttons to save a copy and to try again, takes no focus, and remains visible until the
/// journal is written again.
class JournalNotice : public QFrame {
    Q_OBJECT
public:
    /// \param actions  has "file.saveCopy". The objects are borrowed.
    JournalNotice(Engine& engine, ActionRegistry& actions, QWidget* over);

    /// Empty while the notice is hidden.
    QString Text() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Show(const QString& failure);
    void UpdatePosition();

    QWidget* covered;
    QLabel* label;
};

}  // namespace trovik::studio
