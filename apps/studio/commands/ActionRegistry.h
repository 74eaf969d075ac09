// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAction>
#include <QKeySequence>
#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <vector>

namespace trovik::studio {

/// What a user can start by menu, key, palette or script.
struct ActionInfo {
    /// Unique and stable, such as "mask.invert"; the part before the dot is the category.
    QString id;
    /// Shown in menus and the palette, such as "Invert Mask".
    QString text;
    /// One sentence that says what it does.
    QString description;
    /// Of the preset "default"; may be empty.
    QList<QKeySequence> keys;
    /// Name of an icon in resources/icons, without ".svg"; may be empty.
    QString icon;
    bool isCheckable = false;
    std::function<void()> run;
};

/// All actions of the studio, by their id. Menus, tool bars, palette, keymap and event files use
/// the same QAction objects. Keys that are held (radius, strength, pan …) are actions with
/// `AddHeld`, which appear in keymap and palette but are read by the input code.
///
/// Call on the UI thread only.
class ActionRegistry : public QObject {
    Q_OBJECT
public:
    explicit ActionRegistry(QWidget* window);

    /// Adds an action. Its tooltip is the description with the key. The id must be new.
    QAction* Add(const ActionInfo& info);
    /// Adds a key that acts while it is held; see HeldKey.
    void AddHeld(const ActionInfo& info);
    /// Null if there is none.
    QAction* Find(const QString& id) const;
    /// The key that is bound to a held action; empty if there is none.
    QKeySequence HeldKey(const QString& id) const;
    /// In the order in which they were added.
    const std::vector<ActionInfo>& Infos() const { return infos; }
    /// Triggers an action. \return false for an unknown id or a disabled action.
    bool Trigger(const QString& id);

    /// The keys that are bound now.
    QList<QKeySequence> Keys(const QString& id) const;
    /// Binds keys; ids that lose a key by that are returned.
    QStringList SetKeys(const QString& id, const QList<QKeySequence>& keys);
    /// The id that has a key; empty if there is none.
    QString Owner(const QKeySequence& key) const;
    /// Restores the keys of the preset "default".
    void ResetKeys();

Q_SIGNALS:
    void KeysChanged();
    void Added(const QString& id);

private:
    struct Entry {
        QAction* action = nullptr;
        QList<QKeySequence> keys;
        bool isHeld = false;
    };

    QWidget* window;
    std::vector<ActionInfo> infos;
    std::map<QString, Entry> entries;
};

}  // namespace trovik::studio
