// SPDX-License-Identifier: Apache-2.0
#include "framework/grab/GrabSides.h"

#include "framework/math/SameBits.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace trovik {

namespace {

/// The displacement of a vertex of the side, mesh-local, without regard to other sides.
Vector OwnDisplacement(const GrabSide& side, std::size_t index, const Matrix& toLocal) {
    if (!side.elastic) return side.displacement * side.weights[index];
    const ElasticField& field = *side.elastic;
    const Vector world =
        field.kelvinlet.Displacement(field.arms[index], field.coefficients[index], field.load);
    return toLocal.AffineTransform(world, 0.0f) * side.weights[index];
}

/// Sums the weighted displacements of a vertex.
struct WeightedSum {
    void Add(const GrabSide& side, std::size_t index, const Matrix& toLocal) {
        float weight = side.weights[index];
        if (side.elastic) weight *= std::fabs(side.elastic->coefficients[index].direct);
        sum += OwnDisplacement(side, index, toLocal) * weight;
        weightSum += weight;
    }
    Vector Mean() const { return weightSum > 0.0f ? sum * (1.0f / weightSum) : Vector(); }

    Vector sum;
    float weightSum = 0.0f;
};

/// The displacement of a vertex that is also in the regions of earlier sides.
Vector SharedDisplacement(const GrabSide& side, std::size_t index, const Matrix& toLocal) {
    bool isShared = false;
    WeightedSum sum;
    for (const GrabSide::Overlap& overlap : side.overlaps) {
        const uint32_t other = overlap.indices[index];
        if (other == GrabSide::noVertex) continue;
        sum.Add(*overlap.side, other, toLocal);
        isShared = true;
    }
    if (!isShared) return OwnDisplacement(side, index, toLocal);
    sum.Add(side, index, toLocal);
    return sum.Mean();
}

void MarkShared(GrabSide& earlier, GrabSide& later) {
    const std::vector<uint32_t>& a = earlier.region.Vertices();
    const std::vector<uint32_t>& b = later.region.Vertices();
    std::vector<uint32_t> indices;
    for (std::size_t i = 0, k = 0; i < a.size() && k < b.size();) {
        if (a[i] == b[k]) {
            if (indices.empty()) indices.assign(b.size(), GrabSide::noVertex);
            indices[k++] = static_cast<uint32_t>(i);
            earlier.isMovedLater[i++] = true;
        } else if (a[i] < b[k]) {
            ++i;
        } else {
            ++k;
        }
    }
    if (indices.empty()) return;
    later.overlaps.push_back({&earlier, std::move(indices)});
    earlier.isShared = true;
    later.isShared = true;
}

}  // namespace

bool GrabSideKey::operator==(const GrabSideKey& other) const {
    return isMirrored == other.isMirrored && hit == other.hit && SameBits(pointMap, other.pointMap);
}

GrabSide::GrabSide(const GrabSideKey& sideKey,
                   std::vector<float> vertexWeights,
                   MovedRegion sideRegion,
                   std::optional<ElasticField> field)
    : key(sideKey),
      weights(std::move(vertexWeights)),
      region(std::move(sideRegion)),
      elastic(std::move(field)),
      isMovedLater(region.Vertices().size()) {}

GrabSide* GrabSides::Find(const GrabSideKey& key) {
    const auto found = std::find_if(
        sides.begin(), sides.end(), [&](const auto& side) { return side->key == key; });
    return found == sides.end() ? nullptr : found->get();
}

GrabSide& GrabSides::Add(std::unique_ptr<GrabSide> side) {
    for (const std::unique_ptr<GrabSide>& earlier : sides) MarkShared(*earlier, *side);
    sides.push_back(std::move(side));
    return *sides.back();
}

void GrabSides::Drag(GrabSide& side, const Matrix& toLocal, unsigned threads) {
    const bool wasMoved = side.isMoved;
    side.isMoved = !(side.displacement == Vector());
    if (!side.isMoved && !wasMoved) return;
    const bool isAtStart =
        std::none_of(sides.begin(), sides.end(), [](const auto& one) { return one->isMoved; });
    if (side.isShared && isAtStart) {
        for (const std::unique_ptr<GrabSide>& one : sides) one->region.Restore();
        return;
    }
    if (side.isShared) {
        const auto displacement = [&](std::size_t i) -> std::optional<Vector> {
            if (side.isMovedLater[i]) return std::nullopt;
            return SharedDisplacement(side, i, toLocal);
        };
        side.region.Move(displacement, threads);
        return;
    }
    if (!side.isMoved) {
        side.region.Restore();
        return;
    }
    if (side.elastic) {
        side.region.Move([&](std::size_t i) { return OwnDisplacement(side, i, toLocal); }, threads);
        return;
    }
    // Without a call or a branch per vertex, this loop takes half the instructions.
    side.region.Move([weights = side.weights.data(), displacement = side.displacement](
                         std::size_t i) { return displacement * weights[i]; },
                     threads);
}

}  // namespace trovik
