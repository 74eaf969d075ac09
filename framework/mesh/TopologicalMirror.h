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

/// Which corner of which face lies across the mirror, by how the faces hang together and not by
/// where they are: a figure that was modelled symmetric keeps its mirror in any pose.
///
/// A mirror turns faces over: where face f lies across from face g, corner k of f lies across from
/// corner (shift - k) mod n of g, and the other way round with the same shift. The children of a
/// quad inherit its shift, since child k stands at corner k; so level 0 tells about all levels, and
/// what is stored is one number per face of level 0.
class TROVIK_API TopologicalMirror {
public:
    /// Finds the mirror of a mesh. `base` is level 0; its present positions tell which of several
    /// possible mirrors is meant: the one that comes closest to a reflection in the plane through
    /// the origin across `axis`, 0 x, 1 y, 2 z; what is told of x below is told of that axis.
    ///
    /// A map that would turn front to back or top to bottom instead of left to right is no mirror
    /// in this sense, whatever the faces say.
    ///
    /// Seeds are pairs of faces across an edge, and faces across from themselves, that look like
    /// each other's reflection, the best first; from a seed the map follows by walking to
    /// neighbours, and is dropped at the first contradiction. Separate parts of a mesh are their
    /// own mirror image or each other's. A part without a mirror image is left out.
    /// \return null when no part has a mirror image.
    /// Cost: O(faces) when the best seed is right, at most some hundred times that, and O(parts^2);
    /// about 20 bytes
    /// per face and 12 per vertex while it runs.
    /// \throw Cancelled.
    static std::unique_ptr<TopologicalMirror> Find(LevelMesh& base,
                                                   int axis = 0,
                                                   JobControl* job = nullptr);

    struct Corner {
        uint32_t face;
        uint32_t corner;
    };
    /// The corner across from a corner of a face of level `level`; none in a part of the mesh that
    /// has no mirror image. Cost: O(level).
    std::optional<Corner> Across(uint32_t level, uint32_t face, uint32_t corner) const;

    /// Per face of level 0: the face across * 4 + shift, or openBorder; for who stores a mirror.
    const std::vector<uint32_t>& Images() const { return images; }
    /// The mirror that such a list told. \return null when it is none of this base: another number
    /// of faces, or faces that are not each other's image.
    static std::unique_ptr<TopologicalMirror> FromImages(const LevelMesh& base,
                                                         std::vector<uint32_t> images);

    /// True when every face has a mirror image.
    bool IsWhole() const;

private:
    friend class TopologicalMirrorSearch;
    /// Corners per face of level 0.
    uint32_t baseCorners = 4;
    /// Per face of level 0: face across * 4 + shift, or openBorder.
    std::vector<uint32_t> images;
};

}  // namespace trovik
