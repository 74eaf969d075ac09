// SPDX-License-Identifier: Apache-2.0
#include "commands/Keymap.h"

#include "commands/ActionRegistry.h"
#include "resources/Icons.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

#include <utility>

namespace trovik::studio {

namespace {

/// \return an error, or empty.
QString ReadKeys(const QJsonObject& object, Keymap::Keys& keys) {
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        if (!entry.value().isArray())
            return Keymap::tr("/keys/%1: expected a list of keys").arg(entry.key());
        QList<QKeySequence> list;
        const QJsonArray texts = entry.value().toArray();
        for (const auto& value : texts) {
            const auto key = QKeySequence::fromString(value.toString(), QKeySequence::PortableText);
            if (key.isEmpty() || key[0].key() == Qt::Key_unknown)
                return Keymap::tr("/keys/%1: \"%2\" is not a key")
                    .arg(entry.key(), value.toVariant().toString());
            list.append(key);
        }
        keys[entry.key()] = list;
    }
    return {};
}

}  // namespace

Keymap::Keymap(ActionRegistry& registry, const QString& path, QObject* parent)
    : QObject(parent), actions(registry) {
    SetPreset(Presets().first());
    // The path is set only after SetPreset, so that the user's file is not replaced before Load
    // reads it.
    userPath = path;
    connect(&actions, &ActionRegistry::Added, this, [this](const QString& id) {
        const auto found = own.find(id);
        if (found != own.end())
            actions.SetKeys(id, found->second);
        else if (presetKeys.contains(id))
            actions.SetKeys(id, presetKeys.at(id));
    });
}

QStringList Keymap::Presets() {
    return {QStringLiteral("default"), QStringLiteral("alt-drag"), QStringLiteral("pen")};
}

QString Keymap::PresetTitle(const QString& name) {
    if (name == QLatin1String("alt-drag")) return tr("Alt-drag");
    if (name == QLatin1String("pen")) return tr("Pen");
    return tr("Default");
}

void Keymap::SetPreset(const QString& name) {
    InitResources();
    preset = Presets().contains(name) ? name : Presets().first();
    presetKeys.clear();
    own.clear();
    QFile file(QStringLiteral(":/studio/keymaps/%1.json").arg(preset));
    if (file.open(QIODevice::ReadOnly)) {
        const QJsonObject read = QJsonDocument::fromJson(file.readAll()).object();
        ReadKeys(read.value(QLatin1String("keys")).toObject(), presetKeys);
    }
    BindAll();
    Store();
}

void Keymap::BindAll() {
    actions.SetQuiet(true);
    actions.ResetKeys();
    for (const auto& [id, keys] : presetKeys) actions.SetKeys(id, keys);
    for (const auto& [id, keys] : own) actions.SetKeys(id, keys);
    actions.SetQuiet(false);
}

QList<QKeySequence> Keymap::PresetKeys(const QString& id) const {
    const auto found = presetKeys.find(id);
    if (found != presetKeys.end()) return found->second;
    const ActionInfo* info = actions.Info(id);
    if (info == nullptr) return {};
    QList<QKeySequence> keys = info->keys;
    // A preset may assign one action's default key to another action.
    for (const auto& [other, taken] : presetKeys)
        for (const QKeySequence& key : taken) keys.removeAll(key);
    return keys;
}

QStringList Keymap::Bind(const QString& id, const QList<QKeySequence>& keys) {
    QStringList losers = actions.SetKeys(id, keys);
    QStringList touched = losers;
    touched.append(id);
    for (const QString& changed : touched) {
        const QList<QKeySequence> bound = actions.Keys(changed);
        if (bound == PresetKeys(changed))
            own.erase(changed);
        else
            own[changed] = bound;
    }
    Store();
    return losers;
}

QStringList Keymap::Reset(const QString& id) { return Bind(id, PresetKeys(id)); }

bool Keymap::IsChanged(const QString& id) const { return actions.Keys(id) != PresetKeys(id); }

QJsonObject Keymap::ToJson() const {
    QJsonObject keys;
    for (const auto& [id, list] : own) {
        QJsonArray texts;
        for (const QKeySequence& key : list) texts.append(key.toString(QKeySequence::PortableText));
        keys[id] = texts;
    }
    return {{QStringLiteral("format"), QStringLiteral("trovik-keymap")},
            {QStringLiteral("version"), 1},
            {QStringLiteral("preset"), preset},
            {QStringLiteral("keys"), keys}};
}

QString Keymap::FromJson(const QString& path, const QByteArray& text) {
    QJsonParseError fault;
    const QJsonObject read = QJsonDocument::fromJson(text, &fault).object();
    if (fault.error != QJsonParseError::NoError)
        return tr("%1: byte %2: %3").arg(path).arg(fault.offset).arg(fault.errorString());
    if (read.value(QLatin1String("format")).toString() != QLatin1String("trovik-keymap"))
        return tr("%1: /format: expected \"trovik-keymap\"").arg(path);
    if (read.value(QLatin1String("version")).toInt() != 1)
        return tr("%1: /version: expected 1, got %2")
            .arg(path, read.value(QLatin1String("version")).toVariant().toString());
    const QString name = read.value(QLatin1String("preset")).toString();
    if (!Presets().contains(name))
        return tr("%1: /preset: expected one of %2, got \"%3\"")
            .arg(path, Presets().join(QStringLiteral(", ")), name);
    Keys keys;
    const QString error = ReadKeys(read.value(QLatin1String("keys")).toObject(), keys);
    if (!error.isEmpty()) return path + QStringLiteral(": ") + error;
    const QString kept = std::exchange(userPath, QString());
    SetPreset(name);
    userPath = kept;
    own = keys;
    BindAll();
    return {};
}

QString Keymap::Load() {
    if (userPath.isEmpty() || !QFileInfo::exists(userPath)) return {};
    QFile file(userPath);
    if (!file.open(QIODevice::ReadOnly)) return userPath + ": " + file.errorString();
    return FromJson(userPath, file.readAll());
}

QString Keymap::Import(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return path + ": " + file.errorString();
    QString error = FromJson(path, file.readAll());
    if (error.isEmpty()) Store();
    return error;
}

QString Keymap::Export(const QString& path) const { return Write(path); }

QString Keymap::Write(const QString& path) const {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(ToJson()).toJson()) < 0 ||
        !file.commit())
        return path + ": " + file.errorString();
    return {};
}

void Keymap::Store() {
    // If there is no file, the preset "default" is used without changes, so this state need not be
    // stored.
    if (userPath.isEmpty()) return;
    if (own.empty() && preset == Presets().first() && !QFileInfo::exists(userPath)) return;
    const QString error = Write(userPath);
    if (!error.isEmpty()) Q_EMIT StoreFailed(error);
}

}  // namespace trovik::studio
