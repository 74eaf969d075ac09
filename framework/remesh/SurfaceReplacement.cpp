// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/SurfaceReplacement.h"

#include "framework/errors/HostError.h"
#include "framework/layers/LayerStack.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/remesh/FaceSplitting.h"
#include "framework/remesh/SurfaceTransfer.h"

#include <algorithm>
#include <iterator>

namespace trovik {

namespace {

std::string Count(std::size_t count, const char* one, const char* several) {
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

/// Splits the faces of a mesh that level 0 cannot store into quads.
void MakeUniform(NewSurface& made, JobControl* job) {
    if (HasUniformFaces(made.mesh)) return;
    SplitIntoFlatQuads(made, job);
    made.report.warnings.push_back(
        "the new mesh had triangles and quads, so each face was split into quads: " +
        std::to_string(made.mesh.faceSizes.size()) + " faces");
}

}  // namespace

std::vector<std::string> LossesOfReplacement(const LevelGeometry& geometry, bool keepsUvs) {
    std::vector<std::string> losses;
    if (!keepsUvs && !geometry.Attributes().cornerUvs.empty())
        losses.push_back("the texture coordinates are not kept");
    std::string names;
    for (const auto& layer : geometry.Layers().All()) {
        if (layer->Level() == geometry.Bound() || !geometry.Holds(layer->Level())) continue;
        names += (names.empty() ? "\"" : ", \"") + layer->Name() + "\"";
    }
    if (!names.empty())
        losses.push_back("layers of other levels become part of the surface or are dropped: " +
                         names);
    const uint32_t higher = geometry.LevelCount() - 1 - geometry.BoundIndex();
    if (higher > 0) {
        losses.push_back("the detail of " + Count(higher, "level", "levels") +
                         " above the current one is dropped");
    }
    return losses;
}

SurfaceReplacement MakeReplacement(LevelGeometry& geometry,
                                   const SurfaceOperation& operation,
                                   JobControl* job) {
    geometry.RefuseInStroke("replacing the mesh");
    if (geometry.Bound()->HiddenFaceCount() > 0) {
        throw HostError(Count(geometry.Bound()->HiddenFaceCount(), "face is", "faces are") +
                        " hidden, and hidden faces cannot be transferred to a new mesh; show all "
                        "faces first");
    }
    SourceSurface source(geometry);
    NewSurface made = operation.make(source, job);
    SurfaceReplacement replacement;
    if (made.isUnchanged) {
        replacement.report = std::move(made.report);
        return replacement;
    }
    if (made.mesh.faceSizes.empty()) throw HostError("no faces would remain");
    const ManifoldReport manifold = MakeOrientedManifold(made.mesh, job);
    MakeUniform(made, job);
    replacement.report = std::move(made.report);
    std::vector<std::string>& warnings = replacement.report.warnings;
    std::ranges::move(LossesOfReplacement(geometry, !made.mesh.attributes.cornerUvs.empty()),
                      std::back_inserter(warnings));
    if (!manifold.Untouched()) {
        warnings.push_back("the new mesh was split at " +
                           Count(manifold.splitVertices, "vertex", "vertices") +
                           " where it was not an oriented manifold, which adds open borders");
    }
    TransferAttributes(source, made, job);
    made.mesh.name = geometry.Level(0)->Name().toStdString();
    replacement.geometry = std::make_unique<LevelGeometry>(made.mesh, job);
    LevelGeometry& target = *replacement.geometry;
    if (made.complete) made.complete(target, job);
    TransferMask(source, made.vertexSources, target, job);
    TransferLayers(source, made.vertexSources, target, job);
    if (geometry.Mirror() != nullptr && !target.FindMirror(job)) {
        warnings.push_back("the new mesh has no topological mirror, so strokes are not mirrored");
    }
    return replacement;
}

}  // namespace trovik
