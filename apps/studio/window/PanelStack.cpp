// SPDX-License-Identifier: Apache-2.0
#include "window/PanelStack.h"

#include "panels/Controls.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace trovik::studio {

PanelStack::PanelStack(QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    icons = new QHBoxLayout;
    icons->setContentsMargins(4, 4, 4, 2);
    icons->setSpacing(1);
    title = new QLabel(this);
    title->setObjectName(QStringLiteral("panelTitle"));
    title->setContentsMargins(8, 2, 8, 4);
    stack = new QStackedWidget(this);
    layout->addLayout(icons);
    layout->addWidget(title);
    layout->addWidget(stack, 1);
}

void PanelStack::Add(const QString& id,
                     const QString& icon,
                     const QString& panelTitle,
                     const QString& tip,
                     QWidget* panel,
                     bool scrolls) {
    QToolButton* button = MakeIconButton(icon, panelTitle, tip, this);
    button->setCheckable(true);
    const int side = fontMetrics().height() + 3;
    button->setIconSize({side, side});
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    icons->addWidget(button);
    if (scrolls) {
        auto* area = new QScrollArea(stack);
        area->setWidgetResizable(true);
        area->setFocusPolicy(Qt::NoFocus);
        area->setFrameShape(QFrame::NoFrame);
        area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        area->setWidget(panel);
        stack->addWidget(area);
    } else {
        stack->addWidget(panel);
    }
    pages.push_back({id, panelTitle, button});
    connect(button, &QToolButton::clicked, this, [this, id] { Show(id); });
    if (pages.size() == 1) Show(id);
}

void PanelStack::Show(const QString& id) {
    for (std::size_t i = 0; i < pages.size(); ++i) {
        pages[i].button->setChecked(pages[i].id == id);
        if (pages[i].id != id) continue;
        stack->setCurrentIndex(static_cast<int>(i));
        title->setText(pages[i].title);
    }
}

QString PanelStack::Shown() const {
    return pages.empty() ? QString() : pages[static_cast<std::size_t>(stack->currentIndex())].id;
}

QStringList PanelStack::Ids() const {
    QStringList ids;
    for (const Page& page : pages) ids.append(page.id);
    return ids;
}

}  // namespace trovik::studio
