// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/MapText.h"
#include "framework/images/ImageFile.h"
#include "framework/multires/LevelGeometry.h"

#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// What to bake.
struct BakeOptions {
    MapKind kind = MapKind::Displacement;
    /// Of vectors and normals; a scalar displacement has none.
    MapSpace space = MapSpace::Tangent;
    /// The level whose shape goes into the map; without, the highest.
    std::optional<std::uint32_t> from = {};
    /// The level that the map is for; below `from`.
    std::uint32_t to = 0;
    /// Texels, 1 to 16384 each.
    std::uint32_t width = 1024;
    std::uint32_t height = 1024;
    /// Per texel: 1, 4 or 16.
    std::uint32_t samples = 4;
    /// Texels beside a surface's edge that are filled from it; at most 256.
    std::uint32_t padding = 8;
    /// The texture repeats: faces outside 0 to 1 are laid where they come to lie inside, and what
    /// crosses an edge of the map goes on at the opposite one. Without, they are refused.
    bool repeat = false;
};

/// One tile of a map.
struct BakedTile {
    /// 1001 for the one from 0 to 1; see MapTiles.h.
    std::uint32_t number = 1001;
    /// Displacements in the units of the mesh; normals from -1 to 1, not yet coded.
    FloatImage image;
};

struct BakedMap {
    std::vector<BakedTile> tiles;
    std::uint32_t from = 0;
    std::uint32_t to = 0;
    /// The largest displacement, of vectors the largest component, as a size.
    float range = 0.0f;
    std::uint64_t coveredTexels = 0;
    std::uint64_t paddedTexels = 0;
    std::uint64_t overlappingTexels = 0;
    /// A face of level 0 that lies over another one on the texture, where there is one.
    std::optional<std::uint32_t> overlappingFace = {};
};

/// Bakes how level `from` differs from level `to` into a map over the UVs of the mesh.
///
/// The surface that the map is for is the smooth refinement of level `to`: Catmull-Clark steps up
/// to the vertices of level `from`, without the detail of the levels between. Every vertex of
/// `from` has its counterpart there, so nothing is searched. With S and F the positions of a vertex
/// on the smooth surface and on level `from`, in mesh-local units, and the frame at it by
/// SurfaceFrames of the smooth surface, a map holds
///
///     Displacement   (F - S) . normal of S
///     Vector         F - S, in the frame (tangent, bitangent, normal), or mesh-local
///     Normal         the normal of F, in the frame or mesh-local
///
/// at the vertices, linear between them and the middles of faces, and averaged over the samples of
/// a texel. Texels that no face covers take the value of the nearest place on the edge of an island
/// of the texture within the padding; the others hold no displacement, or the normal of the frame
/// (mesh-local: the zero vector). Where faces overlap on the texture the lowest one counts.
///
/// Levels are seen as they are when one goes to `from` and then to `to`; afterwards all of them
/// have the bits that they had. No stroke may be open.
/// Cost: O(faces of `from` + samples). Memory: about 150 bytes a vertex of `from`, and of each tile
/// 4 bytes a texel and channel; of the one at work 8 bytes a texel more.
/// \param path  of the file to be; tells by `<UDIM>` whether there may be several tiles.
/// \throw HostError for levels that are not there or in the wrong order, sizes out of range, a mesh
/// without UVs, and UVs outside of tiles; Cancelled. Nothing has changed then.
TROVIK_API BakedMap BakeMap(LevelGeometry& geometry,
                            const BakeOptions& options,
                            const std::string& path,
                            JobControl* job = nullptr);

}  // namespace trovik
