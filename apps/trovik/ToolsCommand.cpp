// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "JsonOutput.h"
#include "framework/nodes/PlainText.h"
#include "framework/pluginhost/PluginLoader.h"
#include "framework/script/ToolSettings.h"

#include <QRegularExpression>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <utility>

namespace trovik {

namespace {

/// Returns the text of a tool's tooltip as plain text, without the heading, which is printed
/// separately.
std::string PlainHelp(const BrushConfiguration& tool) {
    QString text = tool.ToolTip();
    const qsizetype body = text.indexOf(QStringLiteral("</div>"));
    if (body >= 0) text = text.mid(body + 6);
    text.replace(QRegularExpression(QStringLiteral("\\$\\{SHORTCUT:[^}]*\\}")),
                 QStringLiteral("invert"));
    return PlainText(std::move(text));
}

std::string NameOf(const ToolDescription& described) {
    return described.tool->Name().toStdString();
}

std::string ValueText(const nlohmann::json& value) {
    if (value.is_null()) return "none";
    if (value.is_boolean()) return value.get<bool>() ? "on" : "off";
    if (value.is_number_float()) {
        // Prints integers without a fraction.
        char text[32];
        std::snprintf(text, sizeof text, "%.9g", value.get<double>());
        return text;
    }
    return value.is_string() ? value.get<std::string>() : value.dump();
}

/// Returns the accepted values as text, such as "0 to 100", "above 0" or "tool, upright, stroke,
/// start"; empty if there are no limits.
std::string RangeText(const nlohmann::json& range) {
    if (range.contains("choices")) {
        std::string words;
        for (const auto& word : range.at("choices"))
            words += (words.empty() ? "" : ", ") + ValueText(word);
        return words;
    }
    if (range.value("type", nlohmann::json()) == "boolean") return "on, off";
    std::string text;
    if (range.contains("minimum")) text = ValueText(range.at("minimum"));
    if (range.contains("exclusiveMinimum"))
        text = "above " + ValueText(range.at("exclusiveMinimum"));
    const char* highest = range.contains("maximum") ? "maximum" : "exclusiveMaximum";
    if (!range.contains(highest))
        return text.rfind("above", 0) == 0 || text.empty() ? text : text + " or more";
    return text + (text.empty() ? "up to " : " to ") + ValueText(range.at(highest));
}

/// Returns the limits and the unit of a setting, such as "above 0 world units"; either part may be
/// missing.
std::string LimitsText(const ToolSetting& setting) {
    const std::string range = RangeText(setting.range);
    return range + (range.empty() || setting.unit.empty() ? "" : " ") + setting.unit;
}

std::string Listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
}

/// Returns the defaults of a setting, such as "15; Smooth, Freeze: 100": the default of most tools,
/// followed by the other defaults with their tools.
std::string DefaultsText(const std::vector<ToolDescription>& tools, std::size_t setting) {
    std::map<std::string, std::vector<std::string>> toolsOfValue;
    std::vector<std::string> without, having;
    for (const ToolDescription& described : tools) {
        const ToolSetting& one = described.settings[setting];
        (one.applies ? having : without).push_back(NameOf(described));
        if (one.applies) toolsOfValue[ValueText(one.value)].push_back(NameOf(described));
    }
    const auto usual = std::max_element(
        toolsOfValue.begin(), toolsOfValue.end(), [](const auto& a, const auto& b) {
            return a.second.size() < b.second.size();
        });
    std::string text = usual == toolsOfValue.end() ? std::string() : usual->first;
    for (auto other = toolsOfValue.begin(); other != toolsOfValue.end(); ++other)
        if (other != usual) text += "; " + Listed(other->second) + ": " + other->first;
    if (without.empty()) return text;
    return text + (having.size() < without.size() ? "; only " + Listed(having)
                                                  : "; not " + Listed(without));
}

/// Prints one row per setting, because most defaults are the same for most tools.
void PrintSettings(const std::vector<ToolDescription>& tools) {
    const std::vector<ToolSetting>& settings = tools.front().settings;
    std::vector<std::string> limits;
    std::size_t nameWidth = 0;
    for (const ToolSetting& setting : settings) {
        limits.push_back(LimitsText(setting));
        nameWidth = std::max(nameWidth, setting.name.size());
    }
    std::printf(
        "\nSettings of the step \"set\": default (with exceptions by tool), range and unit\n");
    for (std::size_t i = 0; i < settings.size(); ++i) {
        std::printf("  %-*s  %s%s\n",
                    static_cast<int>(nameWidth),
                    settings[i].name.c_str(),
                    DefaultsText(tools, i).c_str(),
                    limits[i].empty() ? "" : (" (" + limits[i] + ")").c_str());
    }
}

nlohmann::json SettingsJson(const ToolDescription& described) {
    nlohmann::json list = nlohmann::json::array();
    for (const ToolSetting& setting : described.settings) {
        if (!setting.applies) continue;
        nlohmann::json entry = setting.range;
        entry["name"] = setting.name;
        entry["default"] = setting.value;
        entry["unit"] = setting.unit;
        list.push_back(std::move(entry));
    }
    return list;
}

void ListTools(bool json, bool quiet) {
    LoadPlugins();
    const std::vector<ToolDescription> tools = DescribeTools();
    std::size_t nameWidth = 0;
    for (const ToolDescription& described : tools)
        nameWidth = std::max(nameWidth, NameOf(described).size());
    nlohmann::json list = nlohmann::json::array();
    for (const ToolDescription& described : tools) {
        const std::string help = PlainHelp(*described.tool);
        if (json) {
            list.push_back({{"id", described.tool->ID()},
                            {"name", NameOf(described)},
                            {"help", help},
                            {"settings", SettingsJson(described)}});
        } else if (!quiet) {
            std::printf(
                "%-*s  %s\n", static_cast<int>(nameWidth), NameOf(described).c_str(), help.c_str());
        }
    }
    if (json)
        PrintJson(list);
    else if (!quiet)
        PrintSettings(tools);
}

}  // namespace

void AddToolsCommand(CLI::App& program) {
    auto json = std::make_shared<bool>(false);
    auto quiet = std::make_shared<bool>(false);
    CLI::App* verb = program.add_subcommand(
        "tools", "Lists the brush's tools and their settings, with default, range and unit");
    verb->add_flag("--json", *json, "Prints JSON on standard output");
    verb->add_flag("-q,--quiet",
                   *quiet,
                   "Prints nothing; the exit status indicates whether the brush was found");
    verb->callback([json, quiet] { ListTools(*json, *quiet); });
}

}  // namespace trovik
