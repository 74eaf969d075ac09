// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelSource.h"
#include "framework/remesh/Decimation.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace trovik {

class JobControl;

/// How an export reduces the number of faces. The sculpture does not change.
struct MeshReduction {
    /// Decimates the exported mesh; see Decimate.
    std::optional<Decimation> decimation = {};
    /// Number of additional files with fewer triangles (levels of detail).
    uint32_t lods = 0;
    /// Number of triangles of a level of detail, as a fraction of the triangles of the previous
    /// one. The first follows the exported mesh.
    float lodRatio = 0.5f;

    bool IsEmpty() const { return !decimation && lods == 0; }
};

/// The most levels of detail that an export writes.
inline constexpr uint32_t maxLods = 16;

/// Returns the file of a level of detail, counted from 1: "folder/mesh.lod1.ply" for
/// "folder/mesh.ply".
TROVIK_API std::string LodPath(const std::string& path, uint32_t lod);

struct ReducedFiles {
    struct Mesh {
        std::string file;
        uint64_t vertices = 0;
        uint64_t faces = 0;
        /// One sentence each.
        std::vector<std::string> warnings = {};
    };
    /// The exported mesh, if it was decimated, then the levels of detail.
    std::vector<Mesh> meshes;
    /// Further files that the format needs; see WriteMeshFile.
    std::vector<std::string> furtherFiles;
    /// Levels of detail that were not written, one sentence each.
    std::vector<std::string> warnings;
};

/// Returns a copy of the current level as level 0, with its attributes, mask and transform, from
/// which ReducedFiles are made. \param includesHidden  whether hidden faces are copied, and visible
/// in the copy. \throw HostError if no face remains; Cancelled.
TROVIK_API std::unique_ptr<LevelGeometry> CopyForReduction(LevelGeometry& geometry,
                                                           bool includesHidden,
                                                           JobControl* job = nullptr);
/// Returns polygons as such a copy. Unless all faces are quads or all are triangles, larger faces
/// are split into triangles. \throw Cancelled.
TROVIK_API std::unique_ptr<LevelGeometry> CopyForReduction(PolygonMesh polygons,
                                                           JobControl* job = nullptr);

/// Writes the decimated mesh, if `reduction` asks for it, to `path`, and the levels of detail to
/// files next to it. All are decimated from `copy`. Masked areas are kept; see Decimate.
/// \param options  the level is ignored.
/// \throw HostError if a file cannot be written, or no faces would remain; Cancelled. The files
/// that are already complete then remain.
TROVIK_API ReducedFiles WriteReduced(const std::string& path,
                                     LevelGeometry& copy,
                                     const MeshReduction& reduction,
                                     const LevelSource::Options& options,
                                     JobControl* job = nullptr);

}  // namespace trovik
