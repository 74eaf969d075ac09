// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/LevelSource.h"

#include "framework/layers/LayerStack.h"
#include "framework/mesh/SurfaceNormal.h"

#include <algorithm>

namespace trovik {

namespace {

constexpr std::uint32_t None = SurfaceAttributes::none;

struct GridCell {
    std::uint32_t row;
    std::uint32_t column;
};

/// Returns the grid cell of a face in its patch. The face number has one base-4 digit per level,
/// most significant first: 0 top left, 1 top right, 2 bottom right, 3 bottom left.
GridCell CellOf(std::uint32_t face, std::uint32_t depth) {
    GridCell cell = {0, 0};
    for (std::uint32_t step = depth; step-- > 0;) {
        const std::uint32_t digit = face >> (2 * step) & 3u;
        cell.row = cell.row << 1 | (digit >> 1);
        cell.column = cell.column << 1 | ((digit ^ digit >> 1) & 1u);
    }
    return cell;
}

std::uint32_t FaceAt(const GridCell& cell, std::uint32_t depth) {
    std::uint32_t face = 0;
    for (std::uint32_t step = depth; step-- > 0;) {
        const std::uint32_t below = cell.row >> step & 1u;
        const std::uint32_t right = cell.column >> step & 1u;
        face = face << 2 | (below == 0 ? right : 3u - right);
    }
    return face;
}

}  // namespace

LevelSource::LevelSource(const LevelGeometry& of, const Options& options)
    : geometry(of),
      level(*of.Level(options.level.value_or(of.BoundIndex()))),
      number(static_cast<std::uint32_t>(level.Index())),
      baseCorners(of.Level(0)->CornersPerFace()),
      world(options.world),
      conversion(of.Attributes().space, options.space) {
    const SurfaceAttributes& attributes = geometry.Attributes();
    const LevelMesh& base = *geometry.Level(0);
    name = level.Name().toStdString();
    space = Overlaid(attributes.space, options.space);
    vertexCount = level.VertexCount();
    faceCount = level.faceCount;
    largestFace = level.CornersPerFace();
    cornerCount = faceCount * largestFace;
    hasNormals = true;
    if (!attributes.cornerUvs.empty()) {
        const std::uint32_t depth = number == 0 ? 0 : baseCorners == 4 ? number : number - 1;
        const std::uint64_t side = (std::uint64_t{1} << depth) + 1;
        const std::uint64_t patches =
            std::uint64_t{base.faceCount} * (baseCorners == 4 ? 1 : baseCorners);
        uvCount = number == 0 ? attributes.uvs.size() : patches * side * side;
        vertexUvs = UvsByVertex(attributes, base.faceVertexIndices.array, base.VertexCount());
        uvsFollowVertices = !vertexUvs.empty();
    }
    Describe(attributes);
    AddLayers();
}

void LevelSource::AddLayers() {
    for (const auto& layer : geometry.Layers().OfLevel(level))
        if (layer->SlotCount() > 0) blended.push_back(layer.get());
    for (const SculptLayer* layer : blended) {
        MorphTarget target;
        target.name = layer->Name();
        target.weight = layer->EffectiveStrength();
        target.vertices.reserve(layer->SlotCount());
        for (std::uint32_t slot = 0; slot < layer->SlotCount(); ++slot) {
            target.vertices.push_back(layer->VertexOfSlot(slot));
        }
        std::sort(target.vertices.begin(), target.vertices.end());
        target.offset = [this, layer](std::uint32_t vertex) {
            Vector offset = layer->Offset(vertex);
            if (world) {
                offset = geometry.Transform().ToWorld().AffineTransform(offset, 0.0f);
            }
            return conversion.Point({offset.x, offset.y, offset.z});
        };
        morphTargets.push_back(std::move(target));
    }
}

std::array<float, 3> LevelSource::Placed(const Vector& position) const {
    const Vector p =
        world ? geometry.Transform().ToWorld().AffineTransform(position, 1.0f) : position;
    return conversion.Point({p.x, p.y, p.z});
}

std::array<float, 3> LevelSource::PlacedNormal(std::uint32_t vertex) const {
    Vector normal = Unpacked(level.vertexNormals.array[vertex]).Normalized();
    if (world) normal = WorldNormal(geometry.Transform(), normal);
    return conversion.Direction({normal.x, normal.y, normal.z});
}

std::array<float, 3> LevelSource::Position(std::uint32_t vertex) const {
    return Placed(level.Position(vertex));
}

// If a single layer has an entry for the vertex, that layer stores the exact rest position. If
// there are several, their offsets are subtracted from the current position.
std::array<float, 3> LevelSource::BasePosition(std::uint32_t vertex) const {
    Vector base = level.Position(vertex);
    const SculptLayer* only = nullptr;
    int touching = 0;
    for (const SculptLayer* layer : blended) {
        if (layer->FindSlot(vertex) != SculptLayer::noSlot) {
            base = base - layer->Offset(vertex) * layer->EffectiveStrength();
            only = layer;
            ++touching;
        }
    }
    return Placed(touching == 1 ? only->Rest(vertex) : base);
}

LevelSource::Values LevelSource::BaseValues(std::uint32_t vertex) const {
    const SurfaceAttributes& attributes = geometry.Attributes();
    Values values = {};
    if (uvsFollowVertices && vertexUvs[vertex] != None) {
        const std::array<float, 2>& uv = attributes.uvs[vertexUvs[vertex]];
        std::copy(uv.begin(), uv.end(), values.begin());
    }
    if (hasColors) {
        const std::array<float, 4>& color = attributes.colors[vertex];
        std::copy(color.begin(), color.end(), values.begin() + 2);
    }
    return values;
}

template <typename Take>
void LevelSource::ForEachValue(Take take) const {
    const LevelMesh& base = *geometry.Level(0);
    for (std::uint32_t vertex = 0; vertex < base.VertexCount(); ++vertex) {
        take(BaseValues(vertex));
    }
    std::uint32_t next = base.VertexCount();
    for (std::uint32_t below = 0; below < number; ++below) {
        const LevelMesh& coarse = *geometry.Level(below);
        const LevelMesh& fine = *geometry.Level(below + 1);
        const std::uint32_t corners = coarse.CornersPerFace();
        for (std::uint32_t face = 0; face < coarse.faceCount; ++face) {
            const std::uint32_t* around =
                base.faceVertexIndices.array + BaseFace(baseCorners, below, face) * baseCorners;
            CornerValues<valueCount> values = {};
            for (std::uint32_t corner = 0; corner < baseCorners; ++corner) {
                values[corner] = BaseValues(around[corner]);
            }
            values = FaceValues(values, baseCorners, below, face);
            // New vertices are numbered in the order in which faces use them: the edge points in
            // the order of the sides, then the face point.
            const std::uint32_t* children =
                fine.faceVertexIndices.array + std::size_t{face} * corners * 4;
            for (std::uint32_t side = 0; side < corners; ++side) {
                const std::uint32_t edge =
                    children[side * 4 + (corners == 4 ? (side + 1) & 3u : 1u)];
                if (edge == next) {
                    take(MeanOfTwo(values[side], values[(side + 1) % corners]));
                    ++next;
                }
            }
            take(FaceMean(values, corners));
            ++next;
        }
    }
}

void LevelSource::ReadVertices(unsigned parts,
                               const std::function<void(const VertexBlock&)>& take) const {
    VertexBlock block;
    std::uint32_t vertex = 0;
    std::uint32_t filled = 0;
    const bool wantsUvs = (parts & Uvs) != 0 && uvsFollowVertices;
    const bool wantsColors = (parts & Colors) != 0 && hasColors;
    const auto add = [&](const Values& values) {
        if ((parts & Positions) != 0) {
            block.positions.push_back(Position(vertex));
        }
        if ((parts & Normals) != 0) {
            block.normals.push_back(PlacedNormal(vertex));
        }
        if (wantsUvs) {
            block.uvs.push_back({values[0], values[1]});
        }
        if (wantsColors) {
            block.colors.push_back({values[2], values[3], values[4], values[5]});
        }
        ++vertex;
        if (++filled == blockSize || vertex == vertexCount) {
            take(block);
            block.Clear();
            filled = 0;
        }
    };
    if (wantsUvs || wantsColors) {
        ForEachValue(add);
        return;
    }
    while (vertex < vertexCount) {
        add(Values{});
    }
}

bool LevelSource::BaseUvs(std::uint32_t baseFace, CornerValues<2>& uvs) const {
    const SurfaceAttributes& attributes = geometry.Attributes();
    for (std::uint32_t corner = 0; corner < baseCorners; ++corner) {
        const std::uint32_t uv = attributes.cornerUvs[baseFace * baseCorners + corner];
        if (uv == None) {
            return false;
        }
        uvs[corner] = attributes.uvs[uv];
    }
    return true;
}

void LevelSource::ReadFaces(unsigned parts,
                            const std::function<void(const FaceBlock&)>& take) const {
    const SurfaceAttributes& attributes = geometry.Attributes();
    const bool wantsUvs = (parts & Uvs) != 0 && uvCount > 0;
    const std::uint32_t corners = level.CornersPerFace();
    const std::uint32_t depth = number == 0 ? 0 : baseCorners == 4 ? number : number - 1;
    const std::uint32_t side = 1u << depth;
    FaceBlock block;
    for (std::uint32_t face = 0; face < faceCount; ++face) {
        const std::uint32_t baseFace = BaseFace(baseCorners, number, face);
        const std::uint32_t* around = level.faceVertexIndices.array + std::size_t{face} * corners;
        block.sizes.push_back(corners);
        block.vertices.insert(block.vertices.end(), around, around + corners);
        if (wantsUvs) {
            CornerValues<2> uvs = {};
            const bool hasUvs = BaseUvs(baseFace, uvs);
            uvs = FaceValues(uvs, baseCorners, number, face);
            const GridCell cell = CellOf(face, depth);
            const std::uint32_t firstOfPatch = (face >> (2 * depth)) * (side + 1) * (side + 1);
            for (std::uint32_t corner = 0; corner < corners; ++corner) {
                std::uint32_t index = firstOfPatch + (cell.row + (corner >> 1)) * (side + 1) +
                                      cell.column + ((corner ^ corner >> 1) & 1u);
                if (number == 0) {
                    index = attributes.cornerUvs[face * corners + corner];
                } else if (!hasUvs) {
                    index = None;
                }
                block.uvIndices.push_back(index);
                block.uvs.push_back(index == None ? std::array<float, 2>{}
                                    : number == 0 ? attributes.uvs[index]
                                                  : uvs[corner]);
            }
        }
        if (!attributes.faceGroups.empty()) {
            block.groups.push_back(attributes.faceGroups[baseFace]);
        }
        if (!attributes.faceMaterials.empty()) {
            block.materials.push_back(attributes.faceMaterials[baseFace]);
        }
        if (!attributes.faceSmoothing.empty()) {
            block.smoothing.push_back(attributes.faceSmoothing[baseFace]);
        }
        if (block.sizes.size() == blockSize || face + 1 == faceCount) {
            take(block);
            block.Clear();
        }
    }
}

void LevelSource::ReadUvs(
    const std::function<void(const std::vector<std::array<float, 2>>&)>& take) const {
    if (number == 0) {
        if (uvCount > 0) {
            take(geometry.Attributes().uvs);
        }
        return;
    }
    if (uvCount == 0) {
        return;
    }
    const std::uint32_t depth = baseCorners == 4 ? number : number - 1;
    const std::uint32_t side = 1u << depth;
    const auto patches =
        static_cast<std::uint32_t>(uvCount / (std::uint64_t{side + 1} * (side + 1)));
    std::vector<std::array<float, 2>> run;
    for (std::uint32_t patch = 0; patch < patches; ++patch) {
        CornerValues<2> base = {};
        BaseUvs(BaseFace(baseCorners, number - depth, patch), base);
        for (std::uint32_t row = 0; row <= side; ++row) {
            for (std::uint32_t column = 0; column <= side; ++column) {
                // A grid point is the top left corner of its cell, except in the last row and
                // column.
                const std::uint32_t below = row == side ? 1 : 0;
                const std::uint32_t right = column == side ? 1 : 0;
                const std::uint32_t face =
                    patch << (2 * depth) | FaceAt({row - below, column - right}, depth);
                const std::uint32_t corner = below == 0 ? right : 3u - right;
                run.push_back(FaceValues(base, baseCorners, number, face)[corner]);
            }
            if (run.size() >= blockSize) {
                take(run);
                run.clear();
            }
        }
    }
    take(run);
}

}  // namespace trovik
