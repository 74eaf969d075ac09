// SPDX-License-Identifier: Apache-2.0

/// \file Command "voxelRemesh".
#include "framework/remesh/voxels/VoxelRemesh.h"
#include "framework/script/commands/ReplaceSurface.h"

namespace trovik {

namespace {

struct VoxelRemeshParameters {
    std::optional<float> voxelSize;
    std::optional<uint32_t> faces;
    bool project = false;
    uint32_t levels = 0;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("voxelSize", voxelSize);
        visit("faces", faces);
        visit("project", project);
        visit("levels", levels);
    }
};

void CheckVoxelRemesh(CommandContext&, const VoxelRemeshParameters& parameters) {
    if (parameters.voxelSize.has_value() == parameters.faces.has_value())
        throw FieldFault("", "needs either \"voxelSize\" or \"faces\"");
}

void RunVoxelRemesh(CommandContext& context, const VoxelRemeshParameters& parameters) {
    CheckVoxelRemesh(context, parameters);
    ReplaceSurface(context,
                   RemeshWithVoxels({parameters.voxelSize,
                                     parameters.faces,
                                     parameters.project,
                                     parameters.levels,
                                     context.subdivideBudget}));
}

const CommandRegistration<VoxelRemeshParameters> voxelRemesh({.name = "voxelRemesh"},
                                                             RunVoxelRemesh,
                                                             CheckVoxelRemesh);

}  // namespace

}  // namespace trovik
