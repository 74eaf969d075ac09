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
    /// The space of vectors and normals; unused for scalar displacement.
    MapSpace space = MapSpace::Tangent;
    /// The level whose shape is baked into the map (default: the highest level).
    std::optional<std::uint32_t> from = {};
    /// The level to which the map will be applied; it must be below `from`.
    std::uint32_t to = 0;
    /// Width and height in texels, 1 to 16384 each.
    std::uint32_t width = 1024;
    std::uint32_t height = 1024;
    /// Samples per texel: 1, 4 or 16.
    std::uint32_t samples = 4;
    /// Padding width: uncovered texels within this distance, in texels, from an island's edge are
    /// filled from that edge. At most 256.
    std::uint32_t padding = 8;
    /// Whether the texture repeats: faces outside 0 to 1 are wrapped, and surfaces that cross an
    /// edge of the map wrap around to the opposite edge. Without this option, such faces are
    /// rejected.
    bool repeat = false;
};

/// One tile of a map.
struct BakedTile {
    /// 1001 for the tile from 0 to 1; see MapTiles.h.
    std::uint32_t number = 1001;
    /// Displacements in mesh units; normals from -1 to 1, not yet encoded.
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
    /// A face of level 0 that overlaps another face in the texture; empty if there is none.
    std::optional<std::uint32_t> overlappingFace = {};
};

/// Bakes the difference between level `from` and level `to` into a map, using the mesh's UVs. For
/// displacement maps, see Cook: "Shade Trees" (1984); for normal maps, see Cohen, Olano, Manocha:
/// "Appearance-Preserving Simplification" (1998).
///
/// The reference surface S is level `to`, refined by Catmull-Clark steps to the resolution of level
/// `from` without the detail of the levels in between. Every vertex of `from` has a counterpart on
/// S, so no search is needed. Let S and F also denote the positions of a vertex on the reference
/// surface and on level `from`, in mesh-local units. With the frame that SurfaceFrames computes on
/// the reference surface, a map contains
///
///     Displacement   (F - S) . normal of S
///     Vector         F - S, in the frame (tangent, bitangent, normal), or mesh-local
///     Normal         the normal of F, in the frame or mesh-local
///
/// at the vertices, interpolated linearly between the vertices and the centres of faces, and
/// averaged over the samples of a texel. Uncovered texels within the padding distance of a UV
/// island get the value of the nearest point on the island's edge. All others contain zero
/// displacement or, in a normal map, the frame's normal (mesh-local: the zero vector). Where faces
/// overlap in the texture, the one with the lowest number is used.
///
/// The levels are evaluated in the state that results from switching to `from` and then to `to`;
/// afterwards, all levels are restored bit-exactly. No stroke may be open. Cost: O(faces of `from`
/// + samples). Memory: about 150 bytes per vertex of `from`, 4 bytes per texel and channel of each
/// tile, and 8 more bytes per texel of the current tile.
/// \param path  the path of the output file; if it contains `<UDIM>`, there may be several tiles.
/// \throw HostError for levels that do not exist or are in the wrong order, sizes out of range, a
/// mesh without UVs, and UVs outside the tiles; Cancelled. In both cases, nothing is changed.
TROVIK_API BakedMap BakeMap(LevelGeometry& geometry,
                            const BakeOptions& options,
                            const std::string& path,
                            JobControl* job = nullptr);

}  // namespace trovik
