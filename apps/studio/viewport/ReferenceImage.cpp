// SPDX-License-Identifier: Apache-2.0
#include "viewport/ReferenceImage.h"

namespace trovik::studio {

namespace {

/// Cosine of two degrees.
constexpr float minCosine = 0.99939f;

}  // namespace

std::optional<ReferenceDirections> DirectionsOf(ReferenceImage::Lock lock) {
    const Vector x(1.0f, 0.0f, 0.0f);
    const Vector y(0.0f, 1.0f, 0.0f);
    const Vector z(0.0f, 0.0f, 1.0f);
    switch (lock) {
        case ReferenceImage::Lock::Front:
            return ReferenceDirections{-z, x, y};
        case ReferenceImage::Lock::Back:
            return ReferenceDirections{z, -x, y};
        case ReferenceImage::Lock::Right:
            return ReferenceDirections{-x, -z, y};
        case ReferenceImage::Lock::Left:
            return ReferenceDirections{x, z, y};
        case ReferenceImage::Lock::Top:
            return ReferenceDirections{-y, x, -z};
        case ReferenceImage::Lock::Bottom:
            return ReferenceDirections{y, x, z};
        case ReferenceImage::Lock::Screen:
            break;
    }
    return std::nullopt;
}

std::optional<ReferenceQuad> QuadOf(const ReferenceImage& reference,
                                    const QImage& image,
                                    const RenderView& view) {
    if (!reference.isVisible || image.isNull()) return std::nullopt;
    ReferenceQuad quad;
    quad.image = image;
    quad.opacity = reference.opacity;
    quad.isInFront = reference.isInFront;
    const float halfHeight = reference.height * 0.5f;
    const float halfWidth =
        halfHeight * static_cast<float>(image.width()) / static_cast<float>(image.height());
    const auto directions = DirectionsOf(reference.lock);
    if (directions && (directions->along | view.forward) < minCosine) return std::nullopt;
    const float aspect = static_cast<float>(view.width) / static_cast<float>(view.height);
    for (unsigned corner = 0; corner < 4; ++corner) {
        const float x = (corner & 1u) != 0 ? halfWidth : -halfWidth;
        const float y = (corner & 2u) != 0 ? halfHeight : -halfHeight;
        std::array<float, 3>& clip = quad.corners[corner];
        if (!directions) {
            clip = {
                2.0f * (reference.centre.x + x) / aspect, 2.0f * (reference.centre.y + y), 1.0f};
            continue;
        }
        const Vector p = reference.centre + directions->right * x + directions->up * y;
        const auto& m = view.worldToClip.m;
        for (unsigned i = 0; i < 3; ++i) {
            const unsigned column = i == 2 ? 3 : i;
            clip[i] = p.x * m[0][column] + p.y * m[1][column] + p.z * m[2][column] + m[3][column];
        }
    }
    return quad;
}

ReferenceImage::Lock LockFor(const Vector& forward) {
    using Lock = ReferenceImage::Lock;
    for (const Lock lock :
         {Lock::Front, Lock::Back, Lock::Right, Lock::Left, Lock::Top, Lock::Bottom})
        if ((DirectionsOf(lock)->along | forward) >= minCosine) return lock;
    return Lock::Screen;
}

}  // namespace trovik::studio
