// SPDX-License-Identifier: Apache-2.0
#include "commands/ToolCatalogue.h"

#include "framework/brushes/ToolTraits.h"

#include <QCoreApplication>

namespace trovik::studio {

QString LabelOfTool(const QString& toolName) {
    QString label;
    for (const QChar letter : toolName) {
        if (letter.isUpper() && !label.isEmpty() && label.back().isLower()) label += u' ';
        label += letter;
    }
    return label;
}

const std::vector<ToolAppearance>& KnownTools() {
    static const std::vector<ToolAppearance> tools = [] {
        std::vector<ToolAppearance> known;
        for (const HostTool& tool : HostTools()) {
            known.push_back({QString::fromLatin1(tool.name),
                             QString::fromLatin1(tool.icon),
                             QKeySequence(QString::fromLatin1(tool.key)),
                             QCoreApplication::translate("ToolCatalogue", tool.description)});
        }
        return known;
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
