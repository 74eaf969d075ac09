// SPDX-License-Identifier: Apache-2.0
#include "window/PanelStack.h"

#include "panels/Controls.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

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
    titleButton = new QToolButton(this);
    titleButton->setAutoRaise(true);
    titleButton->setFocusPolicy(Qt::NoFocus);
    titleButton->hide();
    auto* head = new QHBoxLayout;
    head->setContentsMargins(0, 0, 4, 0);
    head->addWidget(title, 1);
    head->addWidget(titleButton);
    stack = new QStackedWidget(this);
    layout->addLayout(icons);
    layout->addLayout(head);
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
    QWidget* page = panel;
    if (scrolls) {
        auto* area = new QScrollArea(stack);
        area->setWidgetResizable(true);
        area->setFocusPolicy(Qt::NoFocus);
        area->setFrameShape(QFrame::NoFrame);
        area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        area->setWidget(panel);
        page = area;
    }
    stack->addWidget(page);
    pages.push_back({id, panelTitle, button, page});
    connect(button, &QToolButton::clicked, this, [this, id] { Show(id); });
    if (pages.size() == 1) Show(id);
}

PanelStack::Page* PanelStack::Find(const QString& id) {
    const auto found =
        std::find_if(pages.begin(), pages.end(), [&](const Page& page) { return page.id == id; });
    return found == pages.end() ? nullptr : &*found;
}

void PanelStack::Show(const QString& id) {
    const Page* page = Find(id);
    if (page != nullptr && page->panel != nullptr) stack->setCurrentWidget(page->panel);
    const QString shown = Shown();
    for (const Page& one : pages) {
        one.button->setChecked(one.id == shown);
        if (one.id != shown) continue;
        title->setText(one.title);
        titleButton->setVisible(one.titleAction != nullptr);
        if (one.titleAction == nullptr) continue;
        // A button with several actions would open a menu.
        titleButton->removeAction(titleButton->defaultAction());
        titleButton->setDefaultAction(one.titleAction);
        titleButton->setAccessibleName(one.titleAction->text());
    }
    if (page != nullptr && page->panel == nullptr) Q_EMIT Requested(id);
}

QString PanelStack::Shown() const {
    for (const Page& page : pages)
        if (page.panel != nullptr && page.panel == stack->currentWidget()) return page.id;
    return {};
}

void PanelStack::SetTitleAction(const QString& id, QAction* action) {
    Find(id)->titleAction = action;
    Show(Shown());
}

QWidget* PanelStack::Take(const QString& id) {
    Page* page = Find(id);
    QWidget* panel = std::exchange(page->panel, nullptr);
    stack->removeWidget(panel);
    if (stack->count() == 0) {
        title->clear();
        titleButton->hide();
    }
    Show(Shown());
    return panel;
}

void PanelStack::PutBack(const QString& id, QWidget* panel) {
    Find(id)->panel = panel;
    stack->addWidget(panel);
    Show(id);
}

QStringList PanelStack::Ids() const {
    QStringList ids;
    for (const Page& page : pages) ids.append(page.id);
    return ids;
}

}  // namespace trovik::studio
