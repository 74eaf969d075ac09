// SPDX-License-Identifier: Apache-2.0

/// \file Command "decimate".
#include "framework/script/commands/DecimateParameters.h"
#include "framework/script/commands/ReplaceSurface.h"

namespace trovik {

namespace {

void CheckDecimate(CommandContext&, const DecimateParameters& parameters) {
    parameters.Settings("");
}

void RunDecimate(CommandContext& context, const DecimateParameters& parameters) {
    ReplaceSurface(context, Decimate(parameters.Settings("")));
}

const CommandRegistration<DecimateParameters> decimate({.name = "decimate"},
                                                       RunDecimate,
                                                       CheckDecimate);

}  // namespace

}  // namespace trovik
