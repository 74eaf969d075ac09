// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QKeySequence>
#include <QString>

#include <vector>

namespace trovik::studio {

/// The presentation of a tool.
struct ToolAppearance {
    /// Name in steps.
    QString name;
    /// Icon and default key; a generic icon and no key for tools that are not in the list.
    QString icon;
    QKeySequence key;
    /// One or two sentences that describe its effect.
    QString description;
};

/// The name of a tool as applications show it: "ElasticGrab" is shown as "Elastic Grab".
QString LabelOfTool(const QString& toolName);
/// The tools that the host describes, in the order of HostTools.
const std::vector<ToolAppearance>& KnownTools();
/// The presentation of any tool.
ToolAppearance AppearanceOf(const QString& toolName);

}  // namespace trovik::studio
