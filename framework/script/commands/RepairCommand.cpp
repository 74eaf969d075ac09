// SPDX-License-Identifier: Apache-2.0

/// \file Command "repair".
#include "framework/remesh/MeshRepair.h"
#include "framework/script/commands/ReplaceSurface.h"

namespace trovik {

template <>
struct EnumNames<HoleFill> {
    static constexpr std::pair<const char*, HoleFill> names[] = {
        {"none", HoleFill::None}, {"flat", HoleFill::Flat}, {"smooth", HoleFill::Smooth}};
};

namespace {

struct RepairParameters {
    MeshRepair settings;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("weld", settings.weld);
        visit("clean", settings.cleans);
        visit("minPieceFaces", settings.minPieceFaces);
        visit("minPieceShare", settings.minPieceShare);
        visit("orient", settings.orients);
        visit("fillHoles", settings.holes);
        visit("maxHoleEdges", settings.maxHoleEdges);
    }
};

void RunRepair(CommandContext& context, const RepairParameters& parameters) {
    ReplaceSurface(context, RepairMesh(parameters.settings));
}

const CommandRegistration<RepairParameters> repair({.name = "repair"}, RunRepair);

}  // namespace

}  // namespace trovik
