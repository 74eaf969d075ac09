// SPDX-License-Identifier: Apache-2.0

/// \file Command "extract".
#include "framework/remesh/ShellExtraction.h"
#include "framework/script/commands/ReplaceSurface.h"

namespace trovik {

template <>
struct EnumNames<ShellExtraction::Side> {
    static constexpr std::pair<const char*, ShellExtraction::Side> names[] = {
        {"outside", ShellExtraction::Side::Outside},
        {"inside", ShellExtraction::Side::Inside},
        {"both", ShellExtraction::Side::Both}};
};

namespace {

struct ExtractParameters {
    ShellExtraction settings;
    std::optional<std::string> group;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("thickness", settings.thickness);
        visit("side", settings.side);
        visit("threshold", settings.threshold);
        visit("smoothBorder", settings.smoothIterations);
        visit("replace", settings.replaces);
        visit("group", group);
    }
};

void Extract(CommandContext& context, const ExtractParameters& parameters) {
    ShellExtraction settings = parameters.settings;
    settings.group = parameters.group.value_or("");
    ReplaceSurface(context, ExtractShell(settings));
}

const CommandRegistration<ExtractParameters> extract({.name = "extract"}, Extract);

}  // namespace

}  // namespace trovik
