// SPDX-License-Identifier: Apache-2.0
#include "commands/ToolCatalogue.h"

#include "resources/Icons.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace trovik::studio {

const std::vector<ToolAppearance>& KnownTools() {
    static const std::vector<ToolAppearance> tools = [] {
        InitResources();
        std::vector<ToolAppearance> read;
        QFile file(QStringLiteral(":/studio/tools.json"));
        if (!file.open(QIODevice::ReadOnly)) return read;
        for (const QJsonValue& row : QJsonDocument::fromJson(file.readAll()).array()) {
            const QByteArray description = row[QLatin1String("description")].toString().toUtf8();
            read.push_back({row[QLatin1String("name")].toString(),
                            row[QLatin1String("icon")].toString(),
                            QKeySequence(row[QLatin1String("key")].toString()),
                            QCoreApplication::translate("ToolCatalogue", description.constData())});
        }
        return read;
    }();
    return tools;
}

ToolAppearance AppearanceOf(const QString& toolName) {
    for (const ToolAppearance& tool : KnownTools())
        if (tool.name == toolName) return tool;
    return {toolName,
            QStringLiteral("tool"),
            {},
            QCoreApplication::translate("ToolCatalogue", "A tool of the brush.")};
}

}  // namespace trovik::studio
