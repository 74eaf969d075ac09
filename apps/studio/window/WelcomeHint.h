// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>

namespace trovik::studio {

class ActionRegistry;
class Preferences;

/// The first-start hint, which shows the essential keys over the viewport. It is closed by the
/// first stroke or its button, and is not shown again.
class WelcomeHint : public QFrame {
    Q_OBJECT
public:
    WelcomeHint(ActionRegistry& actions, Preferences& preferences, QWidget* over);
    void Dismiss();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void UpdatePosition();

    Preferences& preferences;
    QWidget* over;
};

}  // namespace trovik::studio
