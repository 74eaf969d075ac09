// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace trovik {

class JobControl;
class LevelMesh;

/// Maps each corner of each face to its mirror image. The map is based on connectivity, not on
/// positions, so a model that was built symmetrically has a mirror in any pose.
///
/// A mirror reverses the order of corners. If face g is the image of face f, corner k of f maps to
/// corner (shift - k) mod n of g, and the inverse map has the same shift. The children of a quad
/// inherit its shift, because child k is at corner k. Level 0 therefore determines the map on all
/// levels, and only one number per level-0 face is stored.
class TROVIK_API TopologicalMirror {
public:
    /// Finds the mirror of a mesh. `base` is level 0. If several mirrors are possible, the one
    /// closest to a reflection is returned, based on the current positions of `base`. The plane of
    /// the reflection passes through the origin and is perpendicular to `axis` (0 is x, 1 is y, 2
    /// is z). The rest of this description assumes x; the other axes are handled in the same way.
    ///
    /// A map that exchanges front and back or top and bottom, rather than left and right, is
    /// rejected even if the connectivity allows it.
    ///
    /// A seed is either a pair of faces that share an edge and are nearly mirror images of each
    /// other, or a single face that is nearly its own mirror image. The best match is tried first.
    /// The map is extended from a seed to the neighbouring faces, and is discarded at the first
    /// contradiction. A connected component maps either to itself or to another component. A
    /// component without a mirror image is omitted.
    /// \return null if no component has a mirror image.
    /// Cost: O(faces) if the first seed is correct, otherwise at most a few hundred times that,
    /// plus O(components^2). Temporary memory: about 20 bytes per face and 12 per vertex.
    /// \throw Cancelled.
    static std::unique_ptr<TopologicalMirror> Find(LevelMesh& base,
                                                   int axis = 0,
                                                   JobControl* job = nullptr);

    struct Corner {
        uint32_t face;
        uint32_t corner;
    };
    /// Returns the mirror image of a face corner on level `level`, or nothing if its component has
    /// no mirror image. Cost: O(level).
    std::optional<Corner> Across(uint32_t level, uint32_t face, uint32_t corner) const;

    /// For each level-0 face: 4 * image face + shift, or openBorder. Use this list to store a
    /// mirror.
    const std::vector<uint32_t>& Images() const { return images; }
    /// Restores a mirror from such a list.
    /// \return null if the list does not fit this base: a different number of faces, or faces that
    /// are not images of each other.
    static std::unique_ptr<TopologicalMirror> FromImages(const LevelMesh& base,
                                                         std::vector<uint32_t> images);

    /// Whether every face has a mirror image.
    bool IsWhole() const;

private:
    friend class TopologicalMirrorSearch;
    /// Number of corners of each level-0 face.
    uint32_t baseCorners = 4;
    /// For each level-0 face: 4 * image face + shift, or openBorder.
    std::vector<uint32_t> images;
};

}  // namespace trovik
