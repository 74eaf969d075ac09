// SPDX-License-Identifier: Apache-2.0

/// \file Command "extract".
#include "framework/remesh/MaskExtraction.h"
#include "framework/script/commands/ReplaceSurface.h"

namespace trovik {

template <>
struct EnumNames<MaskExtraction::Side> {
    static constexpr std::pair<const char*, MaskExtraction::Side> names[] = {
        {"outside", MaskExtraction::Side::Outside},
        {"inside", MaskExtraction::Side::Inside},
        {"both", MaskExtraction::Side::Both}};
};

namespace {

struct ExtractParameters {
    MaskExtraction settings;
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
    MaskExtraction settings = parameters.settings;
    settings.group = parameters.group.value_or("");
    ReplaceSurface(context, ExtractMasked(settings));
}

const CommandRegistration<ExtractParameters> extract({.name = "extract"}, Extract);

}  // namespace

}  // namespace trovik
