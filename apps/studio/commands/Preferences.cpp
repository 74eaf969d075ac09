// SPDX-License-Identifier: Apache-2.0
#include "commands/Preferences.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>

namespace trovik::studio {

namespace {

constexpr int maxRecent = 12;

QString Below(QStandardPaths::StandardLocation location, const QString& name) {
    return QStandardPaths::writableLocation(location) + QStringLiteral("/trovik") + name;
}

}  // namespace

QString StudioFolders::Config() { return Below(QStandardPaths::GenericConfigLocation, {}); }

QString StudioFolders::Journals() {
    // Qt 6.4 has no standard location for the state folder.
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (state.isEmpty()) state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/trovik/journals");
}

QString StudioFolders::Primitives() {
    return Below(QStandardPaths::GenericDataLocation, QStringLiteral("/primitives"));
}

Preferences::Preferences(const QString& path, QObject* parent)
    : QObject(parent), settings(path, QSettings::IniFormat) {}

QString Preferences::UsualPath() { return StudioFolders::Config() + QStringLiteral("/studio.ini"); }

void Preferences::Set(const QString& key, const QVariant& value) {
    if (settings.value(key) == value) return;
    settings.setValue(key, value);
    Q_EMIT Changed();
}

QString Preferences::Theme() const {
    return settings.value("window/theme", QStringLiteral("dark")).toString();
}
void Preferences::SetTheme(const QString& theme) { Set("window/theme", theme); }

double Preferences::UiScale() const {
    return std::clamp(settings.value("window/scale", 1.0).toDouble(), 0.75, 2.0);
}
void Preferences::SetUiScale(double scale) { Set("window/scale", scale); }

QString Preferences::Navigation() const {
    return settings.value("input/navigation", QStringLiteral("default")).toString();
}
void Preferences::SetNavigation(const QString& preset) { Set("input/navigation", preset); }

int Preferences::UndoBudget() const {
    return std::clamp(settings.value("undo/budget", 2048).toInt(), 64, 65536);
}
void Preferences::SetUndoBudget(int mebibytes) { Set("undo/budget", mebibytes); }

bool Preferences::UsesUndoFile() const { return settings.value("undo/file", true).toBool(); }
void Preferences::SetUsesUndoFile(bool on) { Set("undo/file", on); }

QString Preferences::PenPosition() const {
    return settings.value("input/penPosition", QStringLiteral("device")).toString();
}
void Preferences::SetPenPosition(const QString& source) { Set("input/penPosition", source); }

QString Preferences::Eraser() const {
    return settings.value("input/eraser", QStringLiteral("invert")).toString();
}
void Preferences::SetEraser(const QString& effect) { Set("input/eraser", effect); }

QString Preferences::BarrelButton() const {
    return settings.value("input/barrelButton", QStringLiteral("pan")).toString();
}
void Preferences::SetBarrelButton(const QString& effect) { Set("input/barrelButton", effect); }

bool Preferences::ShowsWelcome() const { return settings.value("window/welcome", true).toBool(); }
void Preferences::SetShowsWelcome(bool shows) { Set("window/welcome", shows); }

void Preferences::Prepend(const QString& key, const QString& entry) {
    QStringList list = settings.value(key).toStringList();
    list.removeAll(entry);
    list.prepend(entry);
    while (list.size() > maxRecent) list.removeLast();
    settings.setValue(key, list);
}

QStringList Preferences::RecentFiles() const {
    return settings.value("files/recent").toStringList();
}

void Preferences::AddRecentFile(const QString& path) {
    Prepend("files/recent", QFileInfo(path).absoluteFilePath());
    Q_EMIT RecentFilesChanged();
}

void Preferences::ClearRecentFiles() {
    settings.remove("files/recent");
    Q_EMIT RecentFilesChanged();
}

QStringList Preferences::RecentStamps() const {
    return settings.value("stamps/recent").toStringList();
}

void Preferences::AddRecentStamp(const QString& path) {
    Prepend("stamps/recent", path);
    Q_EMIT RecentStampsChanged();
}

QString Preferences::LastFolder(const QString& purpose) const {
    return settings.value("folders/" + purpose, QDir::homePath()).toString();
}
void Preferences::SetLastFolder(const QString& purpose, const QString& folder) {
    settings.setValue("folders/" + purpose, folder);
}

QByteArray Preferences::Layout(const QString& name) const {
    return settings.value("layout/" + name).toByteArray();
}
void Preferences::SetLayout(const QString& name, const QByteArray& state) {
    settings.setValue("layout/" + name, state);
}

}  // namespace trovik::studio
