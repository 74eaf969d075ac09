// SPDX-License-Identifier: Apache-2.0
#include "window/WelcomeHint.h"

#include "commands/ActionRegistry.h"
#include "commands/Preferences.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace trovik::studio {

WelcomeHint::WelcomeHint(ActionRegistry& actions, Preferences& stored, QWidget* covered)
    : QFrame(covered), preferences(stored), over(covered) {
    setObjectName(QStringLiteral("welcome"));
    setAutoFillBackground(true);
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(18, 14, 18, 14);
    layout->setHorizontalSpacing(18);
    layout->setVerticalSpacing(5);
    auto* title = new QLabel(tr("A sphere, ready to sculpt"), this);
    title->setObjectName(QStringLiteral("panelTitle"));
    layout->addWidget(title, 0, 0, 1, 2);
    int row = 1;
    const auto add = [&](const QString& key, const QString& text) {
        auto* keyLabel = new QLabel(key, this);
        keyLabel->setObjectName(QStringLiteral("hint"));
        layout->addWidget(keyLabel, row, 0);
        layout->addWidget(new QLabel(text, this), row, 1);
        ++row;
    };
    const auto key = [&](const char* id) {
        const QList<QKeySequence> keys = actions.Keys(QString::fromLatin1(id));
        return keys.isEmpty() ? tr("–") : keys.first().toString(QKeySequence::NativeText);
    };
    add(tr("Drag on the surface"), tr("sculpts"));
    add(tr("Hold %1, %2").arg(key("stroke.invert"), key("stroke.smooth")), tr("inverts, smooths"));
    add(key("brush.radius") + QStringLiteral(", ") + key("brush.strength"),
        tr("changes radius, strength"));
    add(tr("Middle button"), tr("orbits; Shift pans, Ctrl zooms"));
    add(key("window.palette"), tr("finds every command"));
    auto* close = new QPushButton(tr("Start"), this);
    close->setFocusPolicy(Qt::NoFocus);
    close->setAccessibleName(tr("Start"));
    close->setToolTip(tr("Closes this hint; the Help menu shows it again"));
    layout->addWidget(close, row, 1, Qt::AlignRight);
    connect(close, &QPushButton::clicked, this, &WelcomeHint::Dismiss);
    over->installEventFilter(this);
    UpdatePosition();
    show();
}

void WelcomeHint::Dismiss() {
    preferences.SetShowsWelcome(false);
    hide();
    deleteLater();
}

void WelcomeHint::UpdatePosition() {
    adjustSize();
    move((over->width() - width()) / 2, over->height() - height() - 32);
}

bool WelcomeHint::eventFilter(QObject* watched, QEvent* event) {
    if (watched == over && event->type() == QEvent::Resize) UpdatePosition();
    return QFrame::eventFilter(watched, event);
}

}  // namespace trovik::studio
