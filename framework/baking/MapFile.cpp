// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/MapFile.h"

#include "framework/baking/MapTiles.h"
#include "framework/errors/HostError.h"
#include "framework/images/ImageLimits.h"
#include "framework/io/FilePath.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr float middle = 0.5f;

std::uint16_t Rounded(float value) {
    constexpr double largest = 65535.0;
    return static_cast<std::uint16_t>(
        std::lround(std::clamp(static_cast<double>(value), 0.0, 1.0) * largest));
}

void Write(
    const std::string& path, BakedTile& tile, const MapText& text, MapBits bits, JobControl* job) {
    const bool coded = bits == MapBits::Sixteen || text.kind == MapKind::Normal;
    // A scale of 0 means that there is no displacement.
    const float factor = text.scale > 0.0f ? 1.0f / text.scale : 0.0f;
    if (coded)
        for (float& value : tile.image.pixels) value = middle + value * factor;
    if (bits == MapBits::Float) {
        WriteFloatImageFile(path, tile.image, text.ToLine(), job);
        return;
    }
    CheckImageFinite("write", path, tile.image);
    std::vector<std::uint16_t> numbers(tile.image.pixels.size());
    std::transform(tile.image.pixels.begin(), tile.image.pixels.end(), numbers.begin(), Rounded);
    WriteImageFile(path,
                   numbers.data(),
                   tile.image.width,
                   tile.image.height,
                   tile.image.channels,
                   text.ToLine(),
                   job);
}

std::string WarningOf(const BakedMap& map) {
    if (map.overlappingTexels == 0) return {};
    return "on " + std::to_string(map.overlappingTexels) +
           " texels the UVs of several faces overlap, for example those of face " +
           std::to_string(map.overlappingFace.value_or(0)) +
           " of level 0; the map contains the face with the lowest number there";
}

}  // namespace

MapBits BitsFor(const MapFileOptions& file) {
    const std::string extension = LowerExtension(file.path);
    const bool tiff = extension == ".tif" || extension == ".tiff";
    if (extension != ".exr" && extension != ".png" && !tiff)
        throw HostError(file.path +
                        ": the file name of a map must end in .exr, .png, .tif or .tiff");
    const MapBits bits =
        file.bits.value_or(extension == ".exr" ? MapBits::Float : MapBits::Sixteen);
    if (bits == MapBits::Float && extension == ".png")
        throw HostError(file.path + ": a .png file stores 16 bits; floats require .exr or .tif");
    if (bits == MapBits::Sixteen && extension == ".exr")
        throw HostError(file.path + ": an .exr file stores floats; 16 bits require .png or .tif");
    if (file.range && !(*file.range > 0.0f && std::isfinite(*file.range)))
        throw HostError(file.path + ": the range of a map must be above 0");
    return bits;
}

MapReport BakeToFile(LevelGeometry& geometry,
                     const BakeOptions& options,
                     const MapFileOptions& file,
                     JobControl* job) {
    MapReport report;
    report.bits = BitsFor(file);
    BakedMap map = BakeMap(geometry, options, file.path, job);
    report.width = options.width;
    report.height = options.height;
    report.range = map.range;
    report.coveredTexels = map.coveredTexels;
    report.paddedTexels = map.paddedTexels;
    report.overlappingTexels = map.overlappingTexels;
    report.warning = WarningOf(map);
    report.text.kind = options.kind;
    report.text.space = options.space;
    report.text.from = map.from;
    report.text.to = map.to;
    if (options.kind == MapKind::Normal) {
        report.text.mid = middle;
        report.text.scale = 2.0f;
    } else if (report.bits == MapBits::Sixteen) {
        if (file.range && map.range > *file.range)
            throw HostError(file.path + ": the displacement reaches " + std::to_string(map.range) +
                            ", more than the range of " + std::to_string(*file.range));
        report.text.mid = middle;
        report.text.scale = 2.0f * file.range.value_or(map.range);
    }
    for (BakedTile& tile : map.tiles) {
        report.files.push_back(TilePath(file.path, tile.number));
        Write(report.files.back(), tile, report.text, report.bits, job);
    }
    return report;
}

}  // namespace trovik
