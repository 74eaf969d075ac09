// SPDX-License-Identifier: Apache-2.0
#include "window/MessageBar.h"

#include "panels/Controls.h"
#include "resources/Icons.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QTimer>
#include <QToolButton>

#include <algorithm>

namespace trovik::studio {

namespace {

constexpr int noteMilliseconds = 6000;
constexpr int maxWidth = 720;

}  // namespace

MessageBar::MessageBar(QWidget* covered) : QFrame(covered), over(covered) {
    setObjectName(QStringLiteral("message"));
    setAutoFillBackground(true);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 6, 6, 6);
    layout->setSpacing(8);
    icon = new QLabel(this);
    label = new QLabel(this);
    label->setWordWrap(true);
    label->setAccessibleName(tr("Message"));
    QToolButton* close =
        MakeIconButton(QStringLiteral("close"), tr("Close"), tr("Closes the message"), this);
    const int side = fontMetrics().height() - 2;
    close->setIconSize({side, side});
    layout->addWidget(icon);
    layout->addWidget(label, 1);
    layout->addWidget(close, 0, Qt::AlignTop);
    timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, &QWidget::hide);
    connect(close, &QToolButton::clicked, this, &QWidget::hide);
    over->installEventFilter(this);
    hide();
}

QString MessageBar::Text() const { return isHidden() ? QString() : label->text(); }

void MessageBar::ShowNote(const QString& text) { Show(text, false); }
void MessageBar::ShowError(const QString& text) { Show(text, true); }

void MessageBar::Show(const QString& text, bool isError) {
    label->setText(text);
    const int side = fontMetrics().height();
    icon->setPixmap(Icon(isError ? QStringLiteral("cancel") : QStringLiteral("about"),
                         isError ? QColor(200, 88, 78) : QColor())
                        .pixmap(QSize(side, side), devicePixelRatioF()));
    setProperty("isError", isError);
    style()->unpolish(this);
    style()->polish(this);
    isError ? timer->stop() : timer->start(noteMilliseconds);
    show();
    raise();
    UpdatePosition();
}

void MessageBar::UpdatePosition() {
    const int width = std::min(maxWidth, over->width() - 24);
    const int natural = label->fontMetrics().horizontalAdvance(label->text()) + 90;
    const int used = std::min(width, natural);
    const int height =
        layout()->hasHeightForWidth() ? layout()->heightForWidth(used) : sizeHint().height();
    setGeometry((over->width() - used) / 2, over->height() - height - 14, used, height);
}

bool MessageBar::eventFilter(QObject* watched, QEvent* event) {
    if (watched == over && event->type() == QEvent::Resize) UpdatePosition();
    return QFrame::eventFilter(watched, event);
}

}  // namespace trovik::studio
