// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "JsonOutput.h"
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

void ListTools(bool json, bool quiet) {
    LoadPlugins();
    nlohmann::json list = nlohmann::json::array();
    for (uint32_t i = 0; i < BrushOperation::ConfigurationCount(); ++i) {
        const BrushConfiguration& tool = *BrushOperation::Configuration(i);
        const std::string name = tool.Name().toStdString();
        if (json)
            list.push_back({{"id", tool.ID()}, {"name", name}, {"help", PlainHelp(tool)}});
        else if (!quiet)
            std::printf("%-8s  %s\n", name.c_str(), PlainHelp(tool).c_str());
    }
    if (json) PrintJson(list);
}

}  // namespace

void AddToolsCommand(CLI::App& program) {
    auto json = std::make_shared<bool>(false);
    auto quiet = std::make_shared<bool>(false);
    CLI::App* verb = program.add_subcommand("tools", "Lists the tools of the brush");
    verb->add_flag("--json", *json, "As JSON on standard output");
    verb->add_flag(
        "-q,--quiet", *quiet, "Only tells, by the exit status, whether the brush is found");
    verb->callback([json, quiet] { ListTools(*json, *quiet); });
}

}  // namespace trovik
