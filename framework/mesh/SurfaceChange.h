// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <span>

namespace trovik {

/// The changed patches of one level, which a viewport has to update.
///
/// A patch is a face of level `patchLevel` (at most `level`) with all its descendants in `level`.
/// It contains the vertices at the corners of those faces, so a vertex on a border belongs to every
/// patch around it. Data outside the listed patches has not changed.
struct SurfaceChange {
    enum What : uint8_t {
        Positions = 1,
        Normals = 2,
        /// Freeze amounts.
        Mask = 4,
        /// Hidden faces.
        Visibility = 8,
        /// If `all` is set, the level was replaced, or its faces or vertices were renumbered; all
        /// data must be read again. Otherwise, the listed faces of level 0 were edited in place and
        /// have other vertices or neighbours. The number of faces and vertices may have changed
        /// too: new faces are listed, and faces from the new number on no longer exist.
        Topology = 16
    };

    uint32_t level = 0;
    /// A combination of What.
    uint8_t what = 0;
    uint32_t patchLevel = 0;
    /// Faces of `patchLevel`, without duplicates; valid during the call. Ignored if `all` is set.
    std::span<const uint32_t> patches;
    /// The whole level changed.
    bool all = false;
};

}  // namespace trovik
