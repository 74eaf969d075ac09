// SPDX-License-Identifier: Apache-2.0
#include "panels/SettingCatalogue.h"

#include "panels/SettingRows.h"

#include <QCoreApplication>

#include <map>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(SettingCatalogue)
};

using enum SettingGroup;

double Limit(const nlohmann::json& range, const char* name, const char* exclusive, double none) {
    if (range.contains(name)) return range.at(name).get<double>();
    // The next value above the limit, so that the limit itself cannot be entered.
    if (range.contains(exclusive)) return range.at(exclusive).get<double>() + 1e-6;
    return none;
}

}  // namespace

SettingAppearance AppearanceOf(const ToolSetting& setting) {
    static const SettingRows catalogue = MakeSettingRows();
    const auto found = catalogue.find(setting.name);
    if (found != catalogue.end()) return found->second;
    SettingAppearance row;
    row.label = ChoiceText(QString::fromStdString(setting.name));
    row.description = row.label;
    row.unit = QString::fromStdString(setting.unit);
    return row;
}

QString TitleOf(SettingGroup group) {
    switch (group) {
        case Brush:
            return Text::tr("Brush");
        case Detail:
            return Text::tr("Detail");
        case Pressure:
            return Text::tr("Pressure");
        case Stroke:
            return Text::tr("Stroke");
        case Stamp:
            return Text::tr("Stamp");
        case Advanced:
            return Text::tr("Advanced");
    }
    return {};
}

QString ChoiceText(const QString& value) {
    static const std::map<QString, QString> texts = {{"tool", Text::tr("Tool default")},
                                                     {"upright", Text::tr("Upright")},
                                                     {"stroke", Text::tr("Along the stroke")},
                                                     {"start", Text::tr("As at the start")},
                                                     {"world", Text::tr("World units")},
                                                     {"radius", Text::tr("Brush radius")},
                                                     {"pixels", Text::tr("Screen pixels")},
                                                     {"both", Text::tr("Refine and coarsen")},
                                                     {"refine", Text::tr("Refine only")},
                                                     {"coarsen", Text::tr("Coarsen only")},
                                                     {"cameraToo", Text::tr("Average and view")},
                                                     {"camera", Text::tr("View")},
                                                     {"xy", Text::tr("In plane XY")},
                                                     {"xz", Text::tr("In plane XZ")},
                                                     {"yz", Text::tr("In plane YZ")},
                                                     {"x", Text::tr("X axis")},
                                                     {"y", Text::tr("Y axis")},
                                                     {"z", Text::tr("Z axis")}};
    if (const auto found = texts.find(value); found != texts.end()) return found->second;
    QString text;
    for (const QChar letter : value) {
        if (letter == u'.') {
            text += u' ';
        } else if (letter.isUpper() && !text.isEmpty()) {
            text += u' ';
            text += letter.toLower();
        } else {
            text += text.isEmpty() ? letter.toUpper() : letter;
        }
    }
    return text;
}

ValueSlider::Range SliderRange(const ToolSetting& setting, const SettingAppearance& appearance) {
    ValueSlider::Range range;
    range.least = Limit(setting.range, "minimum", "exclusiveMinimum", -1e6) * appearance.factor;
    range.most = Limit(setting.range, "maximum", "exclusiveMaximum", 1e6) * appearance.factor;
    range.softLeast = appearance.softLeast;
    range.softMost = appearance.softMost;
    range.isLogarithmic = appearance.isLogarithmic;
    range.isWhole = setting.range.value("type", nlohmann::json()) == "integer";
    range.decimals = setting.name == "radius" ? 4 : 2;
    range.unit = appearance.unit;
    return range;
}

nlohmann::json SetStep(const std::string& name, const nlohmann::json& value) {
    const std::size_t dot = name.find('.');
    nlohmann::json set;
    if (dot == std::string::npos)
        set[name] = value;
    else
        set[name.substr(0, dot)][name.substr(dot + 1)] = value;
    return {{"set", set}};
}

}  // namespace trovik::studio
