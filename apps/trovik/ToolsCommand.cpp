// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "framework/plugins/PluginLoader.h"
#include "host/BrushOperation.h"

#include <QRegularExpression>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>

namespace trovik {

namespace {

/// A tool tip's help as plain text: the heading is told already, and a terminal shows no markup.
std::string PlainHelp(const BrushConfiguration& tool) {
    QString text = tool.ToolTip();
    const qsizetype body = text.indexOf(QStringLiteral("</div>"));
    if (body >= 0) text = text.mid(body + 6);
    text.replace(QRegularExpression(QStringLiteral("\\$\\{SHORTCUT:[^}]*\\}")),
                 QStringLiteral("invert"));
    text.replace(QRegularExpression(QStringLiteral("<[^>]*>")), QStringLiteral(" "));
    return text.simplified().toStdString();
}

void ListTools(bool json) {
    LoadPlugins();
    nlohmann::json list = nlohmann::json::array();
    for (uint32_t i = 0; i < BrushOperation::ConfigurationCount(); ++i) {
        const BrushConfiguration& tool = *BrushOperation::Configuration(i);
        const std::string name = tool.Name().toStdString();
        if (json)
            list.push_back({{"id", tool.ID()}, {"name", name}, {"help", PlainHelp(tool)}});
        else
            std::printf("%-8s  %s\n", name.c_str(), PlainHelp(tool).c_str());
    }
    if (json) std::printf("%s\n", list.dump(2).c_str());
}

}  // namespace

void AddToolsCommand(CLI::App& program) {
    auto json = std::make_shared<bool>(false);
    CLI::App* verb = program.add_subcommand("tools", "Lists the tools of the brush");
    verb->add_flag("--json", *json, "As JSON");
    verb->callback([json] { ListTools(*json); });
}

}  // namespace trovik
