// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/stages/DabConstants.h"
#include "kernels/stages/RecordLookup.h"

namespace trovik {

/// A position on the stamp image: exact coordinates and the nearest pixel.
struct StampPosition {
    float u;
    float v;
    int32_t column;
    int32_t row;
};

/// Returns the nearest integer, ties to even. Values beyond 32 bits become the most negative
/// integer, which is outside every image.
TROVIK_FORCE_INLINE int32_t RoundToPixel(float coordinate) {
    return _mm_cvtss_si32(_mm_set_ss(coordinate));
}

/// Projects a mesh-local position onto the stamp. Divides by the fourth component even if the
/// matrix is affine.
TROVIK_FORCE_INLINE StampPosition ProjectToStamp(const BrushSpace& space,
                                                 const HWVector& position) {
    const auto row = [&space](int i) { return _mm_loadu_ps(space.stampMatrix[i]); };
    const auto scaled = [](__m128 r, float f) { return _mm_mul_ps(r, _mm_set1_ps(f)); };
    __m128 s = _mm_add_ps(scaled(row(2), position.Z()), scaled(row(3), 1.0f));
    s = _mm_add_ps(s, scaled(row(1), position.Y()));
    s = _mm_add_ps(s, scaled(row(0), position.X()));
    s = _mm_div_ps(s, _mm_shuffle_ps(s, s, _MM_SHUFFLE(3, 3, 3, 3)));
    const float u = _mm_cvtss_f32(s);
    const float v = _mm_cvtss_f32(_mm_shuffle_ps(s, s, _MM_SHUFFLE(1, 1, 1, 1)));
    return {u, v, RoundToPixel(u), RoundToPixel(v)};
}

/// Returns the first-touch position of the vertex's topological mirror image, so that a stamp looks
/// the same on both sides of a mesh whose halves are not mirror images in space. If the vertex has
/// no mirror image, its own position is returned. May create a record, so the caller must look up
/// its own record again. The function is not inlined and does not take references to the loop's
/// variables, so that these can stay in registers.
__attribute__((noinline)) inline Vector MirroredStartPosition(const SwiftStroke& brush,
                                                              uint32_t vertex,
                                                              uint32_t face,
                                                              bool throughLayer) {
    SubdivisionLevel& mesh = *brush.mesh;
    MeshChange& change = *brush.CurrentChange();
    Vertex* vertices = mesh.vertices.array;
    const uint32_t corners = mesh.CornersPerFace();
    int32_t mirrored = -1;
    uint32_t mirrorFace = face;
    uint32_t mirrorCorner = 0;
    for (uint32_t corner = 0; corner < corners; ++corner) {
        if (mesh.faceVertexIndices[face * corners + corner] != vertex) continue;
        mirrored = mesh.MirrorVertex(face, corner, &mirrorFace, &mirrorCorner);
        break;
    }
    const uint32_t source = mirrored < 0 ? vertex : static_cast<uint32_t>(mirrored);
    const StoredVertexInfo& record =
        TouchRecord(change, source, mirrorFace, vertices[source], throughLayer);
    return {record.originalPosition[0], record.originalPosition[1], record.originalPosition[2]};
}

/// Wraps a coordinate into [0, size), like repeated addition of the size, but in one step.
TROVIK_FORCE_INLINE int32_t WrapPixel(int32_t coordinate, uint32_t size) {
    const int64_t wrapped = coordinate % static_cast<int64_t>(size);
    return static_cast<int32_t>(wrapped < 0 ? wrapped + size : wrapped);
}

/// Returns one pixel of a vector stamp, multiplied by the factor: the first channel becomes y, the
/// second x and the third z.
TROVIK_FORCE_INLINE HWVector VectorPixel(const SwiftStroke& brush, uint32_t column, uint32_t row) {
    const float* pixel =
        brush.stampPixels + (static_cast<std::size_t>(row) * brush.stampWidth + column) * 3;
    const float factor = brush.stampFactor;
    return {factor * pixel[1], factor * pixel[0], factor * pixel[2], 0.0f};
}

TROVIK_FORCE_INLINE float PlainPixel(const SwiftStroke& brush, uint32_t column, uint32_t row) {
    return brush.stampPixels[static_cast<std::size_t>(row) * brush.stampWidth + column] *
           brush.stampFactor;
}

/// The four pixels and weights of a bilinear lookup. The base pixel is the rounded coordinate; the
/// weights are the fractional parts of (coordinate - 0.5). The base is therefore one pixel higher
/// than usual; results depend on this convention.
struct BilinearRead {
    BilinearRead(const SwiftStroke& brush, const StampPosition& stampPosition, bool tiled) {
        const float du = static_cast<float>(static_cast<double>(stampPosition.u) - 0.5);
        const float dv = static_cast<float>(static_cast<double>(stampPosition.v) - 0.5);
        const float fu = du - std::floor(du);
        const float fv = dv - std::floor(dv);
        const float uv = fv * fu;
        w11 = uv;
        w01 = fv - uv;
        w10 = fu - uv;
        w00 = ((1.0f - uv) - w01) - w10;

        const auto column = static_cast<uint32_t>(stampPosition.column);
        const auto row = static_cast<uint32_t>(stampPosition.row);
        x0 = column % brush.stampWidth;
        x1 = (column + 1) % brush.stampWidth;
        y0 = row % brush.stampHeight;
        y1 = (row + 1) % brush.stampHeight;
        // A stamp that is not tiled fades to black beyond its last pixels.
        below = tiled || row != brush.stampHeight - 1;
        right = tiled || column != brush.stampWidth - 1;
    }

