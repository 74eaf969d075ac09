// SPDX-License-Identifier: Apache-2.0
#include "commands/ActionRegistry.h"

#include "resources/Icons.h"

#include <QWidget>

#include <stdexcept>

namespace trovik::studio {

ActionRegistry::ActionRegistry(QWidget* parent) : QObject(parent), window(parent) {}

ActionRegistry::Entry& ActionRegistry::Insert(const ActionInfo& info) {
    const auto [found, isNew] = entries.try_emplace(info.id);
    if (!isNew) throw std::logic_error("two actions have the id " + info.id.toStdString());
    found->second.info = infos.size();
    infos.push_back(info);
    for (const QKeySequence& key : info.keys)
        if (Owner(key).isEmpty()) found->second.keys.append(key);
    return found->second;
}

QAction* ActionRegistry::Add(const ActionInfo& info) {
    Entry& entry = Insert(info);
    auto* action = new QAction(info.text, this);
    entry.action = action;
    action->setObjectName(info.id);
    action->setCheckable(info.isCheckable);
    if (!info.icon.isEmpty()) action->setIcon(Icon(info.icon));
    // Floating docks are separate windows; keys pressed in them must also trigger the main window's
    // actions.
    action->setShortcutContext(info.isForViewport ? Qt::WidgetShortcut : Qt::WindowShortcut);
    ShowKeys(entry);
    connect(action, &QAction::triggered, this, [this, id = info.id, run = info.run] {
        recent.removeAll(id);
        recent.prepend(id);
        Q_EMIT Starting(id);
        if (run) run();
        Q_EMIT Triggered(id);
    });
    if (window != nullptr) window->addAction(action);
    Q_EMIT Added(info.id);
    return action;
}

void ActionRegistry::AddHeld(const ActionInfo& info) {
    Insert(info).isHeld = true;
    Q_EMIT Added(info.id);
}

QAction* ActionRegistry::Find(const QString& id) const {
    const auto found = entries.find(id);
    return found == entries.end() ? nullptr : found->second.action;
}

QKeySequence ActionRegistry::HeldKey(const QString& id) const {
    const auto found = entries.find(id);
    if (found == entries.end() || !found->second.isHeld || found->second.keys.isEmpty()) return {};
    return found->second.keys.first();
}

bool ActionRegistry::IsHeld(const QString& id) const {
    const auto found = entries.find(id);
    return found != entries.end() && found->second.isHeld;
}

const ActionInfo* ActionRegistry::Info(const QString& id) const {
    const auto found = entries.find(id);
    return found == entries.end() ? nullptr : &infos[found->second.info];
}

bool ActionRegistry::IsForViewport(const QString& id) const {
    const ActionInfo* info = Info(id);
    return info != nullptr && info->isForViewport;
}

bool ActionRegistry::Trigger(const QString& id) {
    QAction* action = Find(id);
    if (action == nullptr || !action->isEnabled()) return false;
    action->trigger();
    return true;
}

QList<QKeySequence> ActionRegistry::Keys(const QString& id) const {
    const auto found = entries.find(id);
    return found == entries.end() ? QList<QKeySequence>() : found->second.keys;
}

QStringList ActionRegistry::SetKeys(const QString& id, const QList<QKeySequence>& keys) {
    const auto found = entries.find(id);
    if (found == entries.end()) return {};
    QStringList losers;
    QList<QKeySequence> bound;
    for (const QKeySequence& key : keys) {
        if (key.isEmpty() || bound.contains(key)) continue;
        bound.append(key);
        const QString owner = Owner(key);
        if (owner.isEmpty() || owner == id) continue;
        Entry& loser = entries.at(owner);
        loser.keys.removeAll(key);
        ShowKeys(loser);
        if (!losers.contains(owner)) losers.append(owner);
    }
    found->second.keys = bound;
    ShowKeys(found->second);
    NotifyKeys();
    return losers;
}

QString ActionRegistry::Owner(const QKeySequence& key) const {
    if (key.isEmpty()) return {};
    for (const auto& [id, entry] : entries)
        if (entry.keys.contains(key)) return id;
    return {};
}

void ActionRegistry::ResetKeys() {
    for (auto& [id, entry] : entries) entry.keys.clear();
    for (const ActionInfo& info : infos) {
        QList<QKeySequence>& keys = entries.at(info.id).keys;
        for (const QKeySequence& key : info.keys)
            if (Owner(key).isEmpty()) keys.append(key);
    }
    for (auto& [id, entry] : entries) ShowKeys(entry);
    NotifyKeys();
}

void ActionRegistry::SetQuiet(bool isQuiet) {
    quiet = isQuiet;
    NotifyKeys();
}

void ActionRegistry::NotifyKeys() {
    if (!quiet) Q_EMIT KeysChanged();
}

void ActionRegistry::ShowKeys(Entry& entry) {
    if (entry.action == nullptr) return;
    const ActionInfo& info = infos[entry.info];
    entry.action->setShortcuts(entry.keys);
    QString text = QStringLiteral("<b>%1</b>").arg(info.text.toHtmlEscaped().remove(u'…'));
    if (!entry.keys.isEmpty())
        text += QStringLiteral(" &nbsp;<span style='color:gray'>%1</span>")
                    .arg(entry.keys.first().toString(QKeySequence::NativeText).toHtmlEscaped());
    text += QStringLiteral("<br>") + info.description.toHtmlEscaped();
    entry.action->setToolTip(text);
    entry.action->setStatusTip(info.description);
}

}  // namespace trovik::studio
