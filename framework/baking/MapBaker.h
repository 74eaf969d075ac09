// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/MapText.h"
#include "framework/images/ImageFile.h"
#include "framework/multires/LevelGeometry.h"

#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// Options of BakeMap.
struct BakeOptions {
    MapKind kind = MapKind::Displacement;
    /// The space of vectors and normals; not used for scalar displacement.
    MapSpace space = MapSpace::Tangent;
    /// The level whose shape is baked into the map; by default the highest level.
    std::optional<std::uint32_t> from = {};
    /// The level to which the map will be applied; below `from`.
    std::uint32_t to = 0;
    /// Texels, 1 to 16384 each.
    std::uint32_t width = 1024;
    std::uint32_t height = 1024;
    /// Samples per texel: 1, 4 or 16.
    std::uint32_t samples = 4;
    /// Distance in texels up to which uncovered texels next to an island's edge are filled from it;
    /// at most 256.
    std::uint32_t padding = 8;
    /// Whether the texture repeats: faces outside 0 to 1 are wrapped into it, and surfaces that
    /// cross an edge of the map continue at the opposite edge. Without this option such faces are
    /// rejected.
    bool repeat = false;
};

/// One tile of a map.
struct BakedTile {
    /// 1001 for the tile from 0 to 1; see MapTiles.h.
    std::uint32_t number = 1001;
    /// Displacements in the units of the mesh; normals from -1 to 1, not yet encoded.
    FloatImage image;
};

struct BakedMap {
    std::vector<BakedTile> tiles;
    std::uint32_t from = 0;
    std::uint32_t to = 0;
    /// The largest absolute displacement; for vectors, the largest absolute component.
    float range = 0.0f;
    std::uint64_t coveredTexels = 0;
    std::uint64_t paddedTexels = 0;
    std::uint64_t overlappingTexels = 0;
    /// A face of level 0 that overlaps another one on the texture; empty if there is none.
    std::optional<std::uint32_t> overlappingFace = {};
};

/// Bakes the difference between level `from` and level `to` into a map over the UVs of the mesh.
///
/// The map refers to the smooth refinement of level `to`: Catmull-Clark steps up to the vertices of
/// level `from`, without the detail of the levels between. Every vertex of `from` has its
/// counterpart there, so no search is needed. With S and F the positions of a vertex on the smooth
/// surface and on level `from`, in mesh-local units, and its frame given by SurfaceFrames of the
/// smooth surface, a map contains
///
///     Displacement   (F - S) . normal of S
///     Vector         F - S, in the frame (tangent, bitangent, normal), or mesh-local
///     Normal         the normal of F, in the frame or mesh-local
///
/// at the vertices, interpolated linearly between the vertices and the centres of faces, and
/// averaged over the samples of a texel. Texels that no face covers get the value of the nearest
/// point on the edge of a UV island within the padding distance. All others contain no displacement
/// or, in a normal map, the normal of the frame (mesh-local: the zero vector). Where faces overlap
/// on the texture, the one with the lowest number is used.
///
/// The levels are evaluated in the state in which switching to `from` and then to `to` leaves them;
/// afterwards, all of them are restored bit-exactly. No stroke may be open. Cost: O(faces of `from`
/// + samples). Memory: about 150 bytes per vertex of `from`, 4 bytes per texel and channel of each
/// tile, and 8 bytes more per texel of the tile in progress.
/// \param path  of the output file; if it contains `<UDIM>`, there may be several tiles.
/// \throw HostError for levels that do not exist or are in the wrong order, sizes out of range, a
/// mesh without UVs, and UVs outside of tiles; Cancelled. In both cases, nothing has changed.
TROVIK_API BakedMap BakeMap(LevelGeometry& geometry,
                            const BakeOptions& options,
                            const std::string& path,
                            JobControl* job = nullptr);

}  // namespace trovik