    float w00, w10, w01, w11;
    uint32_t x0, x1, y0, y1;
    bool below, right;
};

/// Multiplies the weight by the stamp value, or returns OutOfReach if the vertex is outside the
/// stamp.
template <class Switches>
TROVIK_FORCE_INLINE StageResult SampleStamp(const Switches& sw,
                                            const DabConstants& dab,
                                            VertexState& v) {
    const SwiftStroke& brush = dab.brush;
    StampPosition stampPosition = ProjectToStamp(dab.space, v.startPosition);
    if (dab.mirroredStamp) {
        const Vector across = MirroredStartPosition(dab.brush, v.vertex, v.face, sw.throughLayer);
        stampPosition = ProjectToStamp(dab.space, HWVector(across));
        v.record = FindRecord(dab.change, v.vertex, v.vertexRecord->changeLink);
    }

    if (sw.tiledStamp) {
        // A vertex under a stamp without pixels is out of reach; for untiled stamps, the range
        // check below ensures this.
        if (brush.stampWidth == 0 || brush.stampHeight == 0) return StageResult::OutOfReach;
        stampPosition.column = WrapPixel(stampPosition.column, brush.stampWidth);
        stampPosition.row = WrapPixel(stampPosition.row, brush.stampHeight);
    } else if (stampPosition.column < 0 || stampPosition.row < 0 ||
               static_cast<uint32_t>(stampPosition.column) >= brush.stampWidth ||
               static_cast<uint32_t>(stampPosition.row) >= brush.stampHeight) {
        return StageResult::OutOfReach;
    }

    const auto column = static_cast<uint32_t>(stampPosition.column);
    const auto row = static_cast<uint32_t>(stampPosition.row);
    if (!brush.bilinearSample.Value()) {
        if (brush.stampIsVector)
            v.weightVector = v.weightVector * VectorPixel(brush, column, row);
        else
            v.weight = v.weight * PlainPixel(brush, column, row);
        return StageResult::Continue;
    }

    const BilinearRead read(brush, stampPosition, sw.tiledStamp);
    if (brush.stampIsVector) {
        const HWVector zero = HWVector::Zero();
        const HWVector p00 = VectorPixel(brush, read.x0, read.y0);
        const HWVector p10 = read.right ? VectorPixel(brush, read.x1, read.y0) : zero;
        const HWVector p01 = read.below ? VectorPixel(brush, read.x0, read.y1) : zero;
        const HWVector p11 = read.right && read.below ? VectorPixel(brush, read.x1, read.y1) : zero;
        const HWVector sample =
            ((p00 * read.w00 + p10 * read.w10) + p01 * read.w01) + p11 * read.w11;
        v.weightVector = v.weightVector * sample;
    } else {
        const float p00 = PlainPixel(brush, read.x0, read.y0);
        const float p10 = read.right ? PlainPixel(brush, read.x1, read.y0) : 0.0f;
        const float p01 = read.below ? PlainPixel(brush, read.x0, read.y1) : 0.0f;
        const float p11 = read.right && read.below ? PlainPixel(brush, read.x1, read.y1) : 0.0f;
        const float value = ((p00 * read.w00 + p10 * read.w10) + p01 * read.w01) + p11 * read.w11;
        v.weight = v.weight * value;
    }
    return StageResult::Continue;
}

/// Applies the stamp and adds the build-up. Build-up that is added before the stamp lookup also
/// grows outside the stamp; build-up that is added afterwards includes the stamp value. For a
/// vector stamp, the lowest lane of the weight is 0 after the lookup, so adding build-up then has
/// no effect.
template <class Switches>
TROVIK_FORCE_INLINE StageResult ApplyStamp(const Switches& sw,
                                           const DabConstants& dab,
                                           VertexState& v) {
    if (!dab.brush.stampBuildUp) v.record->buildUp = v.weight * dab.dabPressure + v.record->buildUp;
    if (SampleStamp(sw, dab, v) == StageResult::OutOfReach) return StageResult::OutOfReach;
    if (dab.brush.stampBuildUp) {
        const float value = dab.brush.stampIsVector ? v.weightVector.First() : v.weight;
        v.record->buildUp = value * dab.dabPressure + v.record->buildUp;
    }
    return StageResult::Continue;
}

}  // namespace trovik
