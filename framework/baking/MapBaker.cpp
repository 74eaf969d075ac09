// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/MapBaker.h"

#include "framework/baking/BakeCanvas.h"
#include "framework/baking/MapTiles.h"
#include "framework/baking/SurfaceFrames.h"
#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace trovik {

namespace {

constexpr std::uint32_t maxPadding = 256;

/// Binds a level; the destructor restores the previous state.
class BoundLevel {
public:
    BoundLevel(LevelGeometry& ofGeometry, std::uint32_t level, JobControl* job)
        : geometry(ofGeometry), before(geometry.SwitchLevel(level, job)) {}
    ~BoundLevel() { geometry.Exchange(before); }
    BoundLevel(const BoundLevel&) = delete;
    BoundLevel& operator=(const BoundLevel&) = delete;

private:
    LevelGeometry& geometry;
    LevelSwitch before;
};

std::uint32_t CheckedFrom(const LevelGeometry& geometry, const BakeOptions& options) {
    const std::uint32_t highest = geometry.LevelCount() - 1;
    const std::uint32_t from = options.from.value_or(highest);
    const auto there = [highest](std::uint32_t level) {
        if (level <= highest) return;
        throw HostError("there is no level " + std::to_string(level) + "; the highest is " +
                        std::to_string(highest));
    };
    there(from);
    there(options.to);
    if (from <= options.to)
        throw HostError(
            "a map stores the difference between a finer and a coarser level, but level " +
            std::to_string(from) + " is not finer than level " + std::to_string(options.to));
    return from;
}

BakeCanvas::Options CanvasOptions(const BakeOptions& options) {
    BakeCanvas::Options canvas;
    canvas.width = options.width;
    canvas.height = options.height;
    canvas.channels = options.kind == MapKind::Displacement ? 1 : 3;
    canvas.samplesPerSide = options.samples == 16 ? 4 : options.samples == 4 ? 2 : 1;
    canvas.directions = options.kind == MapKind::Normal;
    canvas.padding = options.padding;
    canvas.repeat = options.repeat;
    return canvas;
}

void CheckSizes(const BakeOptions& options) {
    for (const std::uint32_t side : {options.width, options.height})
        if (side < 1 || side > BakeCanvas::largestSide)
            throw HostError("cannot bake a map of " + std::to_string(options.width) + " x " +
                            std::to_string(options.height) +
                            " texels; width and height must be 1 to " +
                            std::to_string(BakeCanvas::largestSide));
    if (options.samples != 1 && options.samples != 4 && options.samples != 16)
        throw HostError("the samples per texel must be 1, 4 or 16, not " +
                        std::to_string(options.samples));
    if (options.padding > maxPadding)
        throw HostError("a padding of " + std::to_string(options.padding) +
                        " texels is too large; the maximum is " + std::to_string(maxPadding));
}

/// Returns the value of the map at each frame of the smooth surface.
std::vector<MapValue> FrameValues(const BakeOptions& options,
                                  const LevelMesh& fine,
                                  const std::vector<Vector>& smooth,
                                  const SurfaceFrames& frames,
                                  JobControl* job) {
    std::vector<Vector> shape(fine.VertexCount());
    for (std::uint32_t v = 0; v < fine.VertexCount(); ++v) shape[v] = fine.Position(v);
    if (options.kind == MapKind::Normal) {
        shape = VertexNormals(fine, shape, job);
    } else {
        for (std::uint32_t v = 0; v < fine.VertexCount(); ++v) shape[v] -= smooth[v];
    }
    std::vector<MapValue> values(frames.FrameCount());
    JobPhase phase(job, "Computing values", frames.FrameCount());
    for (std::uint32_t number = 0; number < frames.FrameCount(); ++number) {
        phase.Add();
        const std::uint32_t vertex = frames.VertexOf(number);
        Vector value = shape[vertex];
        if (options.kind == MapKind::Displacement)
            value = Vector(value | frames.Normal(vertex), 0.0f, 0.0f);
        else if (options.space == MapSpace::Tangent)
            value = frames.Frame(number).ToFrame(value);
        values[number] = {value.x, value.y, value.z};
    }
    phase.Finish();
    return values;
}

/// Rasterises the faces of one level into canvases, tile by tile.
class TilePainter {
public:
    TilePainter(LevelMesh& ofLevel,
                const LevelUvs& levelUvs,
                const SurfaceFrames& surfaceFrames,
                const std::vector<MapValue>& frameValues,
                bool textureRepeats)
        : level(ofLevel),
          uvs(levelUvs),
          frames(surfaceFrames),
          values(frameValues),
          repeat(textureRepeats) {}

