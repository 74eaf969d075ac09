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

/// An action that a user can trigger by menu, key, palette or script.
struct ActionInfo {
    /// Unique and stable, such as "mask.invert"; the part before the dot is the category.
    QString id = {};
    /// Shown in menus and the palette, such as "Invert Mask".
    QString text = {};
    /// One sentence that describes its effect.
    QString description = {};
    /// Keys in the preset "default"; may be empty.
    QList<QKeySequence> keys = {};
    /// Name of an icon in resources/icons, without ".svg"; may be empty.
    QString icon = {};
    bool isCheckable = false;
    /// Whether its keys work only while the viewport has the keyboard focus; elsewhere, keys such
    /// as Tab keep their usual meaning.
    bool isForViewport = false;
    std::function<void()> run = {};
};

/// All actions of the studio by ID. Menus, tool bars, palette, keymap and event files use the same
/// QAction objects. Held keys (radius, strength, pan …) are added with `AddHeld`; they appear in
/// the keymap and the palette, but are handled by the input code.
///
/// A key belongs to at most one action. To be used only on the UI thread.
class ActionRegistry : public QObject {
    Q_OBJECT
public:
    explicit ActionRegistry(QWidget* window);

    /// Adds an action. Its tooltip consists of the description and the key. The id must be new; a
    /// key that is already bound to another action stays bound to that action.
    QAction* Add(const ActionInfo& info);
    /// Adds a key that has an effect while it is held; see HeldKey.
    void AddHeld(const ActionInfo& info);
    /// Null for an unknown id and for held keys.
    QAction* Find(const QString& id) const;
    /// The key bound to a held action; empty if there is none.
    QKeySequence HeldKey(const QString& id) const;
    bool IsHeld(const QString& id) const;
    /// In the order in which they were added.
    const std::vector<ActionInfo>& Infos() const { return infos; }
    /// Null if there is none.
    const ActionInfo* Info(const QString& id) const;
    /// Whether ActionInfo::isForViewport is set.
    bool IsForViewport(const QString& id) const;
    /// Triggers an action. \return false for an unknown id or a disabled action.
    bool Trigger(const QString& id);
    /// The IDs of triggered actions, most recent first, regardless of how they were triggered; each
    /// is listed once.
    const QStringList& Recent() const { return recent; }

    /// The current key bindings.
    QList<QKeySequence> Keys(const QString& id) const;
    /// Binds keys and returns the ids that lose a key. Unknown ids have no effect.
    QStringList SetKeys(const QString& id, const QList<QKeySequence>& keys);
    /// The id to which a key is bound; empty if there is none.
    QString Owner(const QKeySequence& key) const;
    /// Restores the keys of the preset "default".
    void ResetKeys();
    /// Suppresses KeysChanged while several keys are being bound. Call it with true before calling
    /// SetKeys repeatedly, and with false afterwards. The call with false sends KeysChanged.
    void SetQuiet(bool isQuiet);

Q_SIGNALS:
    void KeysChanged();
    void Added(const QString& id);
    /// Sent before and after an action runs, regardless of how it was triggered.
    void Starting(const QString& id);
    void Triggered(const QString& id);

private:
    struct Entry {
        QAction* action = nullptr;
        QList<QKeySequence> keys;
        bool isHeld = false;
        std::size_t info = 0;
    };
    Entry& Insert(const ActionInfo& info);
    void ShowKeys(Entry& entry);
    void NotifyKeys();

    QWidget* window;
    std::vector<ActionInfo> infos;
    std::map<QString, Entry> entries;
    QStringList recent;
    bool quiet = false;
};

}  // namespace trovik::studio
