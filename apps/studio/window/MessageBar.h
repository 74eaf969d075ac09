// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>

class QLabel;
class QTimer;

namespace trovik::studio {

/// A message over the lower edge of a widget. Errors stay until they are closed or replaced; notes
/// disappear after a few seconds.
class MessageBar : public QFrame {
    Q_OBJECT
public:
    explicit MessageBar(QWidget* over);

    void ShowNote(const QString& text);
    void ShowError(const QString& text);
    QString Text() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Show(const QString& text, bool isError);
    void UpdatePosition();

    QWidget* over;
    QLabel* icon;
    QLabel* label;
    QTimer* timer;
};

}  // namespace trovik::studio