    void Paint(const std::vector<std::uint32_t>& tileOfFace,
               std::uint32_t number,
               BakeCanvas& canvas,
               std::optional<std::uint32_t>& overlappingFace,
               JobControl* job) {
        // A single face can cover many texels, so the clock is read every 16 faces.
        JobPhase phase(job, "Rasterising the map", std::uint64_t{level.faceCount} * 2, 16);
        const MapTile tile = MapTile::OfNumber(number);
        for (std::uint32_t face = 0; face < level.faceCount; ++face) {
            phase.Add();
            if (tileOfFace[uvs.BaseOf(face)] != number) continue;
            const Corners corners = CornersOf(face, tile);
            canvas.AddQuad(corners.points, corners.values);
            if (canvas.LastOverlapped() && !overlappingFace) overlappingFace = uvs.BaseOf(face);
        }
        for (std::uint32_t face = 0; face < level.faceCount; ++face) {
            phase.Add();
            if (tileOfFace[uvs.BaseOf(face)] != number) continue;
            bool known = false;
            Corners corners = {};
            for (std::uint32_t side = 0; side < 4; ++side) {
                if (!IsIslandEdge(face, side)) continue;
                if (!known) corners = CornersOf(face, tile);
                known = true;
                const std::uint32_t next = (side + 1) & 3u;
                canvas.PadEdge(corners.points[side],
                               corners.points[next],
                               corners.values[side],
                               corners.values[next]);
            }
        }
        phase.Finish();
    }

private:
    struct Corners {
        std::array<TilePoint, 4> points;
        std::array<MapValue, 4> values;
    };

    Corners CornersOf(std::uint32_t face, const MapTile& tile) const {
        Corners corners = {};
        for (std::uint32_t k = 0; k < 4; ++k) {
            const std::uint32_t number = frames.FrameOf(face, k);
            const std::array<float, 2>& uv = frames.UvOf(number);
            corners.points[k] = {static_cast<double>(uv[0]) - tile.column,
                                 static_cast<double>(uv[1]) - tile.row};
            corners.values[k] = values[number];
        }
        for (std::size_t i = 0; repeat && i < 2; ++i) {
            const double middle = ((corners.points[0][i] + corners.points[1][i]) +
                                   (corners.points[2][i] + corners.points[3][i])) *
                                  0.25;
            const double whole = std::floor(middle);
            for (TilePoint& point : corners.points) point[i] -= whole;
        }
        return corners;
    }

    /// Returns whether the side is a UV seam, that is, whether the face across it is not adjacent
    /// in the texture.
    bool IsIslandEdge(std::uint32_t face, std::uint32_t side) const {
        const std::uint32_t across = level.QuadEdgeNeighbour(face, side);
        if (across == openBorder) return true;
        const std::uint32_t other = across >> 2;
        if (uvs.BaseOf(other) == uvs.BaseOf(face)) return false;
        const std::uint32_t from = frames.FrameOf(other, (across + 1) & 3u);
        const std::uint32_t to = frames.FrameOf(other, across & 3u);
        if (from == SurfaceFrames::none || to == SurfaceFrames::none) return true;
        return frames.UvOf(frames.FrameOf(face, side)) != frames.UvOf(from) ||
               frames.UvOf(frames.FrameOf(face, (side + 1) & 3u)) != frames.UvOf(to);
    }

    LevelMesh& level;
    const LevelUvs& uvs;
    const SurfaceFrames& frames;
    const std::vector<MapValue>& values;
    bool repeat;
};

MapValue NeutralOf(const BakeOptions& options) {
    const bool frameNormal = options.kind == MapKind::Normal && options.space == MapSpace::Tangent;
    return {0.0f, 0.0f, frameNormal ? 1.0f : 0.0f};
}

}  // namespace

BakedMap BakeMap(LevelGeometry& geometry,
                 const BakeOptions& options,
                 const std::string& path,
                 JobControl* job) {
    CheckSizes(options);
    BakedMap map;
    map.from = CheckedFrom(geometry, options);
    map.to = options.to;
    const LevelUvs uvs(geometry, map.from);
    const std::vector<std::uint32_t> tileOfFace = TilesOfFaces(uvs, path, options.repeat);
    std::set<std::uint32_t> numbers(tileOfFace.begin(), tileOfFace.end());
    numbers.erase(noMapTile);
    if (numbers.empty())
        throw HostError("no face of the mesh has texture coordinates (UVs) at all its corners");

    // The levels are evaluated in the state that results from binding `from` and then `to`.
    const BoundLevel atFrom(geometry, map.from, job);
    const BoundLevel atTo(geometry, map.to, job);
    LevelMesh& fine = *geometry.Level(map.from);
    const std::vector<Vector> smooth = SmoothPositions(geometry, map.to, map.from, job);
    const SurfaceFrames frames(fine, uvs, smooth, job);
    const std::vector<MapValue> values = FrameValues(options, fine, smooth, frames, job);
    if (options.kind != MapKind::Normal)
        for (const MapValue& value : values)
            for (const float part : value) map.range = std::max(map.range, std::fabs(part));

    TilePainter painter(fine, uvs, frames, values, options.repeat);
    BakeCanvas::Counts counts;
    for (const std::uint32_t number : numbers) {
        BakeCanvas canvas(CanvasOptions(options));
        painter.Paint(tileOfFace, number, canvas, map.overlappingFace, job);
        map.tiles.push_back({number, canvas.Finish(NeutralOf(options), counts, job)});
    }
    map.coveredTexels = counts.covered;
    map.paddedTexels = counts.padded;
    map.overlappingTexels = counts.overlapping;
    return map;
}

}  // namespace trovik
