// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SourceSurface.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// \file Operations that replace the mesh, such as decimation and repair. They compute a new mesh
/// from the surface of the current level; this file transfers the mask, colours, face groups,
/// materials, smoothing groups and layers to it.
namespace trovik {

/// Messages of an operation for the user, one clause each.
struct ReplacementReport {
    /// What was done.
    std::vector<std::string> notes;
    /// Data that was lost, and results that do not match the request.
    std::vector<std::string> warnings;
};

/// The mesh that an operation has computed.
struct NewSurface {
    /// Marks an element without a source.
    static constexpr uint32_t none = 0xffffffffu;
    /// Marks an element that is not part of the old surface and has its own data: that in the
    /// attributes of `mesh`, no mask, and no layers.
    static constexpr uint32_t own = 0xfffffffeu;

    /// Mesh-local positions and faces. If the faces are neither all quads nor all triangles, each
    /// of them is split into quads around its centre, and a warning reports it. Of the attributes,
    /// only UVs, and the data of elements whose source is `own`, are read; everything else is
    /// transferred. Groups and materials with the same name as an old one become part of it.
    PolygonMesh mesh;
    /// For each vertex, the vertex of the old surface from which it copies its data, or `none`, or
    /// `own`. The list may be shorter than that of the vertices. Data of vertices without a source
    /// is interpolated at the nearest point of the old surface.
    std::vector<uint32_t> vertexSources;
    /// The same for faces. A face without a source gets the data of the old face that is nearest to
    /// its centre.
    std::vector<uint32_t> faceSources;
    /// Called with the new geometry before the mask and the layers are transferred to its bound
    /// level; may add levels and move vertices. May be empty. If it adds levels, there must be no
    /// vertex sources. Throws HostError; Cancelled.
    std::function<void(LevelGeometry& geometry, JobControl* job)> complete;
    ReplacementReport report;
    /// Set if the operation has nothing to change; the other members are then ignored, except
    /// `report`.
    bool isUnchanged = false;
};

/// An operation that replaces the mesh.
struct SurfaceOperation {
    /// Label of the undo step.
    std::string label;
    /// Computes the new mesh. Throws HostError if that is not possible; Cancelled.
    std::function<NewSurface(SourceSurface& source, JobControl* job)> make;
};

/// A geometry for ReplaceLevelsAsStep.
struct SurfaceReplacement {
    /// Null if the operation changes nothing.
    std::unique_ptr<LevelGeometry> geometry;
    /// That of the operation, and warnings of data that cannot be transferred.
    ReplacementReport report;
};

/// Returns what replacing the mesh would lose, one sentence each: UVs, unless `keepsUvs` is set,
/// layers of other levels, and the detail of higher levels.
TROVIK_API std::vector<std::string> LossesOfReplacement(const LevelGeometry& geometry,
                                                        bool keepsUvs);

/// Runs an operation and transfers all data to the new mesh. The geometry does not change.
///
/// - Mask amounts and colours are interpolated at the nearest point of the old surface.
/// - Faces get the group, material and smoothing group of the nearest face.
/// - The layers of the current level are interpolated, and get the same names and properties.
/// - If the geometry has a topological mirror, one is computed for the new mesh.
///
/// \throw HostError if faces are hidden, or if the operation fails; Cancelled.
TROVIK_API SurfaceReplacement MakeReplacement(LevelGeometry& geometry,
                                              const SurfaceOperation& operation,
                                              JobControl* job = nullptr);

}  // namespace trovik
