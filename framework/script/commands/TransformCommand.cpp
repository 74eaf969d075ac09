// SPDX-License-Identifier: Apache-2.0
#include "framework/script/Command.h"
#include "framework/script/commands/TransformParameters.h"

namespace trovik {

namespace {

void Transform(CommandContext& context, const TransformParameters& parameters) {
    context.document.SetTransform(TransformOf(parameters));
}

const CommandRegistration<TransformParameters> transform({.name = "transform"},
                                                         Transform,
                                                         Transform);

}  // namespace

}  // namespace trovik
