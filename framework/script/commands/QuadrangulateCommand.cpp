// SPDX-License-Identifier: Apache-2.0

/// \file Command "quadrangulate".
#include "framework/remesh/Quadrangulation.h"
#include "framework/script/commands/ReplaceSurface.h"

namespace trovik {

template <>
struct EnumNames<Quadrangulation::Split> {
    static constexpr std::pair<const char*, Quadrangulation::Split> names[] = {
        {"ifNeeded", Quadrangulation::Split::IfNeeded},
        {"always", Quadrangulation::Split::Always},
        {"never", Quadrangulation::Split::Never}};
};

namespace {

struct QuadrangulateParameters {
    Quadrangulation settings;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("split", settings.split);
        visit("maxAngle", settings.maxAngle);
        visit("keepGroups", settings.keepsGroups);
        visit("keepUvs", settings.keepsUvs);
    }
};

void RunQuadrangulate(CommandContext& context, const QuadrangulateParameters& parameters) {
    ReplaceSurface(context, Quadrangulate(parameters.settings));
}

const CommandRegistration<QuadrangulateParameters> quadrangulate({.name = "quadrangulate"},
                                                                 RunQuadrangulate);

}  // namespace

}  // namespace trovik
