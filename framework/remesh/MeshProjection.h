// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"

#include <cstdint>
#include <string>

namespace trovik {

class JobControl;

/// Settings of a projection onto the surface of a mesh file.
struct MeshProjection {
    /// Which point of the file's surface each vertex moves to.
    enum class Direction {
        Nearest,
        /// The nearest intersection with the line along the normal of the vertex. If there is none,
        /// the nearest point.
        Normal
    };

    /// A mesh file in any format that can be imported.
    std::string path;
    /// Largest distance between a vertex and its point, in world units.
    float distance = 0.0f;
    Direction direction = Direction::Nearest;
    /// Whether the file's vertex colours are transferred, too.
    bool takesColors = false;
    /// Whether the file is in world space; otherwise, it is in mesh-local space. In both cases,
    /// units and up axis are converted if they are known.
    bool isWorld = false;
};

struct ProjectionResult {
    /// Number of vertices of the bound level that moved.
    uint32_t moved = 0;
    /// Number of vertices of level 0 whose colour has changed.
    uint32_t colored = 0;
};

/// Moves the vertices of the bound level onto the surface of a mesh file, as one undo step.
///
/// - A vertex within half of `distance` moves to its point exactly. From there to `distance`, the
///   fraction of the displacement decreases smoothly to 0, so that the border of the changed area
///   is not visible. Parts of the file's surface that face away from the vertex have no effect.
/// - Beyond an open border of the file's surface, a vertex moves along its normal only, so that
///   vertices do not crowd at the border.
/// - The mask reduces the displacement and the change of the colour. If a layer is active, the
///   displacement is recorded in it. The detail of higher levels is kept, as with a stroke.
/// - Colours are interpolated at the vertices of level 0. A mesh without colours is white at first.
///
/// If nothing changes, there is no undo step.
/// \throw HostError, with nothing changed, if the file cannot be read or, with `takesColors`, has
/// no colours, or if the active layer is hidden or locked; Cancelled, with nothing changed.
TROVIK_API ProjectionResult ProjectOntoFile(LevelGeometry& geometry,
                                            const MeshProjection& settings,
                                            JobControl* job = nullptr);

}  // namespace trovik
