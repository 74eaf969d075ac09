// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QSettings>
#include <QString>
#include <QStringList>

namespace trovik::studio {

/// The studio's folders in the XDG base directories, without a trailing slash. They need not exist.
struct StudioFolders {
    /// $XDG_CONFIG_HOME/trovik: preferences, keymap.
    static QString Config();
    /// $XDG_STATE_HOME/trovik: journals.
    static QString Journals();
    /// $XDG_DATA_HOME/trovik/primitives: meshes from which journals and action scripts start. They
    /// are not stored in the cache, because users clear it.
    static QString Primitives();
};

/// A user's preferences. Reading is cheap; each change is written to the file and reported by
/// Changed.
///
/// Call on the UI thread only.
class Preferences : public QObject {
    Q_OBJECT
public:
    /// \param path  an INI file, which need not exist.
    explicit Preferences(const QString& path, QObject* parent = nullptr);
    /// $XDG_CONFIG_HOME/trovik/studio.ini.
    static QString UsualPath();

    /// "dark" or "light".
    QString Theme() const;
    void SetTheme(const QString& theme);
    /// Size of all controls and texts, relative to the desktop setting: 0.75 to 2.
    double UiScale() const;
    void SetUiScale(double scale);
    /// A name from Keymap::Presets, which determines how drags with modifiers move the camera.
    QString Navigation() const;
    void SetNavigation(const QString& preset);
    /// MiB of undo steps kept in memory, 64 to 65536.
    int UndoBudget() const;
    void SetUndoBudget(int mebibytes);
    /// Whether older undo steps are moved to a temporary file instead of being dropped.
    bool UsesUndoFile() const;
    void SetUsesUndoFile(bool on);
    /// "device" or "pointer": whether pen positions come from the tablet or from the cursor.
    QString PenPosition() const;
    void SetPenPosition(const QString& source);
    /// The effect of the eraser end of a pen: "invert" or "smooth".
    QString Eraser() const;
    void SetEraser(const QString& effect);
    /// The effect of the pen's barrel button: "pan", "orbit" or "menu".
    QString BarrelButton() const;
    void SetBarrelButton(const QString& effect);
    /// Whether the first-start hint still has to be shown.
    bool ShowsWelcome() const;
    void SetShowsWelcome(bool shows);

    /// Recently opened or saved documents, newest first; at most 12.
    QStringList RecentFiles() const;
    void AddRecentFile(const QString& path);
    void ClearRecentFiles();
    /// Recently chosen stamps, newest first; at most 12.
    QStringList RecentStamps() const;
    void AddRecentStamp(const QString& path);
    /// The most recently used folder of a file dialog.
    QString LastFolder(const QString& purpose) const;
    void SetLastFolder(const QString& purpose, const QString& folder);
    /// Window and dock states by name.
    QByteArray Layout(const QString& name) const;
    void SetLayout(const QString& name, const QByteArray& state);

Q_SIGNALS:
    void Changed();
    void RecentFilesChanged();
    void RecentStampsChanged();

private:
    void Set(const QString& key, const QVariant& value);
    void Prepend(const QString& key, const QString& entry);

    QSettings settings;
};

}  // namespace trovik::studio
