// SPDX-License-Identifier: Apache-2.0

/// \file Command "remesh".
#include "framework/remesh/IsotropicRemeshing.h"
#include "framework/script/commands/ReplaceSurface.h"

namespace trovik {

template <>
struct EnumNames<RemeshMode> {
    static constexpr std::pair<const char*, RemeshMode> names[] = {
        {"both", RemeshMode::Both},
        {"refine", RemeshMode::Refine},
        {"coarsen", RemeshMode::Coarsen}};
};

namespace {

struct RemeshParameters {
    IsotropicRemeshing settings;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("edgeLength", settings.edgeLength);
        visit("faces", settings.faces);
        visit("mode", settings.mode);
        visit("keepBorders", settings.kept.borders);
        visit("keepGroups", settings.kept.groups);
        visit("keepUvs", settings.keepsUvs);
        visit("creaseAngle", settings.kept.creaseAngle);
    }
};

void CheckRemesh(CommandContext&, const RemeshParameters& parameters) {
    const IsotropicRemeshing& settings = parameters.settings;
    if (!settings.edgeLength && !settings.faces)
        throw FieldFault("", "needs \"edgeLength\" or \"faces\"");
    if (settings.edgeLength && settings.faces)
        throw FieldFault("/faces", "\"edgeLength\" and \"faces\" exclude each other");
}

void RunRemesh(CommandContext& context, const RemeshParameters& parameters) {
    CheckRemesh(context, parameters);
    ReplaceSurface(context, Remesh(parameters.settings));
}

const CommandRegistration<RemeshParameters> remesh({.name = "remesh"}, RunRemesh, CheckRemesh);

}  // namespace

}  // namespace trovik
