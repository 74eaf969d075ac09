// SPDX-License-Identifier: Apache-2.0
#include "window/JournalNotice.h"

#include "commands/ActionRegistry.h"
#include "engine/Engine.h"
#include "resources/Icons.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

#include <algorithm>

namespace trovik::studio {

namespace {

constexpr int maxWidth = 860;
constexpr int margin = 14;

}  // namespace

JournalNotice::JournalNotice(Engine& engine, ActionRegistry& actions, QWidget* over)
    : QFrame(over), covered(over) {
    setObjectName(QStringLiteral("message"));
    setAutoFillBackground(true);
    setProperty("isError", true);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 6, 10, 6);
    layout->setSpacing(8);
    auto* icon = new QLabel(this);
    const int side = fontMetrics().height();
    icon->setPixmap(Icon(QStringLiteral("cancel"), QColor(200, 88, 78))
                        .pixmap(QSize(side, side), devicePixelRatioF()));
    label = new QLabel(this);
    label->setWordWrap(true);
    label->setAccessibleName(tr("Journal problem"));
    layout->addWidget(icon);
    layout->addWidget(label, 1);
    const auto addButton = [&](const QString& text, const QString& tip, const auto& run) {
        auto* button = new QPushButton(text, this);
        button->setToolTip(tip);
        button->setAccessibleName(text);
        button->setFocusPolicy(Qt::NoFocus);
        layout->addWidget(button);
        connect(button, &QPushButton::clicked, this, run);
    };
    addButton(tr("Save a Copy…"), tr("Saves the work to a different scene file"), [&actions] {
        actions.Trigger(QStringLiteral("file.saveCopy"));
    });
    addButton(tr("Try Again"),
              tr("Tries to write the journal now; the studio also retries periodically"),
              [&engine] { engine.ResumeJournal(); });
    connect(&engine, &Engine::JournalFailureChanged, this, &JournalNotice::Show);
    covered->installEventFilter(this);
    hide();
}

QString JournalNotice::Text() const { return isHidden() ? QString() : label->text(); }

void JournalNotice::Show(const QString& failure) {
    label->setText(
        tr("After a crash, the work since the last save would be lost: %1").arg(failure));
    setVisible(!failure.isEmpty());
    if (failure.isEmpty()) return;
    raise();
    UpdatePosition();
}

void JournalNotice::UpdatePosition() {
    const int width = std::min(maxWidth, covered->width() - 2 * margin);
    const int height =
        layout()->hasHeightForWidth() ? layout()->heightForWidth(width) : sizeHint().height();
    setGeometry((covered->width() - width) / 2, margin, width, height);
}

bool JournalNotice::eventFilter(QObject* watched, QEvent* event) {
    if (watched == covered && event->type() == QEvent::Resize) UpdatePosition();
    return QFrame::eventFilter(watched, event);
}

}  // namespace trovik::studio
