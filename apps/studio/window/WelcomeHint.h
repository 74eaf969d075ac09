// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>

namespace trovik::studio {

class ActionRegistry;
class Preferences;

/// The hint of the first start: the few keys that one needs, over the viewport. It goes at the
/// first stroke or by its button, and does not come back.
class WelcomeHint : public QFrame {
    Q_OBJECT
public:
    WelcomeHint(ActionRegistry& actions, Preferences& preferences, QWidget* over);
    void Dismiss();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Place();

    Preferences& preferences;
    QWidget* over;
};

}  // namespace trovik::studio
