// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QJsonObject>
#include <QKeySequence>
#include <QObject>
#include <QString>

#include <map>

namespace trovik::studio {

class ActionRegistry;

/// A user's key bindings: a preset, and the keys that differ from it. A keymap is stored as JSON:
///
///     {"format": "trovik-keymap", "version": 1, "preset": "default",
///      "keys": {"mask.clear": ["Alt+M"], "view.grid": []}}
///
/// Keys are written as QKeySequence::PortableText. Unknown IDs are preserved, because the action
/// may be added later.
///
/// Call on the UI thread only.
class Keymap : public QObject {
    Q_OBJECT
public:
    using Keys = std::map<QString, QList<QKeySequence>>;

    /// Binds the preset "default". \param userPath  the file that Store writes; if empty, Store
    /// does nothing.
    Keymap(ActionRegistry& actions, const QString& userPath, QObject* parent = nullptr);

    /// "default", "alt-drag" and "pen".
    static QStringList Presets();
    /// Translated display name of a preset.
    static QString PresetTitle(const QString& preset);
    const QString& Preset() const { return preset; }
    /// Binds the keys of a preset and discards all user-defined keys.
    void SetPreset(const QString& name);

    /// Binds keys of one action and stores the keymap. \return the ids that lost a key.
    QStringList Bind(const QString& id, const QList<QKeySequence>& keys);
    /// Binds the preset's keys for one action. \return the ids that lost a key.
    QStringList Reset(const QString& id);
    /// Whether the keys of an action differ from those of the preset.
    bool IsChanged(const QString& id) const;

    /// Reads the user's file, if it exists.
    /// \return an error in one line, in which case the keymap is unchanged; empty on success.
    QString Load();
    /// \return an error that names the file; empty on success.
    QString Import(const QString& path);
    QString Export(const QString& path) const;

Q_SIGNALS:
    /// The user's file could not be written.
    void StoreFailed(const QString& message);

private:
    QList<QKeySequence> PresetKeys(const QString& id) const;
    QJsonObject ToJson() const;
    QString FromJson(const QString& path, const QByteArray& text);
    void BindAll();
    void Store();
    QString Write(const QString& path) const;

    ActionRegistry& actions;
    QString userPath;
    QString preset;
    Keys presetKeys;
    /// The keys of all actions that differ from the preset.
    Keys own;
};

}  // namespace trovik::studio
